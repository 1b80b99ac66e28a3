#pragma once

#include "cmabstractworker.h"

/// A worker with a name, a prefix path and a thread: the one it was made on.
class TAVU_EXPORT CMWorker : public CMAbstractWorker
{
    Q_OBJECT

public:
    /// `settings` may name a "prefix"; without one it is "/<name>/".
    CMWorker(const QVariantHash& settings, const QString& name);

    const QString& name() const { return m_name; }
    const CMPath& prefix() const { return m_prefix; }
    /// The prefix path joined with `subpath`.
    CMPath addPrefix(const QString& subpath) const { return m_prefix.appendSubpath(subpath); }

    void ping(const CMVoidReply& reply) override;
    QString trace() const override;

protected:
    /// Runs `function` on the worker's thread: now when called there, else from its event loop.
    void onOwnThread(const std::function<void()>& function);

private:
    QString m_name;
    CMPath m_prefix;
};
