#include "cmnodesworker.h"
#include "cmplugin.h"
#include "cmroot.h"

#include <limits>

namespace {

/// Tells of its end.
class HangingWorker : public CMNodesWorker
{
public:
    using CMNodesWorker::CMNodesWorker;
    ~HangingWorker() override
    {
        CMRoot()->setValue(CMPath(QStringLiteral("/test/ended")), TavuValue::fromBool(true));
    }
    Q_DISABLE_COPY_MOVE(HangingWorker)
};

} // namespace

// Waits in its constructor for a service that answers when the test lets it.
extern "C" Q_DECL_EXPORT CMAbstractWorker* worker_create(void*, const QVariantHash& settings)
{
    const auto reply = CMReply<QVariant>::create();
    CMRoot()->invoke(CMPath(QStringLiteral("/test/gate")), QVariant(), reply);
    reply.waitForFinished(std::numeric_limits<unsigned long>::max());
    return new HangingWorker(settings, QStringLiteral("Hanging"));
}
