#include "emulator/samples/cover.h"
#include "emulator/samples/encoder.h"
#include "emulator/samples/png.h"
#include "emulator/samples/samplealbums.h"
#include "emulator/samples/score.h"
#include "emulator/samples/synthesizer.h"

#include "emulator/catalogue/tagreader.h"

#include <gtest/gtest.h>

#include <QDirIterator>
#include <QMap>
#include <QTemporaryDir>

#include <algorithm>

using namespace emulator;
using namespace emulator::samples;

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

Sketch shortSketch()
{
    Sketch sketch;
    sketch.degrees = { 1, 4, 5 };
    sketch.bars = 3;
    sketch.beatsPerMinute = 240;
    return sketch;
}

} // namespace

TEST(Synthesizer, GivesSoundOfExactlyTheScoresLength)
{
    const Score score = compose(shortSketch());
    const Sound sound = synthesize(score, 44100, 0.1);
    EXPECT_EQ(sound.frames(), frameOfBeat(score, 44100, 12));
    EXPECT_EQ(sound.frames(), 132300u);
}

TEST(Synthesizer, IsTheSameEachTimeAndNeitherSilentNorClipped)
{
    const Sound once = synthesize(compose(shortSketch()), 22050, 0.1);
    const Sound again = synthesize(compose(shortSketch()), 22050, 0.1);
    EXPECT_EQ(once.samples, again.samples);
    const auto peak = *std::max_element(once.samples.begin(), once.samples.end());
    EXPECT_GT(peak, 15000);
    EXPECT_LT(peak, 32000);
    EXPECT_LT(std::abs(once.samples.back()), 300);
}

TEST(Synthesizer, CutsIntoPiecesThatJoinToTheWhole)
{
    const Score score = compose(shortSketch());
    const Sound whole = synthesize(score, 22050, 0.1);
    std::vector<int16_t> joined;
    for (int bar = 0; bar < 3; ++bar) {
        const Sound piece =
            cut(whole, frameOfBeat(score, 22050, 4 * bar), frameOfBeat(score, 22050, 4 * bar + 4));
        joined.insert(joined.end(), piece.samples.begin(), piece.samples.end());
    }
    EXPECT_EQ(joined, whole.samples);
}

TEST(Cover, IsAPictureOfItsOwnForEachName)
{
    const QByteArray one = drawCover(text("one"), 32);
    EXPECT_TRUE(one.startsWith(QByteArray("\x89PNG\r\n\x1a\n", 8)));
    EXPECT_TRUE(one.endsWith(QByteArray("IEND\xae\x42\x60\x82", 8)));
    EXPECT_EQ(one, drawCover(text("one"), 32));
    EXPECT_NE(one, drawCover(text("two"), 32));
}

TEST(Cover, HoldsThePixelsThatWereDrawn)
{
    const QByteArray png = encodePng(QByteArray("abcdefghijkl"), 2, 2);
    const int data = png.indexOf("IDAT") + 4;
    QByteArray stream = QByteArray(4, '\0') + png.mid(data, png.indexOf("IEND") - 8 - data);
    stream[3] = 14; // the unpacked size, which qUncompress() wants in front
    const QByteArray rows = qUncompress(stream);
    ASSERT_EQ(rows.size(), 14);
    EXPECT_EQ(rows.left(7), QByteArray("\x02") + "abcdef");
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(rows.at(8 + i) + "abcdef"[i], "ghijkl"[i]);
}

TEST(SampleAlbums, AreThreeTaggedAlbumsMadeAtOnceOrNotAtAll)
{
    QTemporaryDir parent;
    const QString folder = parent.filePath(text("samples"));
    ASSERT_EQ(makeSampleAlbums(folder).toStdString(), "");
    QMap<QString, qint64> durations;
    int formats[2]{ 0, 0 };
    QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString file = files.next();
        if (!catalogue::isMusicFile(file))
            continue;
        const auto reading = catalogue::readTags(file);
        EXPECT_EQ(reading.problem.toStdString(), "");
        EXPECT_GE(reading.tags.durationMs, 8000) << file.toStdString();
        EXPECT_LE(reading.tags.durationMs, 20000) << file.toStdString();
        durations[reading.tags.album] += reading.tags.durationMs;
        ++formats[file.endsWith(text(".opus")) ? 1 : 0];
    }
    EXPECT_EQ(durations.size(), 3);
    EXPECT_GT(formats[0], 0);
    EXPECT_GT(formats[1], 0);
    EXPECT_EQ(QDir(parent.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
        QStringList{ text("samples") });
    EXPECT_EQ(makeSampleAlbums(folder).toStdString(), "");
    EXPECT_NE(makeSampleAlbums(text("/proc/none/samples")).toStdString(), "");
}
