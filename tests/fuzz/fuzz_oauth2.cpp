#include "fuzzbytes.h"
#include "oauth2answers.h"
#include "tavujson.h"

namespace {

using player::DeviceAnswer;
using player::TokenAnswer;

constexpr qint64 hour = qint64{ 3600 } * 1000;

void readCode(const QVariantHash& json)
{
    QString reason;
    const auto code = DeviceAnswer::read(json, &reason);
    require(code.has_value() == reason.isEmpty(), "a code that is refused is refused for a reason");
    if (!code)
        return;
    require(player::isToken(code->deviceCode), "a device code can be sent");
    require(!code->userCode.trimmed().isEmpty(), "a user code can be typed");
    require(code->verificationUri.startsWith(QLatin1String("http"), Qt::CaseInsensitive),
        "a verification address leads to the web");
    require(code->lifetimeMs > 0 && code->lifetimeMs <= 24 * hour, "a code ends within a day");
    require(code->intervalMs > 0 && code->intervalMs <= hour, "polls have a distance");
}

void readToken(const QVariantHash& json)
{
    QString reason;
    const auto token = TokenAnswer::read(json, &reason);
    require(
        token.has_value() == reason.isEmpty(), "a token that is refused is refused for a reason");
    if (!token)
        return;
    require(player::isToken(token->accessToken), "an access token can be sent");
    require(token->refreshToken.isEmpty() || player::isToken(token->refreshToken),
        "a refresh token can be sent");
    // Longer than this, and the milliseconds of a timer overflow.
    require(token->lifetimeMs > 0 && token->lifetimeMs <= 24 * 24 * hour, "a token ends some time");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QVariantHash json = TavuJson::parse(bytesOf(data, size)).toHash();
    readCode(json);
    readToken(json);
    const QString code = player::errorCodeOf(json);
    require(!code.isEmpty() && code.size() <= 64, "a refusal has a short code");
    return 0;
}
