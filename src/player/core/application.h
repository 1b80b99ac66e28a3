#pragma once

#include "settings.h"

#include <QLockFile>
#include <QObject>

#include <memory>

class PlayerFacade;

namespace player {

/// Exit codes of the program.
enum ExitCode : int {
    Quit = 0,
    Failed = 1,
    BadArguments = 2, ///< Or an address that cannot be listened on.
    NoPermission = 4,
    NotConfigured = 6,
};

/// The whole player but main(): settings, sign-in, streamer, plug-in, and its faces. One in the
/// process, in the main thread.
class Application : public QObject
{
    Q_OBJECT

public:
    /// `stateFolder` exists and can be written.
    Application(const Settings& settings, const QString& stateFolder, const QString& pluginFile,
        QObject* parent = nullptr);
    ~Application() override;

    /// Starts everything; ready() or failed() follows, also from within this call. Once.
    void start();
    /// The address of the page, once ready.
    QString address() const;
    /// The token that clients elsewhere present; empty when the player listens to this machine
    /// alone.
    QString token() const;
    PlayerFacade& player();

Q_SIGNALS:
    void ready();
    /// `message` says what failed and what to do.
    void failed(int exitCode, const QString& message);

private:
    struct Parts;

    bool lockState();
    bool publish();
    void makeParts();
    bool listen();
    void loadPlugin();
    void on_plugin_ready();
    QString makeToken();
    void giveUp(ExitCode code, const QString& message);

    Settings m_settings;
    QString m_stateFolder;
    QString m_pluginFile;
    QLockFile m_lock;
    bool m_endedUnexpectedly = false;
    QString m_token;
    quint16 m_port = 0;
    std::unique_ptr<Parts> m_parts;
};

} // namespace player
