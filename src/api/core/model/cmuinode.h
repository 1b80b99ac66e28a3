#pragma once

#include "cmnode.h"
#include "tavumediadata.h"
#include "tavuroles.h"
#include "trstring.h"

#include <QMap>

/// A node that a user interface can show as a row.
class TAVU_EXPORT CMUINode : public CMNode
{
    Q_OBJECT

public:
    using CMNode::CMNode;

    // What the row shows. Each is in the row from the first call on; a later call replaces it.
    // Those who watch the node hear of every call.
    void setTitle(const TrString& title);
    void setMediaData(const TavuMediaData& mediaData);
    /// Shows the row as one that cannot be used now. Requests are still answered.
    virtual void setDisabled(bool disabled);

    /// The value of one role; an invalid variant when the node has none. `params` are the
    /// parameters of the path that was asked.
    virtual QVariant getRoleData(const QString& role, const QMap<QString, QString>& params) const;
    /// The node as a row.
    TavuRoles roles() const;

    /// Answers the roles as a list, in the order asked for.
    void getDataRequest(const CMGetDataRequest& request) override;

protected:
    /// Changes the roles and tells those who watch the node.
    template <class Change>
    void changeRoles(Change&& change)
    {
        {
            const std::lock_guard<std::mutex> guard(mutex());
            change(m_roles);
        }
        notifyData();
    }

private:
    TrString m_title; // Translated when it is read.
    bool m_hasTitle = false;
    TavuRoles m_roles;
};
