#pragma once

#include "cmuinode.h"
#include "tavuactionreply.h"

/// A node that does something when it is activated, which is a set-data request on its path.
class TAVU_EXPORT CMActivateNode : public CMUINode
{
    Q_OBJECT

public:
    /// Makes a node and puts it into `nodes`, which owns it. An activation calls the receiver's
    /// slot (a signature prefixed with the digit 1, taking a CMSetDataRequest), which answers the
    /// request; once the receiver has died, activations fail. Without receiver, `receiver` and
    /// `slot` are null and the reply value answers.
    static CMActivateNode* create(CMNodes* nodes, const CMPath& path, QObject* receiver,
        const char* slot, Qt::ConnectionType type);

    /// The role under which an activation carries its value. The slot sees the role's own value,
    /// not the hash around it; a value that has no such role passes as it is.
    void setActivateRole(const QString& role) { m_activateRole = role; }
    /// The answer when there is no receiver.
    void setReplyValue(const TavuActionReply& value) { m_replyValue = value; }

    void setDataRequest(const CMSetDataRequest& request) override;

Q_SIGNALS:
    void activated(const CMSetDataRequest& request);

private:
    explicit CMActivateNode(const CMPath& path);

    CMSetDataRequest unwrapped(const CMSetDataRequest& request) const;

    QString m_activateRole;
    bool m_hasReceiver = false;
    TavuActionReply m_replyValue;
};
