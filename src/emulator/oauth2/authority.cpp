#include "authority.h"

#include <QCryptographicHash>
#include <QRandomGenerator>
#include <QUrl>

namespace emulator::oauth2 {

namespace {

// No vowels, so that no words come up, and nothing that is easily misread (RFC 8628, 6.1).
const QString codeLetters = QStringLiteral("BCDFGHJKLMNPQRSTVWXZ");
constexpr int codeHalf = 4;
constexpr qint64 slowDownMs = 5000;

QString text(const char* ascii)
{
    return QString::fromLatin1(ascii);
}

Answer refusal(const char* error, const char* description, int status = 400)
{
    return { status,
        { { text("error"), text(error) }, { text("error_description"), text(description) } } };
}

QString randomCode()
{
    QString code;
    for (int i = 0; i < 2 * codeHalf; ++i)
        code += codeLetters.at(QRandomGenerator::system()->bounded(codeLetters.size()));
    return code;
}

QString grouped(const QString& code)
{
    return code.left(codeHalf) + QLatin1Char('-') + code.mid(codeHalf);
}

// People type the code in any case, with or without the dash.
QString plain(const QString& typed)
{
    QString code;
    for (const QChar letter : typed.toUpper()) {
        if (letter.isLetterOrNumber())
            code += letter;
    }
    return code;
}

QString randomText(int bytes)
{
    QByteArray random(bytes, '\0');
    for (char& byte : random)
        byte = static_cast<char>(QRandomGenerator::system()->bounded(256));
    return QString::fromLatin1(
        random.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

bool provesChallenge(const QString& verifier, const QString& challenge)
{
    const QByteArray digest =
        QCryptographicHash::hash(verifier.toUtf8(), QCryptographicHash::Sha256);
    return challenge.toLatin1()
        == digest.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
}

QString decodeFormText(QByteArray encoded)
{
    return QUrl::fromPercentEncoding(encoded.replace('+', ' '));
}

} // namespace

Form parseForm(const QByteArray& body)
{
    Form form;
    for (const QByteArray& pair : body.split('&')) {
        const int equals = pair.indexOf('=');
        if (equals > 0)
            form.insert(decodeFormText(pair.left(equals)), decodeFormText(pair.mid(equals + 1)));
    }
    return form;
}

Client clientOf(const QByteArray& authorization, const Form& form)
{
    if (authorization.size() > 6 && qstrnicmp(authorization.constData(), "basic ", 6) == 0) {
        const QByteArray pair = QByteArray::fromBase64(authorization.mid(6));
        const int colon = pair.indexOf(':');
        return { decodeFormText(pair.left(colon)),
            colon < 0 ? QString() : decodeFormText(pair.mid(colon + 1)) };
    }
    return { form.value(text("client_id")), form.value(text("client_secret")) };
}

Authority::Authority(
    const Rules& rules, const QByteArray& secret, const QString& stateFile, Tokens::Trouble trouble)
    : m_rules(rules)
    , m_tokens(secret, stateFile, std::move(trouble))
{
}

std::optional<Answer> Authority::refuseClient(const Client& client, bool secretNeeded) const
{
    if (client.id != m_rules.clientId)
        return refusal("invalid_client", "the client id is not known", 401);
    const bool checked = secretNeeded || !client.secret.isEmpty();
    if (checked && client.secret != m_rules.clientSecret)
        return refusal("invalid_client", "the client secret is wrong", 401);
    return std::nullopt;
}

Answer Authority::authorizeDevice(
    const Client& client, const Form& form, const QString& verificationUri, qint64 nowMs)
{
    if (const auto refused = refuseClient(client, false))
        return *refused;
    const QString challenge = form.value(text("code_challenge"));
    if (challenge.isEmpty() && m_rules.pkceRequired)
        return refusal("invalid_request", "code_challenge is missing");
    if (!challenge.isEmpty() && form.value(text("code_challenge_method")) != text("S256"))
        return refusal("invalid_request", "code_challenge_method must be S256");
    forgetOld(nowMs);
    Pending pending;
    pending.asking.userCode = randomCode();
    pending.asking.scope = form.value(text("scope"));
    pending.asking.decision = m_rules.autoApprove ? Decision::Approved : Decision::Open;
    pending.challenge = challenge;
    pending.expiresMs = nowMs + m_rules.codeLifetimeS * 1000LL;
    pending.intervalMs = m_rules.pollIntervalS * 1000LL;
    const QString deviceCode = randomText(32);
    m_pending.insert(deviceCode, pending);
    const QString userCode = grouped(pending.asking.userCode);
    return { 200,
        { { text("device_code"), deviceCode }, { text("user_code"), userCode },
            { text("verification_uri"), verificationUri },
            { text("verification_uri_complete"), verificationUri + text("?user_code=") + userCode },
            { text("expires_in"), m_rules.codeLifetimeS },
            { text("interval"), m_rules.pollIntervalS } } };
}

Answer Authority::token(const Client& client, const Form& form, qint64 nowMs)
{
    if (const auto refused = refuseClient(client, true))
        return *refused;
    const QString grant = form.value(text("grant_type"));
    if (m_rules.deviceGrants.contains(grant))
        return deviceToken(form, nowMs);
    if (grant == text("refresh_token"))
        return refresh(form, nowMs);
    if (grant.isEmpty())
        return refusal("invalid_request", "grant_type is missing");
    return refusal("unsupported_grant_type", "this grant is not offered");
}

Answer Authority::deviceToken(const Form& form, qint64 nowMs)
{
    const QString deviceCode = form.value(text("device_code"));
    const auto found = m_pending.find(deviceCode);
    if (found == m_pending.end())
        return refusal("invalid_grant", "the device code is not known, or was used");
    Answer answer = pollOf(*found, form, nowMs);
    const QString error = answer.json.value(text("error")).toString();
    if (error != text("authorization_pending") && error != text("slow_down"))
        m_pending.remove(deviceCode);
    return answer;
}

Answer Authority::pollOf(Pending& pending, const Form& form, qint64 nowMs)
{
    if (nowMs >= pending.expiresMs)
        return refusal("expired_token", "the code was not entered in time");
    // Clocks and networks jitter; a tenth of the interval is let through.
    const bool early = pending.lastPollMs > 0
        && nowMs - pending.lastPollMs < pending.intervalMs - pending.intervalMs / 10;
    pending.lastPollMs = nowMs;
    if (early) {
        pending.intervalMs += slowDownMs;
        return refusal("slow_down", "asked too soon");
    }
    if (pending.asking.decision == Decision::Open)
        return refusal("authorization_pending", "the user has not answered yet");
    if (pending.asking.decision == Decision::Denied)
        return refusal("access_denied", "the user has said no");
    if (!pending.challenge.isEmpty()
        && !provesChallenge(form.value(text("code_verifier")), pending.challenge))
        return refusal("invalid_grant", "code_verifier is missing or wrong");
    return issue(m_tokens.begin(nowMs, m_rules.tokenLifetimeS * 1000LL), pending.asking.scope);
}

Answer Authority::refresh(const Form& form, qint64 nowMs)
{
    const auto pair = m_tokens.refresh(form.value(text("refresh_token")), nowMs,
        m_rules.tokenLifetimeS * 1000LL, m_rules.refreshGrace);
    if (!pair)
        return refusal("invalid_grant", "the refresh token is not good any more");
    return issue(*pair, form.value(text("scope")));
}

Answer Authority::issue(const TokenPair& pair, const QString& scope) const
{
    Answer answer{ 200,
        { { text("access_token"), pair.access }, { text("refresh_token"), pair.refresh },
            { text("token_type"), text("Bearer") },
            { text("expires_in"), m_rules.tokenLifetimeS } } };
    if (!scope.isEmpty())
        answer.json.insert(text("scope"), scope);
    return answer;
}

Answer Authority::grantDirectly(qint64 nowMs)
{
    return issue(m_tokens.begin(nowMs, m_rules.tokenLifetimeS * 1000LL), QString());
}

Authority::Pending* Authority::findByUserCode(const QString& userCode, qint64 nowMs)
{
    const QString code = plain(userCode);
    for (Pending& pending : m_pending) {
        if (pending.asking.userCode == code && pending.asking.decision == Decision::Open
            && nowMs < pending.expiresMs)
            return &pending;
    }
    return nullptr;
}

std::optional<Authority::Asking> Authority::asking(const QString& userCode, qint64 nowMs) const
{
    const Pending* pending = const_cast<Authority*>(this)->findByUserCode(userCode, nowMs);
    return pending ? std::optional<Asking>(pending->asking) : std::nullopt;
}

bool Authority::decide(const QString& userCode, bool approve, qint64 nowMs)
{
    Pending* pending = findByUserCode(userCode, nowMs);
    if (!pending)
        return false;
    pending->asking.decision = approve ? Decision::Approved : Decision::Denied;
    return true;
}

// A code that ran out is kept for a while, so that its device hears "expired_token".
void Authority::forgetOld(qint64 nowMs)
{
    constexpr qint64 keepMs = 3600LL * 1000;
    for (auto pending = m_pending.begin(); pending != m_pending.end();) {
        if (nowMs > pending->expiresMs + keepMs)
            pending = m_pending.erase(pending);
        else
            ++pending;
    }
}

TokenState Authority::checkBearer(const QByteArray& authorization, qint64 nowMs) const
{
    if (authorization.isEmpty())
        return TokenState::Missing;
    if (qstrnicmp(authorization.constData(), "bearer ", 7) != 0)
        return TokenState::Unknown;
    return m_tokens.checkAccess(QString::fromUtf8(authorization.mid(7)).trimmed(), nowMs);
}

void Authority::revokeAll()
{
    m_tokens.revokeAll();
}

void Authority::expireAccessTokens()
{
    m_tokens.expireAccessTokens();
}

} // namespace emulator::oauth2
