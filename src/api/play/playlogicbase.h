#pragma once

#include "cmuinode.h"
#include "playlogicinterface.h"

/// A play logic as a node: commands, from wherever, arrive as set-data requests on its path and end
/// in one of the operations below, on the thread of the node. An operation answers the request's
/// reply, now or later.
class TAVU_EXPORT PlayLogicBase : public CMUINode, public PlayLogicInterface
{
    Q_OBJECT

public:
    /// Puts the node into `nodes`, which owns it, and makes it the instance of its path.
    PlayLogicBase(CMNodes* nodes, const CMPath& path);
    ~PlayLogicBase() override;

    CMReply<QVariant> play(const TavuPlayLogicPlayArgs& args) override;
    CMReply<QVariant> next() override;
    CMReply<QVariant> previous() override;
    CMReply<QVariant> pause() override;
    CMReply<QVariant> stop(TavuPlayLogicStopReason::Enum reason) override;
    CMReply<QVariant> seekTime(qint64 position) override;
    CMReply<QVariant> like() override;
    CMReply<QVariant> dislike() override;

    void setDataRequest(const CMSetDataRequest& request) override;

protected:
    virtual void playInternal(
        const CMSetDataRequest& request, const TavuPlayLogicPlayArgs& args) = 0;
    virtual void likeInternal(const CMSetDataRequest& request) = 0;
    virtual void dislikeInternal(const CMSetDataRequest& request) = 0;
    virtual void nextInternal(const CMSetDataRequest& request) = 0;
    virtual void previousInternal(const CMSetDataRequest& request) = 0;
    virtual void pauseInternal(const CMSetDataRequest& request) = 0;
    virtual void stopInternal(const CMSetDataRequest& request) = 0;
    /// `args` is a TavuPlayLogicSeekArgs.
    virtual void seekTimeInternal(const CMSetDataRequest& request, const QVariantHash& args) = 0;

private:
    CMReply<QVariant> give(const char* command, const TavuHash& args = TavuHash());
};
