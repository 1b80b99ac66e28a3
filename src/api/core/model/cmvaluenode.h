#pragma once

#include "tavuexport.h"

#include <QObject>

#include <mutex>

/// What every node is at the bottom: an object that can be taken out of its tree, with a lock for
/// those who read it from another thread.
class TAVU_EXPORT CMValueNode : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Removes the node from the tree at once, so that its path stops answering, and destroys it
    /// when control returns to its thread's event loop.
    virtual void deleteLater();
    virtual std::mutex& mutex() { return m_mutex; }

private:
    std::mutex m_mutex;
};
