#include "musicfolder.h"

#include "emulator/catalogue/library.h"
#include "emulator/catalogue/scanner.h"
#include "emulator/catalogue/scanstate.h"
#include "emulator/catalogue/tagreader.h"
#include "emulator/samples/cover.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <atomic>
#include <ctime>
#include <unistd.h>
#include <vector>

using namespace emulator;
using namespace emulator::catalogue;

namespace {

void writeFile(const QString& name, const QByteArray& bytes)
{
    QFile file(name);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

class Scan : public ::testing::Test
{
protected:
    void SetUp() override { QDir().mkpath(root()); }

    QString root() const { return m_folder.filePath(text("music")); }
    QString stateFile() const { return m_folder.filePath(text("scan")); }
    /// Hard links of one file: many names to go through without many bytes to write.
    void addManyFiles(int count) const
    {
        addTone("0.flac", tagged("A", "One", "x"));
        const QByteArray first = QFile::encodeName(path("0.flac"));
        for (int i = 1; i < count; ++i) {
            const QString name = root() + QStringLiteral("/%1.flac").arg(i);
            ASSERT_EQ(::link(first.constData(), QFile::encodeName(name).constData()), 0);
        }
    }
    QString path(const char* name) const { return root() + QLatin1Char('/') + text(name); }

    void addTone(const char* name, const Tags& tags) const
    {
        ASSERT_EQ(makeTone(path(name), samples::Format::Flac, tags, 0.1).toStdString(), "");
    }

    std::unique_ptr<Library> scanned() const
    {
        auto library = std::make_unique<Library>(root(), stateFile());
        bool done = false;
        QObject::connect(library.get(), &Library::scanned, [&done] { done = true; });
        library->scan();
        EXPECT_TRUE(waitUntil([&done] { return done; }));
        QObject::disconnect(library.get(), &Library::scanned, nullptr, nullptr);
        return library;
    }

    QTemporaryDir m_folder;
};

} // namespace

struct FormatCase
{
    samples::Format format;
    const char* mimeType;
};

class Formats : public ::testing::TestWithParam<FormatCase>
{
};

TEST_P(Formats, AreReadWithTagsDurationAndPicture)
{
    QTemporaryDir folder;
    const auto format = GetParam().format;
    const QString file = folder.filePath(text("tone.") + samples::suffixOf(format));
    Tags tags = tagged("Björk Guðmundsdóttir", "日本語", "Ünïcode & <b>", 7);
    tags.albumArtist = text("Various");
    tags.genre = text("Pop");
    tags.disc = 2;
    tags.year = 1999;
    const QByteArray cover = samples::drawCover(text("x"), 16);
    ASSERT_EQ(makeTone(file, format, tags, 0.5, cover).toStdString(), "");
    const TagReading reading = readTags(file);
    EXPECT_EQ(reading.problem.toStdString(), "");
    EXPECT_EQ(reading.tags.title, tags.title);
    EXPECT_EQ(reading.tags.artist, tags.artist);
    EXPECT_EQ(reading.tags.albumArtist, tags.albumArtist);
    EXPECT_EQ(reading.tags.album, tags.album);
    EXPECT_EQ(reading.tags.genre, tags.genre);
    EXPECT_EQ(reading.tags.number, 7);
    EXPECT_EQ(reading.tags.disc, 2);
    EXPECT_EQ(reading.tags.year, 1999);
    EXPECT_NEAR(double(reading.tags.durationMs), 500, 80);
    EXPECT_TRUE(reading.tags.picture);
    const auto picture = readPicture(file);
    ASSERT_TRUE(picture.has_value());
    EXPECT_EQ(picture->bytes, cover);
    EXPECT_EQ(picture->mimeType, "image/png");
    EXPECT_EQ(audioMimeType(file), GetParam().mimeType);
}

INSTANTIATE_TEST_SUITE_P(All, Formats,
    ::testing::Values(FormatCase{ samples::Format::Flac, "audio/flac" },
        FormatCase{ samples::Format::Mp3, "audio/mpeg" },
        FormatCase{ samples::Format::Opus, "audio/ogg" },
        FormatCase{ samples::Format::M4a, "audio/mp4" }));

TEST(TagReader, TakesAnOggFileByItsContentNotItsName)
{
    QTemporaryDir folder;
    const QString opus = folder.filePath(text("a.opus"));
    ASSERT_EQ(makeTone(opus, samples::Format::Opus, tagged("A", "B", "C")).toStdString(), "");
    const QString ogg = folder.filePath(text("a.ogg"));
    ASSERT_TRUE(QFile::rename(opus, ogg));
    EXPECT_EQ(readTags(ogg).tags.title, text("C"));
}

TEST(TagReader, SaysWhyAFileCannotBePlayed)
{
    QTemporaryDir folder;
    for (const char* name : { "a.flac", "a.mp3", "a.ogg", "a.m4a" }) {
        const QString file = folder.filePath(text(name));
        writeFile(file, "this is not music");
        EXPECT_NE(readTags(file).problem.toStdString(), "") << name;
    }
    EXPECT_NE(readTags(folder.filePath(text("none.flac"))).problem.toStdString(), "");
}

TEST(TagReader, TrustsThePictureNotItsLabel)
{
    EXPECT_EQ(asPicture("\xff\xd8\xff\xe0...")->mimeType, "image/jpeg");
    EXPECT_FALSE(asPicture("<svg onload='x'>").has_value());
    EXPECT_FALSE(asPicture("").has_value());
}

TEST_F(Scan, FindsMusicPlaylistsAndPictures)
{
    addTone("a/1.flac", tagged("A", "One", "x"));
    writeFile(path("a/Folder.JPG"), "\xff\xd8\xff");
    writeFile(path("list.m3u"), "a/1.flac\n");
    writeFile(path("notes.txt"), "hello");
    const auto library = scanned();
    EXPECT_EQ(library->catalogue()->tracks.size(), 1u);
    EXPECT_EQ(library->catalogue()->playlists.size(), 1u);
    EXPECT_EQ(library->catalogue()->albums[0].picture, text("a/Folder.JPG"));
    EXPECT_EQ(library->status().phase, ScanStatus::Phase::Done);
    EXPECT_EQ(library->status().found, 1);
}

TEST_F(Scan, ListsWhatCannotBeReadAndServesTheRest)
{
    addTone("good.flac", tagged("A", "One", "x"));
    writeFile(path("bad.flac"), "nonsense");
    const auto library = scanned();
    EXPECT_EQ(library->catalogue()->tracks.size(), 1u);
    ASSERT_EQ(library->status().problems.size(), 1u);
    EXPECT_EQ(library->status().problems[0].first, text("bad.flac"));
    EXPECT_EQ(library->status().problems[0].second, text("it is not a whole FLAC file"));
}

TEST_F(Scan, ReadsOnlyWhatChangedTheSecondTime)
{
    addTone("1.flac", tagged("A", "One", "x", 1));
    addTone("2.flac", tagged("A", "One", "y", 2));
    writeFile(path("bad.flac"), "nonsense");
    EXPECT_EQ(scanned()->status().read, 3);
    EXPECT_EQ(scanned()->status().read, 0);
    EXPECT_EQ(scanned()->status().problems.size(), 1u);
    addTone("3.flac", tagged("A", "One", "z", 3));
    ASSERT_TRUE(QFile::remove(path("1.flac")));
    const auto third = scanned();
    EXPECT_EQ(third->status().read, 1);
    ASSERT_EQ(third->catalogue()->tracks.size(), 2u);
    EXPECT_EQ(third->catalogue()->tracks[0].title, text("y"));
}

TEST_F(Scan, ReadsAFileAgainThatHasChangedButNotGrown)
{
    addTone("1.flac", tagged("A", "One", "x"));
    const auto size = QFileInfo(path("1.flac")).size();
    EXPECT_EQ(scanned()->catalogue()->tracks[0].title, text("x"));
    addTone("1.flac", tagged("A", "One", "y"));
    ASSERT_EQ(QFileInfo(path("1.flac")).size(), size);
    QFile file(path("1.flac"));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.setFileTime(
        QDateTime::currentDateTime().addSecs(60), QFileDevice::FileModificationTime));
    file.close();
    EXPECT_EQ(scanned()->catalogue()->tracks[0].title, text("y"));
}

