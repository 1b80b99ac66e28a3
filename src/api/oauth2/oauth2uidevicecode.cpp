#include "oauth2uidevicecode.h"

#include "cmactivatenode.h"
#include "cmglobal.h"
#include "cmroot.h"
#include "cmsubscribe.h"
#include "cmvalueitem.h"
#include "loginscreens.h"
#include "tavuconnect.h"
#include "tavupaths.h"

#include <QPointer>

/// Follows the service's values. An object of its own, so that the slots are no part of the public
/// class.
class OAuth2UiDeviceCode::Private : public QObject
{
    Q_OBJECT

public:
    Private(OAuth2UiDeviceCode* ui, CMNodes* nodes, CMSubscribe* subscribe,
        const QString& serviceName, const CMPath& browsePath);
    ~Private() override;

    bool isLoggedIn() const { return m_loggedIn; }
    void answer(const CMGetRowsRequest& request);

private Q_SLOTS:
    void on_loggedIn_changed(const TavuValue& value);
    void on_deviceCode_changed(const TavuValue& value);
    void on_newCode_activated(const CMSetDataRequest& request);

private:
    CMPath path(const QString& subpath) const;
    TavuHash present(const QString& subpath) const;
    void take(const TavuHash& record);
    TavuOAuth2DeviceCode shown() const;
    void startOnce();

    OAuth2UiDeviceCode* const q;
    CMSubscribe* const m_subscribe; // Not owned.
    const QString m_serviceName;
    const CMPath m_browsePath;
    const CMPath m_newCodePath;
    QPointer<CMActivateNode> m_newCode; // Owned by the nodes, which may die first.
    bool m_loggedIn = false;
    bool m_started = false; // Once for each time that the user is signed out.
    TavuOAuth2DeviceCode m_login;
    QString m_notice;
    int m_version = 0;
};

OAuth2UiDeviceCode::Private::Private(OAuth2UiDeviceCode* ui, CMNodes* nodes, CMSubscribe* subscribe,
    const QString& serviceName, const CMPath& browsePath)
    : q(ui)
    , m_subscribe(subscribe)
    , m_serviceName(serviceName)
    , m_browsePath(browsePath)
    , m_newCodePath(browsePath.appendSubpath(QStringLiteral("newCode")))
    , m_newCode(CMActivateNode::create(nodes, m_newCodePath, this,
          SLOT(on_newCode_activated(CMSetDataRequest)), Qt::QueuedConnection))
{
    new CMValueItem(this, path(TavuOAuth2LoggedInSubPath()), this,
        SLOT(on_loggedIn_changed(TavuValue)), Qt::AutoConnection);
    new CMValueItem(this, path(TavuOAuth2DeviceCodeSubPath()), this,
        SLOT(on_deviceCode_changed(TavuValue)), Qt::AutoConnection);
    m_loggedIn = TavuValue(present(TavuOAuth2LoggedInSubPath())).bool_();
    take(present(TavuOAuth2DeviceCodeSubPath()));
}

OAuth2UiDeviceCode::Private::~Private()
{
    if (m_newCode)
        m_newCode->deleteLater();
}

CMPath OAuth2UiDeviceCode::Private::path(const QString& subpath) const
{
    return (TavuOAuth2ServicePath() + m_serviceName).appendSubpath(subpath);
}

TavuHash OAuth2UiDeviceCode::Private::present(const QString& subpath) const
{
    return CMRoot()->getValue(path(subpath)).toHash();
}

void OAuth2UiDeviceCode::Private::on_loggedIn_changed(const TavuValue& value)
{
    if (value.bool_() == m_loggedIn)
        return;
    m_loggedIn = value.bool_();
    m_started = false;
    if (m_loggedIn)
        m_notice.clear();
    m_subscribe->notifyRows(m_browsePath);
    Q_EMIT q->loginStateChanged(m_loggedIn);
}

void OAuth2UiDeviceCode::Private::on_deviceCode_changed(const TavuValue& value)
{
    if (value == m_login)
        return;
    take(value);
    ++m_version;
    m_subscribe->notifyRows(m_browsePath);
}

void OAuth2UiDeviceCode::Private::take(const TavuHash& record)
{
    m_login = record;
    if (m_login.state() == QLatin1String("idle"))
        m_notice = m_login.message();
}

TavuOAuth2DeviceCode OAuth2UiDeviceCode::Private::shown() const
{
    TavuOAuth2DeviceCode login = m_login;
    if (login.displayName().isEmpty())
        login.setDisplayName(m_serviceName);
    return login;
}

void OAuth2UiDeviceCode::Private::startOnce()
{
    if (m_started || m_loggedIn)
        return;
    m_started = true;
    CMRoot()->invoke(path(TavuOAuth2StartLoginSubPath()), QVariant(), CMReply<QVariant>::create());
}

void OAuth2UiDeviceCode::Private::on_newCode_activated(const CMSetDataRequest& request)
{
    CMRoot()->invoke(
        path(TavuOAuth2StartLoginSubPath()), TavuValue::fromBool(true), request.reply());
}

void OAuth2UiDeviceCode::Private::answer(const CMGetRowsRequest& request)
{
    startOnce();
    const TavuOAuth2DeviceCode login = shown();
    const QList<TavuRoles> rows = loginscreens::rows(login, m_newCodePath, m_notice);
    QVariantList slice;
    const auto [begin, end] = CMGlobal::rowsRange(request.from(), request.to(), rows.size());
    for (int index = begin; index < end; ++index)
        slice.append(QVariant(CMGlobal::itemRolesToList(request.roles(), rows.at(index))));
    TavuRoles container = loginscreens::container(login);
    container.setPath(request.path());
    TavuRowsRoles answer;
    answer.setRoles(container);
    answer.setRows(slice);
    answer.setRowsCount(rows.size());
    answer.setRowsVersion(m_version);
    request.reply().setValue(answer);
}

OAuth2UiDeviceCode::OAuth2UiDeviceCode(QObject* parent, CMNodes* nodes, CMSubscribe* subscribe,
    const QString& serviceName, const CMPath& browsePath)
    : QObject(parent)
    , d(std::make_unique<Private>(this, nodes, subscribe, serviceName, browsePath))
{
}

OAuth2UiDeviceCode::~OAuth2UiDeviceCode() = default;

bool OAuth2UiDeviceCode::loggedIn() const
{
    return d->isLoggedIn();
}

void OAuth2UiDeviceCode::getRowsRequest(const CMGetRowsRequest& request)
{
    d->answer(request);
}

#include "oauth2uidevicecode.moc"
