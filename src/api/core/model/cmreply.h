#pragma once

#include "cmerror.h"
#include "tavuexport.h"

#include <QMetaType>
#include <QVariant>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

class CMVoidReply;
class CMThreadHome;

/// A function that waits for a reply to finish, and the thread on which it was added.
struct CMReplyWatcher
{
    std::function<void(const CMVoidReply&)> function;
    Qt::ConnectionType type;
    std::shared_ptr<CMThreadHome> home;
};

/// The state that all handles of one reply share: whether it is finished, its error and its
/// watchers. Every operation may be called on any thread.
class TAVU_EXPORT CMReplyAbstractData : public std::enable_shared_from_this<CMReplyAbstractData>
{
public:
    CMReplyAbstractData() = default;
    virtual ~CMReplyAbstractData();
    Q_DISABLE_COPY_MOVE(CMReplyAbstractData)

    bool isFinished() const;
    CMError error() const;
    void finish();
    void setError(const CMError& error);
    bool waitForFinished(unsigned long ms);
    void addWatcher(CMReplyWatcher watcher);

protected:
    using Lock = std::unique_lock<std::mutex>;

    Lock lock() const { return Lock(m_mutex); }

    /// The first completion wins: runs `store` under the lock and finishes, unless finished
    /// already.
    template <class Store>
    void finishWith(Store&& store)
    {
        std::vector<CMReplyWatcher> watchers;
        {
            const Lock guard = lock();
            if (m_finished)
                return;
            store();
            watchers = markFinished();
        }
        // Outside the lock: a watcher may finish, cancel or watch this very reply.
        deliver(watchers);
    }

private:
    std::vector<CMReplyWatcher> markFinished();
    void deliver(const std::vector<CMReplyWatcher>& watchers);

    mutable std::mutex m_mutex;
    std::condition_variable m_condition;
    // Guarded by m_mutex.
    bool m_finished = false;
    CMError m_error;
    std::vector<CMReplyWatcher> m_watchers;
};

/// The shared state of a reply with a value.
template <class T>
class CMReplyData : public CMReplyAbstractData
{
public:
    /// The value; a default-constructed one before the reply is finished and when it failed.
    T value() const
    {
        const Lock guard = lock();
        return m_value;
    }

    void setValue(const T& value)
    {
        finishWith([&] { m_value = value; });
    }

private:
    T m_value{};
};

/// A handle to an answer that may still be on its way. Copies share the answer; the last one frees
/// it. A reply finishes once, with success, an error, or by being cancelled, which is an error of
/// its own: the first completion wins and every later one changes nothing and calls nobody. All
/// operations may be called on any thread.
class TAVU_EXPORT CMVoidReply
{
public:
    using Watcher = std::function<void(const CMVoidReply&)>;

    /// A handle without data: there is no answer to wait for.
    CMVoidReply() = default;
    explicit CMVoidReply(std::shared_ptr<CMReplyAbstractData> data)
        : m_data(std::move(data))
    {
    }

    static CMVoidReply create() { return CMVoidReply(std::make_shared<CMReplyAbstractData>()); }

    /// True for a handle without data. The operations below need data.
    bool operator!() const { return !m_data; }

    bool isFinished() const { return m_data->isFinished(); }
    /// The error; its name is empty before the end and after a success.
    CMError error() const { return m_data->error(); }

    /// Finishes with success and no value.
    void finish() const { m_data->finish(); }
    /// Finishes with an error. One without a name gets the default name, as an empty name would
    /// mean success.
    void setError(const CMError& error) const { m_data->setError(error); }
    /// Finishes with ErrorCancel().
    void cancel() const { m_data->setError(ErrorCancel()); }
    static CMError ErrorCancel();

    /// Blocks until the reply is finished and returns true, or false when `ms` milliseconds went by
    /// first; the largest value means no limit. Never call it on the thread that is to finish the
    /// reply.
    bool waitForFinished(unsigned long ms) const { return m_data->waitForFinished(ms); }

    /// Has `watcher` called exactly once when the reply finishes, or for a finished reply now,
    /// without the lock held. Qt::DirectConnection: on the finishing thread. Qt::QueuedConnection:
    /// from the event loop of the thread that adds the watcher. Qt::AutoConnection: directly when
    /// the finishing thread is the one that added it, else queued. Direct watchers run in the order
    /// in which they were added. A queued call to a thread that has ended is dropped.
    void addWatcher(Watcher watcher, Qt::ConnectionType type = Qt::AutoConnection) const;

    /// Whether both are handles to the same answer.
    friend bool operator==(const CMVoidReply& a, const CMVoidReply& b)
    {
        return a.m_data == b.m_data;
    }
    friend bool operator!=(const CMVoidReply& a, const CMVoidReply& b) { return !(a == b); }
    friend uint qHash(const CMVoidReply& reply, uint seed = 0)
    {
        return ::qHash(quintptr(reply.m_data.get()), seed);
    }

    const std::shared_ptr<CMReplyAbstractData>& data() const { return m_data; }

protected:
    std::shared_ptr<CMReplyAbstractData> m_data;
};

/// A handle to an answer with a value.
template <class T>
class CMReply : public CMVoidReply
{
public:
    CMReply() = default;
    explicit CMReply(std::shared_ptr<CMReplyData<T>> data)
        : CMVoidReply(std::move(data))
    {
    }
    /// The same answer seen with its value. `reply` must be a reply of a T, or without data.
    explicit CMReply(const CMVoidReply& reply)
        : CMVoidReply(reply)
    {
        Q_ASSERT_X(!reply || std::dynamic_pointer_cast<CMReplyData<T>>(reply.data()), "CMReply",
            "Wrong type passed to CMReply!");
    }

    static CMReply create() { return CMReply(std::make_shared<CMReplyData<T>>()); }

    T value() const { return typed()->value(); }
    void setValue(const T& value) const { typed()->setValue(value); }

    /// Has `function` called once with the value when the reply finishes without error, on the
    /// thread that addWatcher() would choose. A failed reply calls nothing.
    void onSuccess(
        std::function<void(const T&)> function, Qt::ConnectionType type = Qt::AutoConnection) const
    {
        addWatcher(
            [function = std::move(function)](const CMVoidReply& reply) {
                const auto data = std::dynamic_pointer_cast<CMReplyData<T>>(reply.data());
                Q_ASSERT_X(data, "CMReply", "Wrong type passed to CMReply::onSuccess()!");
                if (!reply.error().isSet())
                    function(data->value());
            },
            type);
    }

private:
    CMReplyData<T>* typed() const { return static_cast<CMReplyData<T>*>(m_data.get()); }
};

Q_DECLARE_METATYPE(CMVoidReply)
Q_DECLARE_METATYPE(CMReply<QVariant>)
