#include "loginservice.h"

#include "tavujson.h"

namespace emulator {

using faults::Answer;
using oauth2::ApprovalPage;

namespace {

Answer jsonAnswer(const oauth2::Answer& given)
{
    Answer answer;
    answer.response = http::Response::json(given.status, TavuJson::toJson(given.json));
    answer.response.headers.append("Cache-Control", "no-store");
    if (given.status == 401)
        answer.response.headers.append("WWW-Authenticate", "Basic realm=\"emulator\"");
    return answer;
}

Answer pageAnswer(int status, const QByteArray& html)
{
    Answer answer;
    answer.response = http::Response::html(status, html);
    answer.response.headers.append("Cache-Control", "no-store");
    answer.response.headers.append("Content-Security-Policy", ApprovalPage::policy());
    answer.response.headers.append("Referrer-Policy", "no-referrer");
    return answer;
}

} // namespace

LoginService::LoginService(oauth2::Authority& authority, const QByteArray& secret,
    std::function<QString()> verificationUri)
    : m_authority(authority)
    , m_page(secret)
    , m_verificationUri(std::move(verificationUri))
{
}

void LoginService::addRoutes(Gateway& gateway)
{
    using Access = Gateway::Access;
    const auto add = [&](const char* method, const char* pattern, const char* kind,
                         Answer (LoginService::*member)(Call&)) {
        gateway.add(method, QLatin1String(pattern), QLatin1String(kind), Access::Open,
            [this, member](Call& call) { return (this->*member)(call); });
    };
    add("POST", "/oauth2/device", "login", &LoginService::authorizeDevice);
    add("POST", "/oauth2/token", "token", &LoginService::token);
    add("GET", "/activate", "approval", &LoginService::showForm);
    add("POST", "/activate", "approval", &LoginService::takeForm);
}

Answer LoginService::authorizeDevice(Call& call)
{
    const oauth2::Form form = oauth2::parseForm(call.request.body);
    const oauth2::Client client =
        oauth2::clientOf(call.request.headers.value("authorization"), form);
    return jsonAnswer(
        m_authority.authorizeDevice(client, form, m_verificationUri(), call.moment.nowMs));
}

Answer LoginService::token(Call& call)
{
    const oauth2::Form form = oauth2::parseForm(call.request.body);
    const oauth2::Client client =
        oauth2::clientOf(call.request.headers.value("authorization"), form);
    return jsonAnswer(m_authority.token(client, form, call.moment.nowMs));
}

Answer LoginService::showForm(Call& call)
{
    const QString code = call.request.queryValue(QStringLiteral("user_code"));
    const bool unknown = !code.isEmpty() && !m_authority.asking(code, call.moment.nowMs);
    return form(call, code,
        unknown ? QStringLiteral("This code is not known, or its time is over. Look at "
                                 "your player for the present one.")
                : QString());
}

Answer LoginService::form(Call& call, const QString& userCode, const QString& problem) const
{
    const QByteArray cookie = ApprovalPage::visitorOf(call.request.headers.value("cookie"));
    const QByteArray visitor = cookie.isEmpty() ? ApprovalPage::newVisitor() : cookie;
    Answer answer = pageAnswer(problem.isEmpty() ? 200 : 400,
        m_page.form(visitor, userCode, m_authority.asking(userCode, call.moment.nowMs), problem));
    if (cookie.isEmpty())
        answer.response.headers.append("Set-Cookie",
            ApprovalPage::cookieName() + '=' + visitor
                + "; Path=/activate; HttpOnly; SameSite=Strict");
    return answer;
}

Answer LoginService::takeForm(Call& call)
{
    const oauth2::Form posted = oauth2::parseForm(call.request.body);
    const QString code = posted.value(QStringLiteral("user_code"));
    const QByteArray visitor = ApprovalPage::visitorOf(call.request.headers.value("cookie"));
    if (!m_page.isGenuine(visitor, posted))
        return form(call, code, QStringLiteral("This form is too old. Please press again."));
    const bool approve = posted.value(QStringLiteral("decision")) == QLatin1String("allow");
    if (!m_authority.decide(code, approve, call.moment.nowMs))
        return form(call, code,
            QStringLiteral("This code is not known, was answered already, or its time is "
                           "over. Look at your player for the present one."));
    return pageAnswer(200, ApprovalPage::done(approve));
}

} // namespace emulator
