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

    /// Answers the request with the encoded path of the screen to go to, now or later, and returns
    /// true. False when the node cannot; the request then fails with an error.
    virtual bool queryRequest(const CMSetDataRequest& request) = 0;
};
