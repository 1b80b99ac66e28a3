#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace player {

/// How streams are fetched.
struct HttpOptions
{
    /// PEM file of certificate authorities trusted in addition to the system's; empty for none.
    QString caFile;
    /// "host:port:address:port" as curl's --connect-to takes it: where connections really go.
    QList<QByteArray> connectTo;
    /// Whether this machine and its link stay out of reach.
    bool refusesLocalAddresses = false;
    int connectTimeoutMs = 5000;
    /// A connection that sends nothing for so long while it may is given up, and the
    /// transfer goes on over another one.
    int stallTimeoutMs = 4000;
    /// A listener who has waited for so long for a byte is told that the stream is dead.
    int giveUpMs = 8000;
    /// The stream that is held in memory ahead of the decoder: so many milliseconds of it, within
    /// bounds of memory.
    int aheadMs = 20000;
    qint64 aheadBytesAtMost = qint64{ 4 } * 1024 * 1024;
    qint64 aheadBytesAtLeast = qint64{ 256 } * 1024;
    /// And so much at first: to receive and decrypt more would take the processor from the decoder.
    qint64 aheadBytesAtStart = qint64{ 128 } * 1024;
    /// For so long after its first byte a stream is at its start; it sounds by then.
    int startMs = 200;
    /// What stays in memory beside that of what was read: half as much, within bounds of its own.
    qint64 keptBytesAtMost = qint64{ 1 } * 1024 * 1024;
    qint64 keptBytesAtLeast = qint64{ 512 } * 1024;
};

} // namespace player
