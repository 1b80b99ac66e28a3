#include "cmworker.h"

#include <QThread>

namespace {

QString prefixOf(const QVariantHash& settings, const QString& name)
{
    const QString configured = settings.value(QStringLiteral("prefix")).toString();
    return configured.isEmpty() ? QLatin1Char('/') + name + QLatin1Char('/') : configured;
}

} // namespace

CMWorker::CMWorker(const QVariantHash& settings, const QString& name)
    : m_name(name)
    , m_prefix(prefixOf(settings, name))
{
}

void CMWorker::ping(const CMVoidReply& reply)
{
    QMetaObject::invokeMethod(
        this, [reply] { reply.finish(); }, Qt::QueuedConnection);
}

QString CMWorker::trace() const
{
    return m_name + QLatin1String(" at ") + m_prefix.text();
}

void CMWorker::onOwnThread(const std::function<void()>& function)
{
    if (QThread::currentThread() == thread())
        function();
    else
        QMetaObject::invokeMethod(this, function, Qt::QueuedConnection);
}
