#pragma once

#include <QtGlobal>

#include <functional>
#include <memory>

namespace player {

/// Calls once, some time later; ends without a call when it is destroyed, which the called function
/// may do as well.
class Alarm
{
public:
    Alarm() = default;
    virtual ~Alarm() = default;
    Q_DISABLE_COPY_MOVE(Alarm)
};

/// Time as the login and token timers see it; tests turn it by hand. Used on one thread.
class Clock
{
public:
    Clock() = default;
    virtual ~Clock() = default;
    Q_DISABLE_COPY_MOVE(Clock)

    /// Milliseconds that only ever go forward, whatever becomes of the wall clock.
    virtual qint64 monotonicMs() const = 0;
    /// Milliseconds since the epoch, to be shown to people and for nothing else.
    virtual qint64 wallMs() const = 0;
    /// Calls `function` from the event loop after so many milliseconds.
    virtual std::unique_ptr<Alarm> after(qint64 ms, std::function<void()> function) = 0;
};

/// The machine's clocks.
class SystemClock : public Clock
{
public:
    qint64 monotonicMs() const override;
    qint64 wallMs() const override;
    std::unique_ptr<Alarm> after(qint64 ms, std::function<void()> function) override;
};

} // namespace player
