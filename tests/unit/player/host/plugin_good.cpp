#include "cmnodesworker.h"
#include "cmplugin.h"

extern "C" Q_DECL_EXPORT CMAbstractWorker* worker_create(void*, const QVariantHash& settings)
{
    return new CMNodesWorker(settings, QStringLiteral("Good"));
}
