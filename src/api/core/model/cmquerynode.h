#pragma once

#include "cmuinode.h"

/// A node that takes a text from the user, such as a search field.
class TAVU_EXPORT CMQueryNode : public CMUINode
{
    Q_OBJECT

public:
    explicit CMQueryNode(const CMPath& path);

    void setDataRequest(const CMSetDataRequest& request) override;
    QVariant getRoleData(const QString& role, const QMap<QString, QString>& params) const override;

    /// Answers the query. False when the node cannot; the request then fails with an error.
    virtual bool queryRequest(const CMSetDataRequest& request) = 0;
};
