#pragma once

#include "application.h"
#include "emulator/main/emulatorthread.h"
#include "playerfacade.h"

#include <QTemporaryDir>
#include <QVariant>

#include <memory>

/// A whole house: an emulator of the service with the sample albums, on a thread of its own, and a
/// player that is set up for it. What both keep is gone with it.
class House
{
public:
    using Tune = std::function<void(emulator::Settings&)>;

    /// `tune` changes what the emulator starts with; the player starts with start().
    explicit House(const Tune& tune = {});
    ~House();
    Q_DISABLE_COPY_MOVE(House)

    /// Where the sound goes; set before start(). At first it goes nowhere, as fast as it can.
    void setOutput(const QString& description) { m_output = description; }
    /// Further settings, "section.name=value"; before start().
    void set(const QString& assignment) { m_assignments.append(assignment); }
    /// Starts the player and waits until it is ready.
    void start();
    /// Ends the player; what it keeps stays for the next start().
    void stopPlayer();
    /// As start(), and signs in with a code that the emulator approves.
    void startSignedIn();
    /// Signs in: asks for a code and has the emulator approve it.
    void signIn();

    PlayerFacade& player() { return m_application->player(); }
    emulator::Emulator& service() { return m_emulator.emulator(); }
    QString file(const char* name) const;
    QString samplesFolder() const;

    /// Makes the service fail, as the emulator's --fault takes it.
    void fault(const QByteArray& rule);
    void liftFaults();

    // What a person does; each waits for the answer and fails the test on an error.
    QVariantHash screen(const QString& path = QString(), int from = 0, int to = 49);
    QVariantList rows(const QString& path = QString());
    /// The row at the end of "Albums/Small Rooms", by titles; a title may be cut short.
    QVariantHash row(const QString& steps);
    void play(const QString& steps);
    void command(PlayerFacade::Command command);

    // What is to come; each waits for it.
    bool waitForState(int state);
    bool waitForTitle(const QString& title);
    int state() { return player().player().value(QStringLiteral("state")).toInt(); }
    QString title() { return player().player().value(QStringLiteral("title")).toString(); }

    /// The reports that the service received, oldest first, as "START NEXT 0"; without those of
    /// gaps, which are the machine's, or of streams opened anew.
    QStringList reports();
    QStringList reportsWithoutPositions();
    int requests(const char* kind);
    /// What the requests for sound were refused with, oldest first.
    QList<int> audioRefusals();
    QStringList messageTexts();

private:
    emulator::EmulatorThread m_emulator;
    QTemporaryDir m_folder;
    QString m_output;
    QStringList m_assignments;
    std::unique_ptr<player::Application> m_application;
};

/// The value of a reply, once it is there; an invalid one, and a failed test, after an error.
QVariant valueOf(const CMReply<QVariant>& reply);
/// The error's message; empty, and a failed test, after a success.
QString errorOf(const CMReply<QVariant>& reply);
