#include "player.h"

#include "cmroot.h"
#include "cmvalueitem.h"
#include "playlogicinterface.h"
#include "renewingstreamer.h"
#include "streamerplaylogic.h"
#include "tavupaths.h"
#include "words.h"

#include <QDateTime>

// What the player tells of itself, and how it hears of it.

namespace player {

void Player::followService(const Service& service)
{
    m_service = service;
    if (m_service.needsLogin())
        followLogin();
    followPlayLogic();
    watchRows(m_service.root());
    Q_EMIT loginChanged();
    fetchRestoredArtwork();
}

CMPath Player::loginPath(const QString& subpath) const
{
    return (TavuOAuth2ServicePath() + m_service.account).appendSubpath(subpath);
}

void Player::followLogin()
{
    new CMValueItem(this, loginPath(TavuOAuth2LoggedInSubPath()), this,
        SLOT(on_loggedIn_changed(TavuValue)), Qt::AutoConnection);
    new CMValueItem(this, loginPath(TavuOAuth2DeviceCodeSubPath()), this,
        SLOT(on_deviceCode_changed(TavuValue)), Qt::AutoConnection);
}

void Player::followPlayLogic()
{
    auto* logic = dynamic_cast<StreamerPlayLogic*>(playLogic());
    if (!logic)
        return;
    connect(logic, &StreamerPlayLogic::playbackDataChanged, this, &Player::setPlayData);
    connect(logic, &StreamerPlayLogic::positionChanged, this, &Player::setPosition);
    connect(logic, &StreamerPlayLogic::playbackFailed, this, &Player::fail);
    connect(logic, &StreamerPlayLogic::bufferLevelChanged, this, [this](double percent) {
        m_bufferLevel = percent;
        Q_EMIT playerChanged();
    });
    connect(logic, &StreamerPlayLogic::mediaSkipped, this,
        [this](const TavuRoles& track, const CMError& error) {
            if (mayGoOnItself() && resourceExpired(track))
                m_aged.passOver(track, error, isStepping());
            else
                m_skipped.add(track.title(), error.message());
        });
}

void Player::setPlayData(const TavuPlayLogicData& data)
{
    const bool sameItem = data.trackRoles() == m_data.trackRoles();
    const bool idle = data.state() == TavuPlayLogicState::Idle;
    const TavuPlayLogicData before = std::exchange(m_data, data);
    const qint64 position = m_position;
    if (!data.trackRoles().isEmpty())
        m_restored.clear();
    m_bufferLevel = data.state() == TavuPlayLogicState::Buffering ? m_bufferLevel : 100.0;
    if (idle || !sameItem)
        notePosition(0);
    if (data.state() == TavuPlayLogicState::Playing) {
        m_error.clear();
        if (m_resume.data())
            m_resume.setValue(QVariant());
    }
    if (idle && before.state() != TavuPlayLogicState::Idle)
        noteEnd(before, position);
    else
        notePlayed(before);
    m_history.follow(shown());
    m_sleep.follow(shown());
    Q_EMIT playerChanged();
}

void Player::notePosition(qint64 position)
{
    m_position = position;
    m_positionAt = QDateTime::currentMSecsSinceEpoch();
    m_positionAge.start();
}

void Player::setPosition(qint64 position)
{
    notePosition(position);
    Q_EMIT positionChanged(m_position, m_positionAt);
}

void Player::fail(const CMError& error)
{
    if (m_resume.data())
        m_resume.setError(error);
    const bool stepped = isStepping();
    m_step.reset();
    if (stepped && !isGoingOn() && hasLostToAge(m_data.trackRoles(), true)) {
        m_stepFailure = error;
        return goOn(m_data.trackRoles(), true);
    }
    giveUpGoingOn();
    tellFailure(error);
}

void Player::tellFailure(const CMError& error)
{
    m_error = error;
    showError(error, QStringLiteral("player"));
    Q_EMIT playerChanged();
}

namespace {

/// 0 where the service tells none, or one beyond what clients hold: a whole number in JSON, or
/// microseconds on the bus.
qint64 durationOf(const TavuRoles& track)
{
    constexpr qint64 most = (qint64{ 1 } << 53) - 1;
    const qint64 duration = track.mediaData().firstResource().duration();
    return duration > 0 && duration <= most ? duration : 0;
}

} // namespace

qint64 Player::remaining() const
{
    const qint64 duration = durationOf(m_data.trackRoles());
    const bool moves = m_data.state() == TavuPlayLogicState::Playing;
    const qint64 since = moves ? m_positionAge.elapsed() : 0;
    return duration > 0 ? qMax<qint64>(0, duration - m_position - since) : -1;
}

QVariantHash Player::player() const
{
    const TavuPlayLogicData data = shown();
    const TavuRoles track = data.trackRoles();
    const TavuMetaData meta = track.mediaData().metaData();
    const TavuPlayLogicControls controls = data.controls();
    const TavuPlayLogicPlayModesSupported modes = data.playModesSupported();
    const Words words = wordsOf(m_error);
    const QVariant error = m_error.isSet()
        ? QVariant(QVariantHash{
            { QStringLiteral("title"), words.title }, { QStringLiteral("detail"), words.text } })
        : QVariant();
    return {
        { QStringLiteral("state"), static_cast<int>(data.state()) },
        { QStringLiteral("position"), position() },
        { QStringLiteral("at"), m_positionAt },
        { QStringLiteral("duration"), durationOf(track) },
        { QStringLiteral("title"), track.title() },
        { QStringLiteral("artist"), meta.artist() },
        { QStringLiteral("album"), meta.album() },
        { QStringLiteral("artwork"), track.icon() },
        { QStringLiteral("controls"),
            QVariantHash{ { QStringLiteral("pause"), controls.pause() },
                { QStringLiteral("next"), controls.next() },
                { QStringLiteral("previous"), controls.previous() },
                { QStringLiteral("seek"), controls.seekTime() },
                { QStringLiteral("like"), controls.like() },
                { QStringLiteral("dislike"), controls.dislike() } } },
        { QStringLiteral("playModes"),
            QVariantHash{ { QStringLiteral("shuffle"), modes.shuffle() },
                { QStringLiteral("repeatOne"), modes.repeatOne() },
                { QStringLiteral("repeatAll"), modes.repeatAll() },
                { QStringLiteral("shuffleRepeatOne"), modes.shuffleRepeatOne() },
                { QStringLiteral("shuffleRepeatAll"), modes.shuffleRepeatAll() } } },
        { QStringLiteral("mode"), static_cast<int>(m_mode) },
        { QStringLiteral("volume"), m_audio->volume() },
        { QStringLiteral("mute"), m_audio->muted() },
        { QStringLiteral("bufferLevel"), m_bufferLevel },
        { QStringLiteral("error"), error },
        { QStringLiteral("output"), m_audio->selectedOutput() },
        { QStringLiteral("audio"), m_audio->soundPath() },
        { QStringLiteral("sleep"), m_sleep.state() },
        { QStringLiteral("rating"), m_ratings.ratingOf(track) },
    };
}

namespace {

QString loginState(const TavuOAuth2DeviceCode& code, bool loggedIn)
{
    if (loggedIn)
        return QStringLiteral("loggedIn");
    QString state = code.state();
    if (state == QLatin1String("starting") || state == QLatin1String("waiting")
        || state == QLatin1String("failed"))
        return state;
    return QStringLiteral("loggedOut");
}

} // namespace

QVariantHash Player::login() const
{
    const QString state = loginState(m_deviceCode, m_loggedIn || !m_service.needsLogin());
    QVariantHash login{ { QStringLiteral("state"), state },
        { QStringLiteral("message"), m_deviceCode.message() } };
    if (state != QLatin1String("waiting"))
        return login;
    const QDateTime expiry = QDateTime::fromMSecsSinceEpoch(m_deviceCode.expiresAt(), Qt::UTC);
    login.insert(QStringLiteral("userCode"), m_deviceCode.userCode());
    login.insert(QStringLiteral("verificationUri"), m_deviceCode.verificationUri());
    login.insert(QStringLiteral("verificationUriComplete"), m_deviceCode.verificationUriComplete());
    login.insert(QStringLiteral("expiresAt"), expiry.toString(Qt::ISODateWithMs));
    login.insert(QStringLiteral("expiresIn"),
        qMax<qint64>(0, QDateTime::currentDateTimeUtc().secsTo(expiry)));
    return login;
}

} // namespace player
