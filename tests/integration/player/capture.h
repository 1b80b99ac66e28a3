#pragma once

#include "sound.h"

#include <QString>
#include <QTemporaryFile>

#include <vector>

/// What an output was given to sound, over pauses and re-opened streams. Unlike a file sink it
/// keeps what sounded before a flush.
class Capture
{
public:
    Capture();
    ~Capture();
    Q_DISABLE_COPY_MOVE(Capture)

    /// Paces for output(). The second is only about ten times as fast as the sound, for whole files
    /// of FLAC.
    static QString realTime();
    static QString tenfold();
    /// For player.output.
    QString output(const QString& pace) const;
    QByteArray samples() const;
    qint64 size() const;

private:
    QTemporaryFile m_file;
    int m_descriptor = -1;
};

/// Where a capture leaves the original's course: frames left out at each place, or, below 0, heard
/// again. The test fails when something else than the original sounds.
std::vector<int> jumps(const QByteArray& captured, const Sound& original);
