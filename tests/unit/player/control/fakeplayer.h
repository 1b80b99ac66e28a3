#pragma once

#include "playerfacade.h"

#include <QVector>

/// A player that does nothing but note what it is asked. Its replies are finished by the test, or
/// at once when it has set an answer.
class FakePlayer : public PlayerFacade
{
    Q_OBJECT

public:
    struct Call
    {
        QString name;
        QVariantList arguments;
        CMReply<QVariant> reply;
    };

    CMReply<QVariant> rows(const QString& path, int from, int to) override;
    CMReply<QVariant> activateRow(const QVariantHash& row, const QVariant& value) override;
    CMReply<QVariant> activatePath(
        const QString& path, const QString& role, const QVariant& value) override;
    CMReply<QVariant> search(const QString& text, const QString& path) override;
    CMReply<QVariant> play(const QVariantHash& row) override;
    CMReply<QVariant> command(Command command) override;
    CMReply<QVariant> seek(qint64 positionMs) override;
    void setPlayMode(int mode) override;
    void setVolume(int volume) override;
    void setMuted(bool muted) override;
    void setSleep(int ms, bool finishTrack) override;
    QVariantHash player() const override { return m_player; }
    QVariantHash queue() const override { return m_queue; }
    QVariantList outputs() const override { return m_outputs; }
    bool selectOutput(const QString& id) override;
    QVariantHash login() const override { return m_login; }
    void startLogin() override;
    void logout() override;
    QVariantList messages() const override { return m_messages; }
    QVariantHash service() const override;

    /// Finishes the next and all later replies at once with the value.
    void answerWith(const QVariant& value);
    void failWith(const CMError& error);
    /// Replies wait for the test again.
    void hold();

    /// "name(argument, …)" of each call, in order.
    QStringList told() const;

    QVector<Call> calls;
    QVariantHash m_player;
    QVariantHash m_queue;
    QVariantHash m_login;
    QVariantList m_outputs;
    QVariantList m_messages;

private:
    CMReply<QVariant> note(const QString& name, const QVariantList& arguments);

    enum class Mode { Hold, Answer, Fail };
    Mode m_mode = Mode::Hold;
    QVariant m_value;
    CMError m_error;
};
