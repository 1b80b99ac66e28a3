#include "capture.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <optional>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int frameSize = Sound::frameSize;
// So much of a sound with noise stands at one place only.
constexpr int blockFrames = 512;
constexpr int nearFrames = 5 * 44100;

int framesIn(const QByteArray& samples)
{
    return samples.size() / frameSize;
}

bool same(const QByteArray& one, int oneFrame, const QByteArray& other, int otherFrame, int frames)
{
    return std::memcmp(one.constData() + qptrdiff{ oneFrame } * frameSize,
               other.constData() + qptrdiff{ otherFrame } * frameSize,
               static_cast<size_t>(frames) * frameSize)
        == 0;
}

int equalFrames(const QByteArray& one, int oneFrame, const QByteArray& other, int otherFrame)
{
    const int most = std::min(framesIn(one) - oneFrame, framesIn(other) - otherFrame);
    int equal = 0;
    while (equal < most && same(one, oneFrame + equal, other, otherFrame + equal, 1))
        ++equal;
    return equal;
}

/// The place nearest to `expected` where the capture's block stands in the original.
std::optional<int> find(
    const QByteArray& captured, int at, const QByteArray& original, int expected)
{
    const int frames = std::min(blockFrames, framesIn(captured) - at);
    const int last = framesIn(original) - frames;
    for (int distance = 0; distance <= nearFrames; ++distance) {
        for (const int place : { expected + distance, expected - distance }) {
            if (place >= 0 && place <= last && same(captured, at, original, place, frames))
                return place;
        }
    }
    return std::nullopt;
}

} // namespace

Capture::Capture()
{
    EXPECT_TRUE(m_file.open());
    // A sink that starts anew begins at the file's start; what is appended stays.
    m_descriptor =
        ::open(QFile::encodeName(m_file.fileName()).constData(), O_WRONLY | O_APPEND | O_CLOEXEC);
    EXPECT_GE(m_descriptor, 0);
}

Capture::~Capture()
{
    ::close(m_descriptor);
}

QString Capture::realTime()
{
    return QStringLiteral("fdsink sync=true");
}

QString Capture::tenfold()
{
    return QStringLiteral("identity sleep-time=9000 ! fdsink sync=false");
}

QString Capture::output(const QString& pace) const
{
    return QStringLiteral("audioconvert ! audio/x-raw,format=S16LE,rate=44100,channels=2,layout="
                          "interleaved ! %1 fd=%2")
        .arg(pace)
        .arg(m_descriptor);
}

QByteArray Capture::samples() const
{
    QFile file(m_file.fileName());
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

qint64 Capture::size() const
{
    return QFileInfo(m_file.fileName()).size();
}

std::vector<int> jumps(const QByteArray& captured, const Sound& original)
{
    std::vector<int> found;
    int heard = 0;
    int expected = 0;
    for (;;) {
        const int equal = equalFrames(captured, heard, original.samples, expected);
        heard += equal;
        expected += equal;
        if (heard >= framesIn(captured))
            return found;
        const auto place = find(captured, heard, original.samples, expected);
        if (!place) {
            ADD_FAILURE() << "frame " << heard << " is none of the original near " << expected;
            return found;
        }
        found.push_back(*place - expected);
        expected = *place;
    }
}
