#include "player.h"

#include "cmchain.h"
#include "cmglobal.h"
#include "cmroot.h"
#include "cmvalueitem.h"
#include "deadline.h"
#include "playlogicinterface.h"
#include "rowanswer.h"
#include "servicereports.h"
#include "tavuactionreply.h"
#include "tavupaths.h"
#include "words.h"

namespace player {

namespace {

// Paths whose rows are watched for changes on behalf of the faces.
constexpr int watchedPathsAtMost = 256;

CMError noService()
{
    return CMError(TrString(TrCharData(trExtractContext("player"),
        "The service is not loaded yet. Please wait, or see the log.")));
}

CMError noLogin()
{
    return CMError(TrString(
        TrCharData(trExtractContext("player"), "Nobody is signed in. Please sign in first.")));
}

CMError nothingPlays()
{
    return CMError(TrString(TrCharData(trExtractContext("player"), "Nothing is playing.")));
}

// More are not asked for, and not shown.
constexpr int reportRowsAtMost = 99999;

/// The answer with all rows becomes the one with a window of the latest report.
void showLatestReport(QVariantHash& answer, int from, int to)
{
    const QString key = QStringLiteral("rows");
    const QVariantList latest = latestReport(answer.value(key).toList());
    const auto [begin, end] = CMGlobal::rowsRange(from, to, latest.size());
    answer.insert(key, latest.mid(begin, end - begin));
    answer.insert(QStringLiteral("count"), latest.size());
}

template <class T>
CMReply<T> failedReply(const CMError& error)
{
    auto reply = CMReply<T>::create();
    reply.setError(error);
    return reply;
}

/// The screen that an answer leads to; empty when there is none.
CMPath screenOf(const CMReply<QVariant>& reply)
{
    if (reply.error().isSet())
        return CMPath();
    return TavuActionReply(tavuvariant::toHash(reply.value())).result().path();
}

} // namespace

Player::Player(AudioControl* audio, QObject* parent)
    : PlayerFacade(parent)
    , m_audio(audio)
    , m_search([this](const QString& page, int from, int to) { return rows(page, from, to); })
    , m_sleep(sleepHands())
{
    connect(audio, &AudioControl::volumeChanged, this, &PlayerFacade::playerChanged);
    connect(audio, &AudioControl::outputsChanged, this, &PlayerFacade::outputsChanged);
    connect(audio, &AudioControl::soundPathChanged, this, &PlayerFacade::playerChanged);
    connect(&m_sleep, &SleepTimer::changed, this, &PlayerFacade::playerChanged);
    connect(&m_history, &PlayHistory::changed, this, &PlayerFacade::queueChanged);
    connect(
        &m_skipped, &SkippedTracks::told, this, [this](const QString& title, const QString& text) {
            addMessage(QStringLiteral("skipped"), title, text, QStringLiteral("player"));
        });
    new CMValueItem(this, TavuPlayerPlayModePath(), this, SLOT(on_playMode_changed(TavuValue)),
        Qt::AutoConnection);
}

Player::~Player() = default;

CMReply<QVariant> Player::rows(const QString& path, int from, int to)
{
    if (!m_service.isReady())
        return failedReply<QVariant>(noService());
    const CMPath asked = path.isEmpty() ? m_service.root() : CMPath::fromEncoded(path);
    watchRows(asked);
    const bool reports = showsReports(asked);
    const CMGetRowsRequest request(
        asked, reports ? 0 : from, reports ? reportRowsAtMost : to, rowRoles());
    auto result = CMReply<QVariant>::create();
    cmchain::whenSucceeded(withDeadline(request.reply()), result, m_context,
        [this, result, asked, from, to, reports](const TavuRowsRoles& roles) {
            QVariantHash answer = rowAnswer(roles, qMax(from, 0));
            if (reports)
                showLatestReport(answer, from, to);
            answer.insert(QStringLiteral("path"), asked.toEncoded());
            m_listed.mark(answer);
            result.setValue(answer);
        });
    CMRoot()->getRowsRequest(request);
    return result;
}

/// Signed out, every screen is the one to sign in with.
bool Player::showsReports(const CMPath& screen) const
{
    return isSignedIn() && screen.withoutParams() == m_service.reports();
}

void Player::watchRows(const CMPath& path)
{
    if (m_watchedRows.contains(path.text()) || m_watchedRows.size() >= watchedPathsAtMost)
        return;
    m_watchedRows.insert(path.text());
    CMRoot()->connectRowsChange(path, this, SLOT(on_rows_changed(CMPath)), Qt::AutoConnection);
}

void Player::on_rows_changed(const CMPath& path)
{
    Q_EMIT rowsChanged(path.toEncoded());
}

CMReply<QVariant> Player::done()
{
    auto reply = CMReply<QVariant>::create();
    reply.setValue(QVariant());
    return reply;
}

CMReply<QVariant> Player::setData(const CMPath& path, const QVariant& value)
{
    const CMSetDataRequest request(path, value);
    withDeadline(request.reply());
    CMRoot()->setDataRequest(request);
    return request.reply();
}

CMReply<QVariant> Player::activateRow(const QVariantHash& row, const QVariant& value)
{
    m_recentErrors.clear();
    const TavuRoles roles(row);
    if (roles.path().isEmpty())
        return refused(CMError(TrString(TrCharData(trExtractContext("player"),
                                            "\"%1\" is nothing that can be pressed."),
                           { roles.title() })),
            QStringLiteral("activate"));
    const QVariant given = value.isValid() ? value : ListedRows::withoutMark(row).__variant();
    return observed(setData(roles.path(), given), QStringLiteral("activate"));
}

CMReply<QVariant> Player::activatePath(
    const QString& path, const QString& role, const QVariant& value)
{
    m_recentErrors.clear();
    const QVariant given = role.isEmpty() ? value : QVariant(QVariantHash{ { role, value } });
    return observed(setData(CMPath::fromEncoded(path), given), QStringLiteral("activate"));
}

CMReply<QVariant> Player::search(const QString& text, const QString& path)
{
    const CMPath container = path.isEmpty() ? m_service.searchScreen() : CMPath::fromEncoded(path);
    auto result = withDeadline(CMReply<QVariant>::create());
    const CMReply<QVariant> found = rows(container.toEncoded(), 0, 0);
    cmchain::whenSucceeded(found, result, m_context, [this, result, text](const QVariant& screen) {
        const QVariantList list = screen.toHash().value(QStringLiteral("rows")).toList();
        const CMPath query = TavuRoles(list.value(0).toHash()).path();
        if (query.isEmpty())
            return result.setError(isSignedIn() ? noService() : noLogin());
        cmchain::forward(setData(query, TavuValue::fromString(text).__variant()), result);
    });
    return result;
}

CMReply<QVariant> Player::play(const QVariantHash& row)
{
    m_recentErrors.clear();
    giveUpResume();
    pauseGoingOn();
    if (m_startAt)
        m_startAt(TavuRoles(), 0);
    m_history.choose(row);
    return playRow(ListedRows::withoutMark(row), sourceOf(row));
}

CMReply<QVariant> Player::playRow(const TavuRoles& row, const RowSource& source, bool alone)
{
    PlayLogicInterface* logic =
        PlayLogicInterface::instance(row.mediaData().metaData().playLogicPath());
    if (!logic)
        return refused(CMError(TrString(TrCharData(trExtractContext("player"),
                                            "\"%1\" is nothing that can be played."),
                           { row.title() })),
            QStringLiteral("play"));
    m_error.clear();
    m_step.reset();
    TavuPlayLogicPlayArgs args;
    args.setMediaRoles(mediaRolesFor(row));
    args.setTrackRoles(row);
    const CMReply<QVariant> reply = withDeadline(logic->play(args));
    cmchain::onSuccess(reply, m_context, [this, source, alone](const QVariant&) {
        m_source = source;
        m_alone = alone;
        m_aged.begin();
    });
    return observed(reply, QStringLiteral("play"));
}

CMReply<QVariant> Player::command(Command command)
{
    m_recentErrors.clear();
    if (!playLogic())
        return refused(noService(), QStringLiteral("player"));
    if (const CMError problem = hasNothingFor(command); problem.isSet())
        return refused(problem, QStringLiteral("player"));
    const bool goesOn = shown().state() != TavuPlayLogicState::Paused;
    if (command == Command::Resume && goesOn)
        return done();
    return observed(withDeadline(transport(command)), QStringLiteral("player"));
}

/// A play logic answers a step before it knows whether there is a track to step from. Nothing to
/// stop is nothing wrong.
CMError Player::hasNothingFor(Command command) const
{
    if (command == Command::Stop)
        return CMError();
    if (shown().state() == TavuPlayLogicState::Idle)
        return nothingPlays();
    const bool steps = command == Command::Next || command == Command::Previous;
    if (steps && waitsRestored())
        return CMError(TrString(TrCharData(trExtractContext("player"),
                                    "“%1” has to go on before another track can follow."),
            { shown().trackRoles().title() }));
    return CMError();
}

PlayLogicInterface* Player::playLogic() const
{
    return PlayLogicInterface::instance(m_service.playLogic());
}

CMReply<QVariant> Player::transport(Command command)
{
    PlayLogicInterface* logic = playLogic();
    switch (command) {
    case Command::TogglePause:
    case Command::Resume:
        return pauseOrResume();
    case Command::Next:
    case Command::Previous:
        return step(command);
    case Command::Stop:
        giveUpResume();
        stopGoingOn();
        forgetRestored();
        m_source.clear();
        return logic->stop(TavuPlayLogicStopReason::User);
    case Command::Like:
    case Command::Dislike:
        return rateShown(command);
    }
    return failedReply<QVariant>(noService());
}

CMReply<QVariant> Player::pauseOrResume()
{
    // Who is impatient and asks twice asks for the same.
    if (isResuming())
        return m_resume;
    if (isGoingOn() && isRestored()) {
        pauseGoingOn();
        return done();
    }
    if (waitsRestored())
        return playRestored();
    return m_data.state() == TavuPlayLogicState::Paused ? resume() : playLogic()->pause();
}

bool Player::isResuming() const
{
    return !!m_resume.data() && !m_resume.isFinished();
}

/// A play logic need not answer a resume that it gives up; what it tells of playback ends it then.
CMReply<QVariant> Player::resume()
{
    auto reply = CMReply<QVariant>::create();
    m_resume = reply;
    // When the renewal fails the play logic is asked all the same: it judges the track by itself.
    const auto goOn = [this, reply](const CMError&) {
        if (reply.isFinished())
            return; // By now a pause would be of something else.
        if (PlayLogicInterface* logic = playLogic())
            cmchain::forward(logic->pause(), reply);
        else
            reply.setError(noService());
    };
    if (m_beforeResume)
        m_beforeResume(goOn);
    else
        goOn(CMError());
    return reply;
}

void Player::giveUpResume()
{
    if (m_resume.data())
        m_resume.cancel();
}

CMReply<QVariant> Player::seek(qint64 positionMs)
{
    m_recentErrors.clear();
    if (!playLogic())
        return refused(noService(), QStringLiteral("player"));
    const qint64 duration = shown().trackRoles().mediaData().firstResource().duration();
    if (positionMs < 0 || (duration > 0 && positionMs > duration))
        return failedReply<QVariant>(CMError(TrString(
            TrCharData(trExtractContext("player"), "The position must lie within the track."))));
    if (waitsRestored()) {
        m_restoredPosition = positionMs;
        setPosition(positionMs);
        return done();
    }
    return observed(withDeadline(playLogic()->seekTime(positionMs)), QStringLiteral("player"));
}

CMReply<QVariant> Player::refused(const CMError& error, const QString& source)
{
    return observed(failedReply<QVariant>(error), source);
}

CMReply<QVariant> Player::observed(const CMReply<QVariant>& reply, const QString& source)
{
    cmchain::whenFinished(reply, m_context,
        [this, source](const CMReply<QVariant>& finished) { showAnswer(finished, source); });
    return reply;
}

/// A play logic can only rate what it plays.
CMReply<QVariant> Player::rateShown(Command command)
{
    if (isRestored() && m_data.state() == TavuPlayLogicState::Idle)
        return failedReply<QVariant>(CMError(TrString(
            TrCharData(trExtractContext("player"), "“%1” can be rated once it plays again."),
            { shown().trackRoles().title() })));
    if (command == Command::Like)
        return rate(playLogic()->like(), Rating::Up);
    return rate(playLogic()->dislike(), Rating::Down);
}

/// The service's word on a rating is a screen of one row, whether it took the rating or not.
CMReply<QVariant> Player::rate(const CMReply<QVariant>& reply, Rating rating)
{
    const TavuRoles track = shown().trackRoles();
    cmchain::whenFinished(
        reply, m_context, [this, track, rating](const CMReply<QVariant>& finished) {
            const CMPath screen = screenOf(finished);
            if (screen.isEmpty())
                return;
            fetchScreen(screen, [this, track, rating](const QVariantList& rows) {
                if (rows.isEmpty() || tellsOfFailure(TavuRoles(rows.first().toHash()).title()))
                    return;
                m_ratings.rate(track, rating);
                Q_EMIT playerChanged();
            });
        });
    return reply;
}

void Player::showAnswer(const CMVoidReply& reply, const QString& source)
{
    const CMError error = reply.error();
    if (error.name() == CMVoidReply::ErrorCancel().name())
        return;
    if (error.isSet())
        return showError(error, source);
    const CMPath screen = screenOf(CMReply<QVariant>(reply));
    if (screen.isEmpty())
        return;
    fetchScreen(screen, [this, source](const QVariantList& rows) {
        const TavuRoles head(rows.value(0).toHash());
        const QString kind =
            tellsOfFailure(head.title()) ? QStringLiteral("error") : QStringLiteral("info");
        const bool saysSomething = !head.title().isEmpty() || !head.longDescription().isEmpty();
        if (saysSomething)
            addMessage(kind, head.title(), head.longDescription(), source, rows);
    });
}

void Player::showError(const CMError& error, const QString& source)
{
    if (!m_recentErrors.isNews(error))
        return;
    const auto tell = [this, error, source](const QVariantList& rows) {
        const Words words = wordsOf(error, rows);
        addMessage(QStringLiteral("error"), words.title, words.text, source, rows);
    };
    const CMPath screen = TavuActionReply(error.actionReply()).result().path();
    if (screen.isEmpty())
        tell({});
    else
        fetchScreen(screen, tell);
}

void Player::fetchScreen(const CMPath& screen, const std::function<void(const QVariantList&)>& use)
{
    constexpr int lastRow = 49;
    cmchain::whenFinished(
        rows(screen.toEncoded(), 0, lastRow), m_context, [use](const CMReply<QVariant>& reply) {
            use(reply.value().toHash().value(QStringLiteral("rows")).toList());
        });
}

void Player::addMessage(const QString& kind, const QString& title, const QString& text,
    const QString& source, const QVariantList& rows)
{
    m_skipped.flush();
    Q_EMIT messageAdded(m_messages.add(kind, title, text, source, rows));
}

void Player::setPlayMode(int mode)
{
    CMRoot()->setValue(TavuPlayerPlayModePath(),
        TavuValue::fromPlayerPlayMode(static_cast<TavuPlayerPlayMode::Enum>(mode)));
}

void Player::setVolume(int volume)
{
    m_audio->setVolume(volume);
}

void Player::setMuted(bool muted)
{
    m_audio->setMuted(muted);
}

QVariantList Player::outputs() const
{
    return m_audio->outputs();
}

bool Player::selectOutput(const QString& id)
{
    return m_audio->selectOutput(id);
}

void Player::startLogin()
{
    invokeOAuth(TavuOAuth2StartLoginSubPath());
}

void Player::logout()
{
    invokeOAuth(TavuOAuth2LogoutSubPath());
}

void Player::invokeOAuth(const QString& subpath)
{
    const auto reply = CMReply<QVariant>::create();
    observed(reply, QStringLiteral("login"));
    if (!m_service.isReady())
        return reply.setError(noService());
    if (!m_service.needsLogin())
        return reply.setError(
            CMError(TrString(TrCharData(trExtractContext("player"), "\"%1\" needs no sign-in."),
                { m_service.name })));
    CMRoot()->invoke(loginPath(subpath), QVariant(), reply);
}

QVariantHash Player::service() const
{
    return { { QStringLiteral("name"), m_service.name },
        { QStringLiteral("version"), QStringLiteral(TAVU_VERSION) } };
}

void Player::on_loggedIn_changed(const TavuValue& value)
{
    m_loggedIn = value.bool_();
    Q_EMIT loginChanged();
    if (!isSignedIn())
        giveUpGoingOn();
    fetchRestoredArtwork();
}

void Player::on_deviceCode_changed(const TavuValue& value)
{
    const TavuOAuth2DeviceCode before = std::exchange(m_deviceCode, TavuOAuth2DeviceCode(value));
    Q_EMIT loginChanged();
    if (m_deviceCode.message() != before.message())
        tellLoginTrouble();
}

/// A sign-in that fails tells so where it was asked for; what happens to a login later is told
/// here.
void Player::tellLoginTrouble()
{
    const QString state = m_deviceCode.state();
    if (m_deviceCode.message().isEmpty() || state == QLatin1String("failed"))
        return;
    const bool loggedIn = state == QLatin1String("loggedIn");
    addMessage(QStringLiteral("error"),
        TrString(TrCharData(trExtractContext("player"),
                     loggedIn ? "Trouble with the login" : "Please sign in again"))
            .toString(),
        m_deviceCode.message(), QStringLiteral("login"));
}

void Player::on_playMode_changed(const TavuValue& value)
{
    m_mode = value.playerPlayMode();
    Q_EMIT playerChanged();
}

} // namespace player