TEST_F(Scan, PrefersTheCoverAmongThePicturesOfAFolder)
{
    // In pairs, since a folder lists its files in an order of its own.
    const std::vector<QByteArray> best{ "cover.jpg", "Cover.png", "folder.jpg", "front.png",
        "album.jpg" };
    for (size_t better = 0; better < best.size(); ++better) {
        for (size_t worse = better + 1; worse < best.size(); ++worse) {
            const QByteArray folder = best[better] + " and " + best[worse];
            addTone((folder + "/1.flac").constData(), tagged("A", folder.constData(), "x"));
            writeFile(path((folder + '/' + best[worse]).constData()), "\xff\xd8\xff");
            writeFile(path((folder + '/' + best[better]).constData()), "\xff\xd8\xff");
        }
    }
    const auto library = scanned();
    EXPECT_EQ(library->catalogue()->albums.size(), 10u);
    for (const Album& album : library->catalogue()->albums)
        EXPECT_EQ(
            album.picture, album.title + text("/") + album.title.section(text(" and "), 0, 0));
}

TEST_F(Scan, ServesTheKeptLibraryBeforeTheFolderIsReadAgain)
{
    addTone("1.flac", tagged("A", "One", "x"));
    scanned();
    Library library(root(), stateFile());
    size_t atFirst = 0;
    QObject::connect(&library, &Library::catalogueChanged, &library, [&] {
        if (atFirst == 0)
            atFirst = library.catalogue()->tracks.size();
    });
    library.scan();
    EXPECT_TRUE(waitUntil([&] { return atFirst > 0; }));
    EXPECT_EQ(atFirst, 1u);
}

