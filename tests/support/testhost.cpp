#include "testhost.h"

#include "cmroot.h"
#include "tavupaths.h"

namespace {

constexpr int queuedTracks = 500;
constexpr qint64 previousTrackTimeLimit = 3000;

CMPath servicePath(const QString& subpath)
{
    return TavuOAuth2ServicePath().appendSubpath(TavuAmazonMusicName()).appendSubpath(subpath);
}

} // namespace

TestHost::TestHost()
{
    CMRoot()->reset();
    Streamer::setInstance(&m_streamer);
    setBaseUrl(QStringLiteral("https://service.example/"));
    setNetworkConnected(true);
    setPlayMode(TavuPlayerPlayMode::Normal);
    setMaxQueueSize(queuedTracks);
    setPreviousTrackTimeLimit(previousTrackTimeLimit);
    serveOAuth2();
}

TestHost::~TestHost()
{
    setPreviousTrackTimeLimit(previousTrackTimeLimit);
    CMRoot()->reset();
}

void TestHost::setBaseUrl(const QString& url)
{
    CMRoot()->setValue(TavuAmazonMusicBaseUrlPath(), TavuValue::fromString(url));
}

void TestHost::setToken(const QString& token)
{
    CMRoot()->setValue(servicePath(TavuOAuth2AccessTokenSubPath()), TavuValue::fromString(token));
}

void TestHost::setNetworkConnected(bool connected)
{
    CMRoot()->setValue(TavuNetworkStateConnected(), TavuValue::fromBool(connected));
}

void TestHost::setPlayMode(TavuPlayerPlayMode::Enum mode)
{
    CMRoot()->setValue(TavuPlayerPlayModePath(), TavuValue::fromPlayerPlayMode(mode));
}

void TestHost::setMaxQueueSize(int tracks)
{
    CMRoot()->setValue(TavuAmazonMusicMaxQueueSizePath(), TavuValue::fromI32(tracks));
}

void TestHost::setDeviceCapability(const QString& capability)
{
    CMRoot()->setValue(TavuAmazonMusicDeviceHDCapabilityPath(), TavuValue::fromString(capability));
}

void TestHost::setDomainSuffix(const QString& suffix)
{
    CMRoot()->setValue(TavuAmazonMusicDomainSuffixPath(), TavuValue::fromString(suffix));
}

void TestHost::setPreviousTrackTimeLimit(qint64 ms)
{
    TavuSetPreviousTrackTimeLimit(ms);
}

void TestHost::setLoggedIn(bool loggedIn)
{
    CMRoot()->setValue(servicePath(TavuOAuth2LoggedInSubPath()), TavuValue::fromBool(loggedIn));
}

void TestHost::serveOAuth2()
{
    CMRoot()->addService(TavuOAuth2AddServicePath(), &m_context,
        [this](const QVariant& argument, const CMReply<QVariant>& reply) {
            m_services.append(TavuOAuth2ServiceInfo(argument.toHash()));
            reply.setValue(QVariant());
        });
    CMRoot()->addService(servicePath(TavuOAuth2RefreshTokenSubPath()), &m_context,
        [this](const QVariant&, const CMReply<QVariant>& reply) {
            ++m_tokenRenewals;
            reply.setValue(QVariant());
            if (!m_renewedToken.isEmpty())
                setToken(m_renewedToken);
        });
}
