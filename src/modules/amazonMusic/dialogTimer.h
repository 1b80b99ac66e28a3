#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

class CMNode;

/// Removes a node that somebody else made, then itself. Used on the node's thread only.
class DialogTimer : public QObject
{
    Q_OBJECT

public:
    /// `node` is removed in `timeout` milliseconds, unless it has gone by then.
    DialogTimer(CMNode* node, int timeout);
    ~DialogTimer() override;

public Q_SLOTS:
    void on_timeout();

private:
    QPointer<CMNode> m_node; // Owned by the node tree.
    QTimer m_timer;
};
