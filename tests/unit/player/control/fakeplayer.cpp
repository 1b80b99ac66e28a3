#include "fakeplayer.h"

#include "tavujson.h"

CMReply<QVariant> FakePlayer::note(const QString& name, const QVariantList& arguments)
{
    const auto reply = CMReply<QVariant>::create();
    calls += Call{ name, arguments, reply };
    if (m_mode == Mode::Answer)
        reply.setValue(m_value);
    else if (m_mode == Mode::Fail)
        reply.setError(m_error);
    return reply;
}

void FakePlayer::answerWith(const QVariant& value)
{
    m_mode = Mode::Answer;
    m_value = value;
}

void FakePlayer::failWith(const CMError& error)
{
    m_mode = Mode::Fail;
    m_error = error;
}

void FakePlayer::hold()
{
    m_mode = Mode::Hold;
}

QStringList FakePlayer::told() const
{
    QStringList told;
    for (const Call& call : calls)
        told += call.name + QString::fromUtf8(TavuJson::toJson(call.arguments));
    return told;
}

CMReply<QVariant> FakePlayer::rows(const QString& path, int from, int to)
{
    return note(QStringLiteral("rows"), { path, from, to });
}

CMReply<QVariant> FakePlayer::activateRow(const QVariantHash& row, const QVariant& value)
{
    return note(QStringLiteral("activateRow"), { row, value });
}

CMReply<QVariant> FakePlayer::activatePath(
    const QString& path, const QString& role, const QVariant& value)
{
    return note(QStringLiteral("activatePath"), { path, role, value });
}

CMReply<QVariant> FakePlayer::search(const QString& text, const QString& path)
{
    return note(QStringLiteral("search"), { text, path });
}

CMReply<QVariant> FakePlayer::play(const QVariantHash& row)
{
    return note(QStringLiteral("play"), { row });
}

CMReply<QVariant> FakePlayer::command(Command command)
{
    return note(QStringLiteral("command"), { QVariant::fromValue(command).toString() });
}

CMReply<QVariant> FakePlayer::seek(qint64 positionMs)
{
    return note(QStringLiteral("seek"), { positionMs });
}

void FakePlayer::setPlayMode(int mode)
{
    note(QStringLiteral("setPlayMode"), { mode });
}

void FakePlayer::setVolume(int volume)
{
    note(QStringLiteral("setVolume"), { volume });
}

void FakePlayer::setMuted(bool muted)
{
    note(QStringLiteral("setMuted"), { muted });
}

void FakePlayer::setSleep(int ms, bool finishTrack)
{
    note(QStringLiteral("setSleep"), { ms, finishTrack });
}

bool FakePlayer::selectOutput(const QString& id)
{
    note(QStringLiteral("selectOutput"), { id });
    return id == QLatin1String("good");
}

void FakePlayer::startLogin()
{
    note(QStringLiteral("startLogin"), {});
}

void FakePlayer::logout()
{
    note(QStringLiteral("logout"), {});
}

QVariantHash FakePlayer::service() const
{
    return { { QStringLiteral("name"), QStringLiteral("Test Music") },
        { QStringLiteral("version"), QStringLiteral("1.2.3") } };
}
