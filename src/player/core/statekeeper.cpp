#include "statekeeper.h"

#include <chrono>

namespace player {

namespace {

using namespace std::chrono_literals;

// A volume that is being dragged is not written at each step.
constexpr auto gathering = 200ms;
constexpr auto positionEvery = 10s;

QString textOf(const QVariantHash& hash, const char* key)
{
    return hash.value(QString::fromLatin1(key)).toString();
}

int numberOf(const QVariantHash& hash, const char* key)
{
    return hash.value(QString::fromLatin1(key)).toInt();
}

} // namespace

StateKeeper::StateKeeper(Player* player, const QString& fileName, const QString& origin)
    : m_player(player)
    , m_file(fileName)
    , m_origin(origin)
    , m_configuredOutput(textOf(player->player(), "output"))
{
    m_soon.setSingleShot(true);
    m_soon.setInterval(gathering);
    m_positionDue.setInterval(positionEvery);
    m_disk.setMaxThreadCount(1);
}

StateKeeper::~StateKeeper()
{
    m_disk.waitForDone();
    if (m_begun && present() != m_saved)
        m_file.save(present(), nullptr);
}

void StateKeeper::restore()
{
    QString complaint;
    const std::optional<KeptState> state = m_file.load(&complaint);
    if (!complaint.isEmpty())
        m_player->addMessage(QStringLiteral("error"), QStringLiteral("The player starts afresh"),
            complaint, QStringLiteral("player"));
    if (state)
        apply(*state);
    m_saved = state.value_or(present());
    m_saved.setVersion(1);
}

void StateKeeper::apply(const KeptState& state)
{
    m_player->setPlayMode(state.playMode());
    m_player->setVolume(state.volume());
    m_player->setMuted(state.muted());
    chooseOutput(state.output());
    const TavuRoles row = playableRow(state.track(), m_origin);
    if (row.isEmpty())
        return;
    m_player->restore(row, state.position(), sourceAt(state.source(), m_origin));
    m_wasPlaying = state.playing();
}

void StateKeeper::chooseOutput(const QString& id)
{
    if (id.isEmpty() || m_player->selectOutput(id))
        return;
    m_player->addMessage(QStringLiteral("error"), QStringLiteral("The output is not there"),
        QStringLiteral("\"%1\" was chosen last and is gone; the sound goes to \"%2\". Connect it "
                       "and choose it again, or choose another.")
            .arg(id, textOf(m_player->player(), "output")),
        QStringLiteral("output"));
}

void StateKeeper::begin()
{
    m_begun = true;
    connect(&m_soon, &QTimer::timeout, this, &StateKeeper::saveIfChanged);
    connect(&m_positionDue, &QTimer::timeout, this, &StateKeeper::saveIfChanged);
    const auto soon = [this] {
        if (!m_soon.isActive())
            m_soon.start();
    };
    connect(m_player, &PlayerFacade::playerChanged, this, soon);
    connect(m_player, &PlayerFacade::outputsChanged, this, soon);
    connect(m_player, &PlayerFacade::positionChanged, this, [this, soon] {
        // While it plays the timer is enough; a jump during a pause is a change.
        if (!m_positionDue.isActive())
            soon();
    });
}

KeptState StateKeeper::present() const
{
    const QVariantHash player = m_player->player();
    const int state = numberOf(player, "state");
    const QString output = textOf(player, "output");
    KeptState kept;
    kept.setPlayMode(numberOf(player, "mode"));
    kept.setVolume(numberOf(player, "volume"));
    kept.setMuted(player.value(QStringLiteral("mute")).toBool());
    kept.setOutput(output == m_configuredOutput ? QString() : output);
    kept.setTrack(keptTrack(m_player->track()));
    const RowSource source = keptSource(m_player->source());
    if (!kept.track().isEmpty() && !source.isEmpty())
        kept.setSource(source);
    kept.setPosition(kept.track().isEmpty() ? 0 : m_player->position());
    kept.setPlaying(state == TavuPlayLogicState::Playing || state == TavuPlayLogicState::Buffering);
    kept.setVersion(m_saved.version());
    return kept;
}

void StateKeeper::followPosition()
{
    const bool plays =
        numberOf(m_player->player(), "state") == static_cast<int>(TavuPlayLogicState::Playing);
    if (plays != m_positionDue.isActive()) {
        if (plays)
            m_positionDue.start();
        else
            m_positionDue.stop();
    }
}

void StateKeeper::saveIfChanged()
{
    followPosition();
    if (m_saving)
        m_changed = true;
    else if (present() != m_saved)
        save();
}

/// A slow disk holds up neither requests nor sound; what changes meanwhile is written in one go.
void StateKeeper::save()
{
    m_saving = true;
    m_disk.start([this, state = present()] {
        QString error;
        m_file.save(state, &error);
        QMetaObject::invokeMethod(
            this, [this, state, error] { on_saved(state, error); }, Qt::QueuedConnection);
    });
}

void StateKeeper::on_saved(const KeptState& state, const QString& error)
{
    m_saving = false;
    if (error.isEmpty()) {
        m_saved = state;
        m_told = false;
    } else {
        tellFailure(error);
    }
    if (std::exchange(m_changed, false))
        saveIfChanged();
}

void StateKeeper::tellFailure(const QString& error)
{
    if (std::exchange(m_told, true))
        return;
    m_player->addMessage(QStringLiteral("error"), QStringLiteral("The state cannot be saved"),
        QStringLiteral("What plays and how cannot be kept over a restart (%1). Free some space in "
                       "the state folder, or make it writable; playing goes on.")
            .arg(error),
        QStringLiteral("player"));
}

} // namespace player
