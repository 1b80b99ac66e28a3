#pragma once

#include <QString>
#include <QVariantHash>

#include <optional>

/// What authorization servers answer, checked before anything else sees it.
namespace player {

/// The answer to a device authorization request (RFC 8628, section 3.2).
struct DeviceAnswer
{
    QString deviceCode;
    QString userCode;
    QString verificationUri;
    QString verificationUriComplete; ///< Empty when the server sends none.
    qint64 lifetimeMs = 0;
    qint64 intervalMs = 0;

    /// On failure `reason` says what is wrong with the answer.
    static std::optional<DeviceAnswer> read(const QVariantHash& json, QString* reason);
};

/// The answer to a token request (RFC 6749, section 5.1).
struct TokenAnswer
{
    QString accessToken;
    QString refreshToken; ///< Empty when the server sends none.
    qint64 lifetimeMs = 0;

    static std::optional<TokenAnswer> read(const QVariantHash& json, QString* reason);
};

/// Whether the text can be a token: 1 to 16 KiB of visible ASCII, so that it can be sent in a
/// header field.
bool isToken(const QString& text);

/// The error code of a refusal (RFC 6749, section 5.2); "unknown_error" for none or a strange one.
QString errorCodeOf(const QVariantHash& json);

} // namespace player
