#include "musicfolder.h"

#include "emulator/catalogue/cataloguebuilder.h"

#include <QDir>
#include <QFileInfo>

using namespace emulator;

QString makeTone(const QString& file, samples::Format format, const catalogue::Tags& tags,
    double seconds, const QByteArray& cover)
{
    QDir().mkpath(QFileInfo(file).path());
    samples::Score score;
    score.beatsPerMinute = 60;
    score.beats = seconds;
    score.notes = { { samples::Instrument::Bell, 0, seconds, 69, 0.5, 0 } };
    const QString problem = samples::encode(samples::synthesize(score, 48000, 0.01), format, file);
    return problem.isEmpty() ? samples::writeTags(file, format, tags, { cover, "image/png" })
                             : problem;
}

catalogue::Tags tagged(const char* artist, const char* album, const char* title, int number)
{
    catalogue::Tags tags;
    tags.artist = QString::fromUtf8(artist);
    tags.album = QString::fromUtf8(album);
    tags.title = QString::fromUtf8(title);
    tags.number = number;
    tags.durationMs = 60000;
    return tags;
}

catalogue::MusicFile musicFile(const char* path, const catalogue::Tags& tags)
{
    catalogue::MusicFile file;
    file.path = QString::fromUtf8(path);
    file.tags = tags;
    return file;
}

catalogue::CataloguePointer inventedCatalogue(int albums, int tracksEach)
{
    catalogue::ScanResult scan;
    for (int album = 0; album < albums; ++album) {
        for (int number = 1; number <= tracksEach; ++number) {
            catalogue::Tags tags;
            tags.artist = QStringLiteral("Artist %1").arg(album / 2);
            tags.album = QStringLiteral("Album %1").arg(album, 5, 10, QLatin1Char('0'));
            tags.title = QStringLiteral("Title %1 of %2").arg(number).arg(album);
            tags.number = number;
            tags.durationMs = 200000;
            catalogue::MusicFile file;
            file.path =
                QStringLiteral("%1/%2.flac").arg(tags.album).arg(number, 4, 10, QLatin1Char('0'));
            file.tags = tags;
            scan.files.push_back(file);
        }
    }
    return catalogue::buildCatalogue(scan, 1);
}
