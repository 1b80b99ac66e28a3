#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <vector>

namespace emulator::catalogue {

/// What a music file says about itself. Texts that the file does not give are empty, numbers 0.
struct Tags
{
    QString title;
    QString artist;
    QString albumArtist;
    QString album;
    QString genre;
    int number = 0; ///< place on its disc, from 1
    int disc = 0; ///< from 1
    int year = 0;
    qint64 durationMs = 0;
    bool picture = false; ///< a cover picture is embedded
};

/// One file of the library as the last scan found it.
struct MusicFile
{
    QString path; ///< relative to the library's root, components joined by "/"
    qint64 size = 0;
    qint64 modifiedMs = 0; ///< since the epoch
    Tags tags;
    QString problem; ///< why it cannot be served; empty when it can
};

/// A playlist file with the tracks that it names, relative to the library's root like a file's
/// path.
struct PlaylistFile
{
    QString path;
    QString title;
    QStringList entries;
};

/// The folder of a path that is relative to the library's root; empty for the root itself.
inline QString folderOf(const QString& path)
{
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    return slash < 0 ? QString() : path.left(slash);
}

/// Everything that a scan brings home; what the catalogue is built from.
struct ScanResult
{
    std::vector<MusicFile> files;
    std::vector<PlaylistFile> playlists;
    QHash<QString, QString> folderPictures; ///< folder to picture file, both relative to the root
};

} // namespace emulator::catalogue
