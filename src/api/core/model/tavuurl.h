#pragma once

#include "tavuexport.h"

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QPair>
#include <QString>
#include <QUrl>

#include <iosfwd>

/// A URL or a relative reference (RFC 3986). Works on the encoded parts: what is read and written
/// back is the same URL, with every encoded reserved character ("%2F", "%2B", "%25") still encoded
/// and every bare one bare. Only what means the same (RFC 3986, section 6.2.2) may change its
/// spelling: the case of scheme, host and hex digits, and encoded unreserved characters, which are
/// written bare. Only the fragment is read decoded, since it names things. A value.
class TAVU_EXPORT TavuUrl
{
public:
    /// Name and value, both encoded; the value is null when the item has no "=".
    using QueryItems = QList<QPair<QString, QString>>;

    TavuUrl() = default;
    /// Reads an encoded URL or relative reference; what it cannot mend gives an invalid URL.
    explicit TavuUrl(const QString& encoded);

    static TavuUrl fromEncoded(const QByteArray& encoded);
    QByteArray toEncoded() const;
    /// As toEncoded(), for people and log lines.
    QString toString() const;

    bool isEmpty() const { return m_url.isEmpty(); }
    /// Not empty and well-formed; a relative reference is valid.
    bool isValid() const { return m_url.isValid() && !m_url.isEmpty(); }

    QString scheme() const { return m_url.scheme(); }
    void setScheme(const QString& scheme) { m_url.setScheme(scheme); }
    /// In the form that is sent (lower case, punycode), without port.
    QString host() const { return m_url.host(QUrl::FullyEncoded); }
    void setHost(const QString& host) { m_url.setHost(host); }
    /// -1 when the URL names none.
    int port() const { return m_url.port(); }
    void setPort(int port) { m_url.setPort(port); }
    bool hasUserInfo() const { return !m_url.userInfo().isEmpty(); }
    /// Encoded.
    QString path() const { return m_url.path(QUrl::FullyEncoded); }
    void setPath(const QString& encoded);
    /// Fully decoded.
    QString fragment() const;
    void setFragment(const QString& decoded);
    QueryItems queryItems() const;
    void setQueryItems(const QueryItems& items);
    /// Appends an item. Name and value are plain text; both are encoded strictly, so that any text
    /// comes back.
    void addQueryItem(const QString& name, const QString& value);

    /// `relative` seen from this URL (RFC 3986, section 5).
    TavuUrl resolved(const TavuUrl& relative) const;

    friend bool operator==(const TavuUrl& a, const TavuUrl& b)
    {
        return a.toEncoded() == b.toEncoded();
    }
    friend bool operator!=(const TavuUrl& a, const TavuUrl& b) { return !(a == b); }

private:
    QUrl m_url;
};

/// The encoded URL.
TAVU_EXPORT std::ostream& operator<<(std::ostream& out, const TavuUrl& url);

Q_DECLARE_METATYPE(TavuUrl)