TEST_F(Scan, TakesADamagedStateAsNone)
{
    addTone("1.flac", tagged("A", "One", "x"));
    scanned();
    QFile state(stateFile());
    ASSERT_TRUE(state.open(QIODevice::ReadOnly));
    const QByteArray good = state.readAll();
    state.close();
    ASSERT_TRUE(loadScan(stateFile(), root()).has_value());
    EXPECT_FALSE(loadScan(stateFile(), text("/elsewhere")).has_value());
    for (int cut = 0; cut < good.size(); cut += 7) {
        writeFile(stateFile(), good.left(cut));
        EXPECT_FALSE(loadScan(stateFile(), root()).has_value()) << cut;
    }
    for (int at = 0; at < good.size(); at += 5) {
        QByteArray bad = good;
        bad[at] = static_cast<char>(bad.at(at) ^ 0x10);
        writeFile(stateFile(), bad);
        EXPECT_FALSE(loadScan(stateFile(), root()).has_value()) << at;
    }
    EXPECT_EQ(scanned()->status().read, 1);
}

TEST_F(Scan, OfAnEmptyFolderEndsWithAnEmptyCatalogue)
{
    EXPECT_TRUE(scanned()->catalogue()->tracks.empty());
}

TEST_F(Scan, EndsWithoutHangingInALoopOfLinks)
{
    addTone("a/1.flac", tagged("A", "One", "x"));
    ASSERT_TRUE(QFile::link(root(), path("a/loop")));
    EXPECT_EQ(scanned()->catalogue()->tracks.size(), 1u);
}

TEST_F(Scan, ServesWhatItHasFoundSoFarAndTellsHowFarItIs)
{
    for (int i = 0; i < 3; ++i)
        addTone(qPrintable(QStringLiteral("%1.flac").arg(i)), tagged("A", "One", "x", i));
    Library library(root(), stateFile());
    std::vector<ScanStatus> told;
    std::vector<size_t> served;
    QObject::connect(&library, &Library::catalogueChanged, [&] {
        told.push_back(library.status());
        served.push_back(library.catalogue()->tracks.size());
    });
    library.scan();
    ASSERT_TRUE(
        waitUntil([&] { return !told.empty() && told.back().phase == ScanStatus::Phase::Done; }));
    EXPECT_EQ(told.front().phase, ScanStatus::Phase::Reading);
    EXPECT_EQ(told.front().read, 1);
    EXPECT_EQ(told.front().toRead, 3);
    EXPECT_EQ(served.front(), 1u);
    EXPECT_EQ(told.back().read, 3);
    EXPECT_EQ(served.back(), 3u);
}

TEST_F(Scan, CanBeLeftInTheMiddle)
{
    for (int i = 0; i < 5; ++i)
        addTone(qPrintable(QStringLiteral("%1.flac").arg(i)), tagged("A", "One", "x", i));
    std::atomic_bool stop{ false };
    int read = 0;
    const auto leave = [&](const ScanResult& result, const ScanStatus&) {
        read = static_cast<int>(result.files.size());
        stop = true;
    };
    EXPECT_FALSE(Scanner(root(), stop, leave).run({}).has_value());
    EXPECT_EQ(read, 1);
}

TEST_F(Scan, EndsWithItsLibrary)
{
    addManyFiles(3000);
    {
        Library library(root(), stateFile());
        library.scan();
    }
    EXPECT_FALSE(QFile::exists(stateFile())) << "what was not scanned to its end is not kept";
}

TEST_F(Scan, OfALargeLibraryReadsNothingTheSecondTime)
{
    constexpr int count = 3000;
    addManyFiles(count);
    EXPECT_EQ(scanned()->status().read, count);
    const std::clock_t start = std::clock();
    const auto again = scanned();
    EXPECT_LT(std::clock() - start, 5 * CLOCKS_PER_SEC); // with sanitizers
    EXPECT_EQ(again->status().read, 0);
    EXPECT_EQ(again->catalogue()->tracks.size(), size_t(count));
}
