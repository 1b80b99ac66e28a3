#pragma once

#include "../catalogue/library.h"
#include "../faults/dial.h"
#include "../http/ledger.h"
#include "../oauth2/authority.h"
#include "settings.h"

#include <QObject>
#include <QVariantHash>

#include <map>
#include <memory>
#include <optional>

namespace http {
class Server;
}

namespace emulator {

class HostilePorts;

/// A whole emulator of the service, on the event loop of the thread that makes it. Its ledger and
/// its dial may be used from every thread, everything else from its own.
class Emulator : public QObject
{
    Q_OBJECT

public:
    explicit Emulator(const Settings& settings, QObject* parent = nullptr);
    /// Cuts every connection and stops a scan under way.
    ~Emulator() override;

    /// What keeps an emulator from starting, for people, and the exit code for it.
    struct Failure
    {
        QString text;
        int exitCode = 1;
    };
    /// Makes samples and certificates where they are missing, listens and starts the scan. Call it
    /// once. Blocks for some seconds when the sample albums have to be made.
    std::optional<Failure> start();

    quint16 httpPort() const { return m_httpPort; }
    quint16 tlsPort() const { return m_tlsPort; }
    /// Host name to port; empty unless the settings ask for them.
    std::map<QString, quint16> hostilePorts() const;
    /// The certificate authority's PEM file, to be trusted by clients.
    QString caFile() const;
    /// Addresses, ports and names, as the ready line tells them.
    QVariantHash description() const;

    Ledger& ledger() { return m_ledger; }
    faults::Dial& dial() { return m_dial; }
    oauth2::Authority& authority() { return *m_authority; }
    catalogue::Library& library() { return *m_library; }
    documents::Rules& documentRules();

Q_SIGNALS:
    /// Something can be browsed, or a big folder takes its time; once.
    void ready();
    /// For people; says what goes on.
    void notice(const QString& text);

private:
    struct Services;

    std::optional<Failure> makeFolders();
    std::optional<Failure> makeSamples();
    Failure portRefused(quint16 port) const;
    std::optional<Failure> listen();
    std::optional<Failure> listenTls();
    QByteArray secret(QString* error) const;
    Failure stateRefused(const QString& error) const;
    std::optional<Failure> makeServices();
    void becomeReady();
    void tellProgress();
    void tellScanned();
    QString statePath(const char* name) const;
    QString musicFolder() const;

    Settings m_settings;
    Ledger m_ledger;
    faults::Dial m_dial;
    std::unique_ptr<oauth2::Authority> m_authority;
    std::unique_ptr<catalogue::Library> m_library;
    std::unique_ptr<Services> m_services;
    std::unique_ptr<http::Server> m_server;
    std::unique_ptr<HostilePorts> m_hostilePorts; ///< empty unless asked for
    quint16 m_httpPort = 0;
    quint16 m_tlsPort = 0;
    bool m_ready = false;
    qint64 m_toldMs = 0;
};

} // namespace emulator
