#include "cmnodesworker.h"
#include "cmplugin.h"
#include "cmroot.h"

#include <limits>

// Waits in its constructor for a service that answers when the test lets it.
extern "C" Q_DECL_EXPORT CMAbstractWorker* worker_create(void*, const QVariantHash& settings)
{
    const auto reply = CMReply<QVariant>::create();
    CMRoot()->invoke(CMPath(QStringLiteral("/test/gate")), QVariant(), reply);
    reply.waitForFinished(std::numeric_limits<unsigned long>::max());
    return new CMNodesWorker(settings, QStringLiteral("Hanging"));
}
