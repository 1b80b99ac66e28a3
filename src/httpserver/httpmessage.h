#pragma once

#include <QByteArray>
#include <QHash>
#include <QHostAddress>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

class QDateTime;
class QJsonObject;

namespace http {

/// Header fields in their order. Names compare case-insensitively.
class Headers
{
public:
    using Field = QPair<QByteArray, QByteArray>;

    Headers() = default;
    Headers(std::initializer_list<Field> fields)
        : m_fields(fields)
    {
    }

    void append(const QByteArray& name, const QByteArray& value);
    /// Replaces every field of the name.
    void set(const QByteArray& name, const QByteArray& value);
    void remove(const QByteArray& name);

    bool contains(const QByteArray& name) const;
    /// The first field of the name; empty without one.
    QByteArray value(const QByteArray& name) const;
    QList<QByteArray> values(const QByteArray& name) const;

    const QVector<Field>& fields() const { return m_fields; }

private:
    QVector<Field> m_fields;
};

/// A request whose head has been checked and whose body is complete.
struct Request
{
    QByteArray method; ///< as sent, for example "GET"
    QByteArray target; ///< as sent, for example "/a%2Fb?c=d"
    QByteArray authority; ///< host[:port] of an absolute-form target, else of the first Host field
    QString path; ///< percent-decoded, without query; "*" and CONNECT targets as sent
    /// The path's components, each decoded on its own, so that "%2F" does not divide. "/" has none;
    /// a trailing slash gives a last empty one.
    QStringList segments;
    QVector<QPair<QString, QString>> query; ///< decoded, in order; "+" stays "+"
    Headers headers;
    QByteArray body;
    QHash<QString, QString> parameters; ///< what the route's placeholders matched
    QHostAddress peer;
    quint16 peerPort = 0;
    QHostAddress localAddress; ///< where the connection came in
    quint16 localPort = 0;
    bool secure = false; ///< came over TLS

    bool hasQuery(const QString& name) const;
    /// The first query item of the name; empty without one.
    QString queryValue(const QString& name) const;
};

/// An answer whose body is at hand. The server adds Date, Content-Length and, where the connection
/// ends, Connection; it leaves the body out for HEAD, 204 and 304.
struct Response
{
    int status = 200;
    Headers headers;
    QByteArray body;

    static Response text(int status, const QByteArray& body);
    static Response html(int status, const QByteArray& body);
    static Response json(int status, const QByteArray& body);
    static Response json(int status, const QJsonObject& body);
    static Response redirect(int status, const QByteArray& location);
};

/// The standard phrase of a status; empty for an unknown one.
QByteArray reasonPhrase(int status);

/// The answer as HTTP/1.1 bytes with Date and Content-Length, for those who send altered bytes.
QByteArray serialize(const Response& response);
/// The head alone, with Date and the empty line; no other field is added.
QByteArray serializeHead(int status, const Headers& headers);

/// The time as header fields carry it, for example "Sun, 06 Nov 1994 08:49:37 GMT".
QByteArray httpDate(const QDateTime& time);

} // namespace http
