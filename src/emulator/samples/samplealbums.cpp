#include "samplealbums.h"

#include "cover.h"
#include "encoder.h"
#include "savefile.h"
#include "score.h"

#include <QCoreApplication>
#include <QDir>

#include <future>
#include <vector>

namespace emulator::samples {

namespace {

constexpr int coverSize = 480;

/// A run of bars that becomes one track.
struct Movement
{
    QString title;
    int bars;
};

struct Album
{
    QString artist;
    QString title;
    QString genre;
    int year;
    Format format;
    int rate;
    bool embeddedCover;
    bool continuous; ///< one piece cut into tracks; else each movement is a piece of its own
    Sketch sketch;
    std::vector<Movement> movements;
};

Sketch sketch(double tempo, int key, bool minor, std::vector<int> degrees, unsigned seed,
    bool bells, int stepsPerBeat)
{
    Sketch made;
    made.beatsPerMinute = tempo;
    made.key = key;
    made.minor = minor;
    made.degrees = std::move(degrees);
    made.seed = seed;
    made.bells = bells;
    made.stepsPerBeat = stepsPerBeat;
    return made;
}

std::vector<Album> albums()
{
    const auto text = [](const char* ascii) { return QString::fromUtf8(ascii); };
    return {
        { text("The Paper Lanterns"), text("Harbour at First Light"), text("Ambient"), 2021,
            Format::Flac, 44100, true, true,
            sketch(84, 57, true, { 1, 6, 3, 7, 4, 1, 6, 5 }, 11, true, 2),
            { { text("Moorings"), 4 }, { text("Low Tide"), 5 }, { text("Gulls over the Pier"), 4 },
                { text("Open Water"), 6 }, { text("Evening Lamps"), 4 } } },
        { text("Mira Solstice"), text("Night Trains"), text("Electronic"), 2018, Format::Opus,
            48000, false, true, sketch(104, 62, true, { 1, 3, 7, 4, 6, 3, 7, 5 }, 23, false, 4),
            { { text("Platform Two"), 5 }, { text("Sleeper Car"), 7 },
                { text("Border at Three"), 5 }, { text("Arrival, Slowly"), 8 } } },
        { text("Ingrid & the Orchard"), text("Small Rooms"), text("Folk"), 2009, Format::Flac,
            44100, true, false, sketch(96, 60, false, { 1, 5, 6, 4, 1, 3, 4, 5 }, 5, false, 2),
            { { text("Kitchen Window"), 4 }, { text("Stairs to the Attic"), 5 },
                { text("Caf\u00e9 M\u00fcller, 6 a.m."), 4 }, { text("The Long Table"), 6 } } },
    };
}

/// Returns an empty text, or what went wrong.
QString keep(const QString& file, const QByteArray& bytes)
{
    QString error;
    if (!files::replaceFile(file, bytes, files::publicFile, &error))
        return QStringLiteral("cannot write %1").arg(error);
    return QString();
}

class AlbumMaker
{
public:
    AlbumMaker(const Album& album, const QString& folder)
        : m_album(album)
        , m_folder(folder + QLatin1Char('/') + album.artist + QLatin1Char('/') + album.title)
        , m_cover{ drawCover(album.artist + album.title, coverSize), "image/png" }
    {
    }

    QString make()
    {
        if (!QDir().mkpath(m_folder))
            return QStringLiteral("cannot make the folder %1").arg(m_folder);
        if (!m_album.embeddedCover) {
            QString problem = keep(m_folder + QLatin1String("/cover.png"), m_cover.bytes);
            if (!problem.isEmpty())
                return problem;
        }
        return m_album.continuous ? makeContinuous() : makeSeparate();
    }

private:
    QString makeContinuous()
    {
        Sketch whole = m_album.sketch;
        whole.bars = 0;
        for (const Movement& movement : m_album.movements)
            whole.bars += movement.bars;
        const Score score = compose(whole);
        const Sound sound = synthesize(score, m_album.rate, 3.0);
        double beat = 0;
        QString problem;
        for (size_t i = 0; i < m_album.movements.size() && problem.isEmpty(); ++i) {
            const size_t begin = frameOfBeat(score, m_album.rate, beat);
            beat += 4.0 * m_album.movements[i].bars;
            problem = write(cut(sound, begin, frameOfBeat(score, m_album.rate, beat)), i);
        }
        return problem;
    }

