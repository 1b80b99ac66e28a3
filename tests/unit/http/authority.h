#pragma once

#include <QByteArray>
#include <QSslConfiguration>

#include <memory>

/// A throw-away certificate authority for TLS on loopback.
class Authority
{
public:
    Authority();
    ~Authority();

    /// Its own certificate, PEM.
    QByteArray certificate() const;

    /// The server side for `name`, with a fresh certificate by this authority whose life ends the
    /// given number of days from now; a negative one has ended.
    QSslConfiguration server(const QByteArray& name, int daysLeft = 1) const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
