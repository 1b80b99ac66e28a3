#pragma once

#include "cmpath.h"
#include "cmrequest.h"
#include "tavuexport.h"
#include "tavuvalue.h"

#include <QObject>

#include <memory>

class CMNodes;
class CMSubscribe;

/// The host's device-code login of one service, as rows: while the user is signed out, a plug-in
/// answers every rows request with these screens. It follows what the OAuth 2 service publishes of
/// the service and starts a login when its screens are first asked for. Lives on its worker's
/// thread.
class TAVU_EXPORT OAuth2UiDeviceCode : public QObject
{
    Q_OBJECT

public:
    /// `nodes` receives the screens' action nodes ("Get a new code") under the browse path's
    /// worker; `subscribe` is told when the rows of `browsePath` change. Both must outlive this
    /// object.
    OAuth2UiDeviceCode(QObject* parent, CMNodes* nodes, CMSubscribe* subscribe,
        const QString& serviceName, const CMPath& browsePath);
    ~OAuth2UiDeviceCode() override;

    /// Whether the user is signed in. Right from construction on.
    bool loggedIn() const;
    /// Answers with the login screen for where the login stands now.
    void getRowsRequest(const CMGetRowsRequest& request);

Q_SIGNALS:
    /// Sent on changes only.
    void loginStateChanged(bool loggedIn);

private:
    class Private;
    std::unique_ptr<Private> d;
};
