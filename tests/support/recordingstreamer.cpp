#include "recordingstreamer.h"

#include "watchdog.h"

#include <gtest/gtest.h>

#include <algorithm>

QVector<RecordingStreamer::Command> RecordingStreamer::commands() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_commands;
}

int RecordingStreamer::count(Kind kind) const
{
    const QVector<Command> all = commands();
    return static_cast<int>(std::count_if(
        all.begin(), all.end(), [kind](const Command& command) { return command.kind == kind; }));
}

RecordingStreamer::Command RecordingStreamer::expect(Kind kind)
{
    if (!waitUntil([&] { return commands().size() > m_lookedAt; })) {
        ADD_FAILURE() << "the streamer got no command; expected kind " << static_cast<int>(kind);
        return Command();
    }
    Command command = commands().at(m_lookedAt++);
    EXPECT_EQ(static_cast<int>(command.kind), static_cast<int>(kind));
    return command;
}

void RecordingStreamer::expectNothing()
{
    settle();
    const QVector<Command> all = commands();
    EXPECT_EQ(all.size(), m_lookedAt) << "the streamer got a command of kind "
                                      << (all.isEmpty() ? -1 : static_cast<int>(all.last().kind));
}

void RecordingStreamer::forgetCommands()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_commands.clear();
    m_lookedAt = 0;
}

void RecordingStreamer::startPresent()
{
    Q_EMIT mediaStarted(m_presentId);
    tellState(TavuPlayLogicState::Playing);
}

void RecordingStreamer::startNext()
{
    m_presentId = m_nextId.exchange(0);
    Q_EMIT mediaStarted(m_presentId);
}

void RecordingStreamer::tellState(TavuPlayLogicState::Enum state)
{
    Q_EMIT stateChanged(m_presentId, state);
}

void RecordingStreamer::tellPosition(qint64 position)
{
    Q_EMIT positionChanged(m_presentId, position);
}

void RecordingStreamer::tellBufferLevel(double percent)
{
    if (percent < 100.0)
        tellState(TavuPlayLogicState::Buffering);
    Q_EMIT bufferLevelChanged(m_presentId, percent);
}

void RecordingStreamer::wantNextMedia()
{
    Q_EMIT nextMediaWanted(m_presentId);
}

void RecordingStreamer::tellEnded()
{
    Q_EMIT ended(m_presentId);
}

void RecordingStreamer::tellFailed(const CMError& error)
{
    Q_EMIT failed(m_presentId, error);
}

void RecordingStreamer::tellNextFailed(const CMError& error)
{
    Q_EMIT failed(m_nextId.exchange(0), error);
}

void RecordingStreamer::tellRenewed(const TavuRoles& roles)
{
    Q_EMIT rolesRenewed(m_presentId, roles);
}

void RecordingStreamer::play(quint64 id, const TavuRoles& roles, const QVariantHash& attributes)
{
    m_presentId = id;
    m_nextId = 0;
    record({ Kind::Play, id, roles, attributes, 0 });
}

void RecordingStreamer::setNextMedia(
    quint64 id, const TavuRoles& roles, const QVariantHash& attributes)
{
    m_nextId = id;
    record({ Kind::SetNextMedia, id, roles, attributes, 0 });
}

void RecordingStreamer::setNoNextMedia()
{
    m_nextId = 0;
    record({ Kind::SetNoNextMedia, 0, {}, {}, 0 });
}

void RecordingStreamer::pause()
{
    record({ Kind::Pause, 0, {}, {}, 0 });
}

void RecordingStreamer::resume()
{
    record({ Kind::Resume, 0, {}, {}, 0 });
}

void RecordingStreamer::stop()
{
    m_presentId = 0;
    m_nextId = 0;
    record({ Kind::Stop, 0, {}, {}, 0 });
}

void RecordingStreamer::seekTime(qint64 position)
{
    record({ Kind::SeekTime, 0, {}, {}, position });
}

void RecordingStreamer::record(const Command& command)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_commands.append(command);
}
