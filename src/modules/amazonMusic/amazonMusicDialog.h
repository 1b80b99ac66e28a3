#pragma once

#include "tavuroles.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

class CMListRowsNode;
class CMNodes;

/// A message screen that goes away by itself. Belongs to nobody: it destroys itself at its end, and
/// its node with it; destroying it earlier removes the node too, and when the node tree goes it
/// goes as well. Used on one thread only.
class AmazonMusicDialog : public QObject
{
    Q_OBJECT

public:
    /// Puts a screen without rows into `nodes` for `timeout` milliseconds.
    AmazonMusicDialog(CMNodes* nodes, int timeout);
    ~AmazonMusicDialog() override;

    void addRow(const TavuRoles& row);
    /// The screen's path. Screens made in the same millisecond share it.
    CMPath path() const;

public Q_SLOTS:
    void on_timeout();

private:
    void removeNode();

    QTimer m_timer;
    QPointer<CMListRowsNode> m_node; // Owned by the node tree, which may go first.
};
