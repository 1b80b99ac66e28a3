#pragma once

#include "cmpath.h"
#include "tavuexport.h"
#include "tavuvalue.h"

#include <QHash>
#include <QObject>

#include <memory>
#include <mutex>

/// Announces the changes of one path. Receivers connect to its signals by signature.
class TAVU_EXPORT CMChangeChannel : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    void valueChanged(const TavuValue& value);
    void dataChanged(const CMPath& path);
    void rowsChanged(const CMPath& path);
};

/// Who wants to hear of changes of which path. Parameters of paths do not count. Every operation
/// may be called on any thread; a receiver hears on its own thread as its connection type says, and
/// no longer once it is destroyed.
class TAVU_EXPORT CMSubscribe
{
public:
    enum class ChangeType { Value, Data, Rows };

    CMSubscribe() = default;
    ~CMSubscribe();
    Q_DISABLE_COPY_MOVE(CMSubscribe)

    /// `slot` is a signature prefixed with the digit 1: it takes a TavuValue for values, else the
    /// CMPath that changed.
    void connectChange(ChangeType type, const CMPath& path, const QObject* receiver,
        const char* slot, Qt::ConnectionType connection);
    void disconnectChange(
        ChangeType type, const CMPath& path, const QObject* receiver, const char* slot);

    void notifyValue(const CMPath& path, const TavuValue& value);
    void notifyData(const CMPath& path);
    void notifyRows(const CMPath& path);

private:
    using Channel = std::shared_ptr<CMChangeChannel>;

    Channel channel(const CMPath& path);
    Channel presentChannel(const CMPath& path);

    std::mutex m_mutex;
    QHash<QString, Channel> m_channels; // Guarded by m_mutex; by the path's text.
};
