#include "tavupaths.h"

#include <atomic>

namespace {

CMPath amazonMusicSetting(const char* name)
{
    return CMPath(QStringLiteral("/settings/amazonMusic/") + QString::fromLatin1(name));
}

std::atomic<qint64> previousTrackTimeLimit{ 3000 };

} // namespace

CMPath TavuAmazonMusicPrefixPath()
{
    return CMPath(QStringLiteral("/AmazonMusic/"));
}

CMPath TavuAmazonMusicBrowsePath()
{
    return CMPath(QStringLiteral("/AmazonMusic/browse"));
}

CMPath TavuAmazonMusicSearchPath()
{
    return CMPath(QStringLiteral("/AmazonMusic/search"));
}

CMPath TavuAmazonMusicPlayLogicPath()
{
    return CMPath(QStringLiteral("/AmazonMusic/playLogic"));
}

CMPath TavuAmazonMusicPrePlayPath()
{
    return CMPath(QStringLiteral("/AmazonMusic/prePlay"));
}

CMPath TavuAmazonMusicBrowsePostActionPath()
{
    return CMPath(QStringLiteral("/AmazonMusic/action/post"));
}

CMPath TavuAmazonMusicBrowseRatingPath()
{
    return CMPath(QStringLiteral("/AmazonMusic/action/rating"));
}

CMPath TavuAmazonMusicBrowseCloseActionPath()
{
    return CMPath(QStringLiteral("/AmazonMusic/action/close"));
}

CMPath TavuAmazonMusicBaseUrlPath()
{
    return amazonMusicSetting("baseUrl");
}

CMPath TavuAmazonMusicAuthorizationServiceUrlPath()
{
    return amazonMusicSetting("authorizationServiceUrl");
}

CMPath TavuAmazonMusicTokenServiceUrlPath()
{
    return amazonMusicSetting("tokenServiceUrl");
}

CMPath TavuAmazonMusicDeviceCodeUrlPath()
{
    return amazonMusicSetting("deviceCodeUrl");
}

CMPath TavuAmazonMusicClientIdPath()
{
    return amazonMusicSetting("clientId");
}

CMPath TavuAmazonMusicClientSecretPath()
{
    return amazonMusicSetting("clientSecret");
}

CMPath TavuAmazonMusicScope()
{
    return amazonMusicSetting("scope");
}

CMPath TavuAmazonMusicMaxQueueSizePath()
{
    return amazonMusicSetting("maxQueueSize");
}

CMPath TavuAmazonMusicDeviceHDCapabilityPath()
{
    return amazonMusicSetting("deviceHDCapability");
}

CMPath TavuAmazonMusicDomainSuffixPath()
{
    return amazonMusicSetting("domainSuffix");
}

QString TavuAmazonMusicName()
{
    return QStringLiteral("amazonMusic");
}

QString TavuService_AmazonMusic_Id()
{
    return QStringLiteral("AmazonMusic");
}

CMPath TavuOAuth2AddServicePath()
{
    return CMPath(QStringLiteral("/oauth2/addService"));
}

CMPath TavuOAuth2ServicePath()
{
    return CMPath(QStringLiteral("/oauth2/services/"));
}

QString TavuOAuth2AccessTokenSubPath()
{
    return QStringLiteral("accessToken");
}

QString TavuOAuth2RefreshTokenSubPath()
{
    return QStringLiteral("refreshToken");
}

QString TavuOAuth2LoggedInSubPath()
{
    return QStringLiteral("loggedIn");
}

QString TavuOAuth2DeviceCodeSubPath()
{
    return QStringLiteral("deviceCode");
}

QString TavuOAuth2StartLoginSubPath()
{
    return QStringLiteral("startLogin");
}

QString TavuOAuth2LogoutSubPath()
{
    return QStringLiteral("logout");
}

CMPath TavuPlayerPlayModePath()
{
    return CMPath(QStringLiteral("/player/playMode"));
}

CMPath TavuNetworkStateConnected()
{
    return CMPath(QStringLiteral("/network/connected"));
}

qint64 TavuPreviousTrackTimeLimit()
{
    return previousTrackTimeLimit;
}

void TavuSetPreviousTrackTimeLimit(qint64 ms)
{
    previousTrackTimeLimit = ms;
}

QString TavuStreamerAttributesStartPaused()
{
    return QStringLiteral("startPaused");
}
