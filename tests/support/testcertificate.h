#pragma once

#include <QByteArray>

/// A certificate that signs itself, with its key, as PEM texts. Made anew each time.
struct TestCertificate
{
    QByteArray certificate;
    QByteArray key;

    /// For the given DNS name and 127.0.0.1, valid from yesterday until tomorrow.
    static TestCertificate make(const QByteArray& name);
};
