#include "playlogicbase.h"

#include "tavuconnect.h"

#include <QHash>
#include <QThread>

#include <mutex>

namespace {

struct Instances
{
    std::mutex mutex;
    QHash<QString, PlayLogicInterface*> byPath;
};

Instances& instances()
{
    static Instances all;
    return all;
}

} // namespace

PlayLogicInterface::~PlayLogicInterface() = default;

PlayLogicInterface* PlayLogicInterface::instance(const CMPath& path)
{
    const std::lock_guard<std::mutex> guard(instances().mutex);
    return instances().byPath.value(path.text());
}

PlayLogicBase::PlayLogicBase(CMNodes* nodes, const CMPath& path)
    : CMUINode(path)
{
    qRegisterMetaType<TavuPlayLogicData>("TavuPlayLogicData");
    setNodes(nodes);
    const std::lock_guard<std::mutex> guard(instances().mutex);
    instances().byPath.insert(path.text(), this);
}

PlayLogicBase::~PlayLogicBase()
{
    const std::lock_guard<std::mutex> guard(instances().mutex);
    if (instances().byPath.value(path().text()) == this)
        instances().byPath.remove(path().text());
}

CMReply<QVariant> PlayLogicBase::play(const TavuPlayLogicPlayArgs& args)
{
    return give("play", args);
}

CMReply<QVariant> PlayLogicBase::next()
{
    return give("next");
}

CMReply<QVariant> PlayLogicBase::previous()
{
    return give("previous");
}

CMReply<QVariant> PlayLogicBase::pause()
{
    return give("pause");
}

CMReply<QVariant> PlayLogicBase::stop(TavuPlayLogicStopReason::Enum reason)
{
    TavuHash args;
    args.__set(QStringLiteral("reason"), static_cast<int>(reason));
    return give("stop", args);
}

CMReply<QVariant> PlayLogicBase::seekTime(qint64 position)
{
    TavuPlayLogicSeekArgs args;
    args.setSeekTime(position);
    return give("seekTime", args);
}

CMReply<QVariant> PlayLogicBase::like()
{
    return give("like");
}

CMReply<QVariant> PlayLogicBase::dislike()
{
    return give("dislike");
}

CMReply<QVariant> PlayLogicBase::give(const char* command, const TavuHash& args)
{
    TavuPlayLogicCommand record;
    record.setCommand(QString::fromLatin1(command));
    record.setArgs(args.__hash());
    const CMSetDataRequest request(path(), record.__variant());
    if (QThread::currentThread() == thread())
        setDataRequest(request);
    else
        QMetaObject::invokeMethod(
            this, [this, request] { setDataRequest(request); }, Qt::QueuedConnection);
    return request.reply();
}

void PlayLogicBase::setDataRequest(const CMSetDataRequest& request)
{
    const TavuPlayLogicCommand record(tavuvariant::toHash(request.value()));
    const QString command = record.command();
    if (command == QLatin1String("play"))
        playInternal(request, TavuPlayLogicPlayArgs(record.args()));
    else if (command == QLatin1String("next"))
        nextInternal(request);
    else if (command == QLatin1String("previous"))
        previousInternal(request);
    else if (command == QLatin1String("pause"))
        pauseInternal(request);
    else if (command == QLatin1String("stop"))
        stopInternal(request);
    else if (command == QLatin1String("seekTime"))
        seekTimeInternal(request, record.args());
    else if (command == QLatin1String("like"))
        likeInternal(request);
    else if (command == QLatin1String("dislike"))
        dislikeInternal(request);
    else
        refuse(request);
}