    QString makeSeparate()
    {
        QString problem;
        for (size_t i = 0; i < m_album.movements.size() && problem.isEmpty(); ++i) {
            Sketch piece = m_album.sketch;
            piece.bars = m_album.movements[i].bars;
            piece.seed += static_cast<unsigned>(i);
            piece.key += static_cast<int>(i * 5 % 7);
            problem = write(synthesize(compose(piece), m_album.rate, 2.5), i);
        }
        return problem;
    }

    QString write(const Sound& sound, size_t place)
    {
        catalogue::Tags tags;
        tags.title = m_album.movements[place].title;
        tags.artist = m_album.artist;
        tags.albumArtist = m_album.artist;
        tags.album = m_album.title;
        tags.genre = m_album.genre;
        tags.number = static_cast<int>(place) + 1;
        tags.year = m_album.year;
        const QString file = QStringLiteral("%1/%2 %3.%4")
                                 .arg(m_folder)
                                 .arg(tags.number, 2, 10, QLatin1Char('0'))
                                 .arg(tags.title, suffixOf(m_album.format));
        QString problem = encode(sound, m_album.format, file);
        if (!problem.isEmpty())
            return problem;
        return writeTags(
            file, m_album.format, tags, m_album.embeddedCover ? m_cover : catalogue::Picture());
    }

    const Album& m_album;
    QString m_folder;
    catalogue::Picture m_cover;
};

// One thread an album: encoding takes most of the time.
QString makeAlbums(const std::vector<Album>& wanted, const QString& folder)
{
    std::vector<std::future<QString>> making;
    making.reserve(wanted.size());
    for (const Album& album : wanted)
        making.push_back(std::async(
            std::launch::async, [&album, &folder] { return AlbumMaker(album, folder).make(); }));
    QString problem;
    for (std::future<QString>& made : making) {
        const QString own = made.get();
        problem = problem.isEmpty() ? own : problem;
    }
    return problem;
}

// Every other track of every album, so that the playlist mixes formats and artists.
QString writePlaylist(const std::vector<Album>& made, const QString& folder)
{
    QString list = QStringLiteral("#EXTM3U\n#PLAYLIST:Evening Mix\n");
    for (const Album& album : made) {
        for (size_t i = 0; i < album.movements.size(); i += 2) {
            list += QStringLiteral("%1/%2/%3 %4.%5\n")
                        .arg(album.artist, album.title)
                        .arg(i + 1, 2, 10, QLatin1Char('0'))
                        .arg(album.movements[i].title, suffixOf(album.format));
        }
    }
    return keep(folder + QLatin1String("/Evening Mix.m3u8"), list.toUtf8());
}

} // namespace

QString makeSampleAlbums(const QString& folder)
{
    if (QDir(folder).exists())
        return {};
    const QString unfinished =
        QStringLiteral("%1.%2").arg(folder).arg(QCoreApplication::applicationPid());
    QDir(unfinished).removeRecursively();
    const std::vector<Album> wanted = albums();
    QString problem = makeAlbums(wanted, unfinished);
    if (problem.isEmpty())
        problem = writePlaylist(wanted, unfinished);
    // Another emulator may have been faster; its samples are as good.
    if (problem.isEmpty() && !QDir().rename(unfinished, folder) && !QDir(folder).exists())
        problem = QStringLiteral("cannot make the folder %1").arg(folder);
    QDir(unfinished).removeRecursively();
    return problem;
}

} // namespace emulator::samples
