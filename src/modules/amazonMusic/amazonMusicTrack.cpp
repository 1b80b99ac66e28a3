#include "amazonMusicTrack.h"

#include "amazonMusicLog.h"
#include "mimetypes.h"
#include "tavupaths.h"

namespace {

/// The time that the service's text says; an invalid one when it says none. Date and time are read
/// apart, because together they would be read as local time first, which has no hour to give for
/// one hour of the year.
QDateTime serviceTime(const QString& text)
{
    AMAZON_MUSIC_ENTER();
    constexpr int dateSize = 10;
    const QString upper = text.toUpper();
    const QDate date = QDate::fromString(upper.left(dateSize), QStringLiteral("yyyy-MM-dd"));
    const QTime time = QTime::fromString(upper.mid(dateSize), QStringLiteral("'T'HH:mm:ss.zzz'Z'"));
    return date.isValid() && time.isValid() ? QDateTime(date, time, Qt::UTC) : QDateTime();
}

QStringList headerLines(const TavuAmazonMusicAudioHeaders& headers)
{
    AMAZON_MUSIC_ENTER();
    QStringList lines;
    const TavuList<TavuAmazonMusicAudioHeader> list = headers.keyHeaders();
    for (int i = 0; i < list.size(); ++i)
        lines.append(list.record(i).name() + QLatin1String(": ") + list.record(i).value());
    return lines;
}

} // namespace

AmazonMusicTrack::AmazonMusicTrack(
    int naturalId, int shuffleId, const TavuAmazonMusicTrackInstance& trackInstance)
    : m_naturalId(naturalId)
    , m_shuffleId(shuffleId)
    , m_trackInstance(trackInstance)
{
    AMAZON_MUSIC_ENTER();
}

int AmazonMusicTrack::naturalId() const
{
    AMAZON_MUSIC_ENTER();
    return m_naturalId;
}

int AmazonMusicTrack::shuffleId() const
{
    AMAZON_MUSIC_ENTER();
    return m_shuffleId;
}

TavuAmazonMusicTrackInstance AmazonMusicTrack::trackInstance() const
{
    AMAZON_MUSIC_ENTER();
    return m_trackInstance;
}

void AmazonMusicTrack::clear()
{
    AMAZON_MUSIC_ENTER();
    m_trackInstance.clear();
}

bool AmazonMusicTrack::isSet() const
{
    AMAZON_MUSIC_ENTER();
    return !m_trackInstance.isEmpty();
}

QString AmazonMusicTrack::token() const
{
    AMAZON_MUSIC_ENTER();
    return m_token;
}

void AmazonMusicTrack::setToken(const QString& token)
{
    AMAZON_MUSIC_ENTER();
    m_token = token;
}

TavuUrl AmazonMusicTrack::eventCollectorUrl() const
{
    AMAZON_MUSIC_ENTER();
    return TavuUrl(m_trackInstance.playbackEventCollectorUrl());
}

TavuUrl AmazonMusicTrack::ratingUrl() const
{
    AMAZON_MUSIC_ENTER();
    return TavuUrl(definition().trackRatingUrl());
}

bool AmazonMusicTrack::encrypted() const
{
    AMAZON_MUSIC_ENTER();
    return !audio().headers().isEmpty();
}

bool AmazonMusicTrack::expired() const
{
    AMAZON_MUSIC_ENTER();
    return expiredAt(QDateTime::currentDateTimeUtc());
}

bool AmazonMusicTrack::expiredAt(const QDateTime& now) const
{
    AMAZON_MUSIC_ENTER();
    const QDateTime expires = expiry();
    return expires.isValid() && expires < now;
}

TavuRoles AmazonMusicTrack::tavuRoles() const
{
    AMAZON_MUSIC_ENTER();
    TavuList<TavuResource> resources;
    resources.append(resource());
    TavuMediaData mediaData;
    mediaData.setResources(resources);
    mediaData.setMetaData(metaData());

    TavuRoles roles;
    roles.setIcon(definition().image().uri());
    roles.setMediaData(mediaData);
    roles.setTitle(definition().title());
    const QString selfData = m_trackInstance.selfDataUrl();
    if (!selfData.isEmpty())
        roles.setPath(TavuAmazonMusicPrefixPath().addParam(QStringLiteral("trackUrl"), selfData));
    return roles;
}

TavuAmazonMusicTrackDefinition AmazonMusicTrack::definition() const
{
    AMAZON_MUSIC_ENTER();
    return m_trackInstance.trackDefinitionInst();
}

TavuAmazonMusicAudio AmazonMusicTrack::audio() const
{
    AMAZON_MUSIC_ENTER();
    return definition().audio();
}

QDateTime AmazonMusicTrack::expiry() const
{
    AMAZON_MUSIC_ENTER();
    return serviceTime(audio().expires());
}

QVariantHash AmazonMusicTrack::cryptoData() const
{
    AMAZON_MUSIC_ENTER();
    QVariantHash data;
    if (!m_token.isEmpty())
        data.insert(QStringLiteral("token"), m_token);
    data.insert(QStringLiteral("key-headers"), headerLines(audio().headers()));
    return { { QStringLiteral("amazonMusic"), data } };
}

TavuMetaData AmazonMusicTrack::metaData() const
{
    AMAZON_MUSIC_ENTER();
    TavuMetaData metaData;
    metaData.setArtist(definition().artist().name());
    metaData.setAlbum(definition().album().name());
    metaData.setTrack(definition().title());
    metaData.setPlayLogicPath(TavuAmazonMusicPlayLogicPath());
    if (expiry().isValid()) {
        const QString selfData = m_trackInstance.selfDataUrl();
        metaData.setPrePlayPath(TavuAmazonMusicPrePlayPath());
        metaData.setPrePlayData(
            TavuAmazonMusicPrefixPath().addParam(QStringLiteral("url"), selfData).toEncoded());
    }
    return metaData;
}

TavuResource AmazonMusicTrack::resource() const
{
    AMAZON_MUSIC_ENTER();
    TavuResource resource;
    resource.setUri(audio().uri());
    resource.setDuration(definition().duration());
    resource.setMimeType(MimeTypes::Audio::unknown());
    if (encrypted())
        resource.setCryptoData(cryptoData());
    const QDateTime expires = expiry();
    if (expires.isValid())
        resource.setValidUntil(expires.toMSecsSinceEpoch());
    return resource;
}
