#pragma once

#include "httpresponder.h"

#include <QString>
#include <QVariant>

#include <functional>
#include <optional>

namespace control {

/// The JSON object that a client sent. Reading a member gives nothing when it is missing or of
/// another type; members that nobody asks for are passed over.
class RequestBody
{
public:
    /// Nothing for what is no JSON object. No body at all counts as an empty object.
    static std::optional<RequestBody> parse(const QByteArray& body);

    bool has(const char* name) const;
    std::optional<QString> text(const char* name) const;
    /// A whole number from `least` to `most`.
    std::optional<qint64> integer(const char* name, qint64 least, qint64 most) const;
    std::optional<bool> flag(const char* name) const;
    /// As it is; invalid when it is missing or null.
    QVariant value(const char* name) const;

private:
    QVariantHash m_members;
};

/// A handler of requests that carry a JSON object; others are answered with 400.
http::Handler withBody(std::function<void(const RequestBody&, const http::Responder&)> handler);

} // namespace control
