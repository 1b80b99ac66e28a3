#pragma once

#include "tavuexport.h"
#include "urltext.h"

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QPair>
#include <QString>

#include <iosfwd>

class QUrl;

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
    /// Empty when the URL is invalid.
    QByteArray toEncoded() const { return m_encoded.toLatin1(); }
    /// As toEncoded(), as a text.
    const QString& toString() const { return m_encoded; }

    bool isEmpty() const { return m_encoded.isEmpty() && !m_broken; }
    /// Not empty and well-formed; a relative reference is valid.
    bool isValid() const { return !m_encoded.isEmpty(); }

    // Parts. Setting one to what cannot be a part makes the URL invalid, and so it stays.
    QString scheme() const;
    void setScheme(const QString& scheme);
    /// In the form that is sent (lower case, punycode), without port.
    QString host() const;
    void setHost(const QString& host);
    /// -1 when the URL names none.
    int port() const;
    void setPort(int port);
    bool hasUserInfo() const;
    /// Encoded.
    QString path() const;
    void setPath(const QString& encoded);
    /// Fully decoded.
    QString fragment() const;
    /// Null takes the fragment away.
    void setFragment(const QString& decoded);
    QueryItems queryItems() const;
    void setQueryItems(const QueryItems& items);
    /// Appends an item. Name and value are plain text; both are encoded strictly, so that any text
    /// comes back.
    void addQueryItem(const QString& name, const QString& value);

    /// `relative` seen from this URL (RFC 3986, section 5).
    TavuUrl resolved(const TavuUrl& relative) const;
    /// As resolved(TavuUrl(relative)).toString(), for the many of a page.
    QString resolvedText(const QString& relative) const;

    friend bool operator==(const TavuUrl& a, const TavuUrl& b)
    {
        return a.m_encoded == b.m_encoded;
    }
    friend bool operator!=(const TavuUrl& a, const TavuUrl& b) { return !(a == b); }

private:
    void take(const QUrl& url);
    bool takeText(const QString& encoded);
    template <class Change>
    void change(Change&& change);

    QString
        m_encoded; // Spelled in the one way that this class writes a URL. Never written in place.
    urltext::Parts m_parts; // Of m_encoded; they point into its text, which every copy shares.
    bool m_broken = false; // It was made from something that is no URL.
};

/// The encoded URL.
TAVU_EXPORT std::ostream& operator<<(std::ostream& out, const TavuUrl& url);

Q_DECLARE_METATYPE(TavuUrl)
