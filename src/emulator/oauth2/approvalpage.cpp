#include "approvalpage.h"

#include <QCryptographicHash>
#include <QMessageAuthenticationCode>
#include <QRandomGenerator>

namespace emulator::oauth2 {

namespace {

const QByteArray style = R"(
:root { color-scheme: light dark; --ink: #1c1f26; --paper: #f6f5f2; --card: #ffffff; --act: #0b5cad; }
@media (prefers-color-scheme: dark) {
  :root { --ink: #f1f0ec; --paper: #16181d; --card: #22252c; --act: #7ab8ff; } }
* { box-sizing: border-box; }
body { margin: 0; min-height: 100vh; display: grid; place-items: center; background: var(--paper);
  color: var(--ink); font: 1.05rem/1.5 system-ui, sans-serif; }
main { width: min(26rem, 100vw); padding: 2rem 1.5rem; background: var(--card); border-radius: 1rem; }
h1 { margin: 0 0 .5rem; font-size: 1.5rem; line-height: 1.25; }
label { display: block; margin-top: 1.25rem; font-weight: 600; }
input { width: 100%; margin: .35rem 0 1.25rem; padding: .75rem; font: 1.5rem ui-monospace, monospace;
  letter-spacing: .15em; text-align: center; text-transform: uppercase; border: 2px solid currentColor;
  border-radius: .5rem; background: transparent; color: inherit; }
button { width: 100%; min-height: 3rem; margin-top: .5rem; font: inherit; font-weight: 600;
  border: 2px solid var(--act); border-radius: .5rem; background: transparent; color: var(--act); }
button.main { background: var(--act); color: var(--card); }
.problem { padding: .5rem .75rem; border-left: .3rem solid #d43c2f; }
)";

QByteArray page(const QByteArray& title, const QByteArray& content)
{
    return "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">"
           "<title>"
        + title + "</title><style>" + style + "</style></head><body><main>" + content
        + "</main></body></html>\n";
}

QByteArray escaped(const QString& text)
{
    return text.toHtmlEscaped().toUtf8();
}

} // namespace

ApprovalPage::ApprovalPage(const QByteArray& secret)
    : m_secret(secret)
{
}

QByteArray ApprovalPage::cookieName()
{
    return "emulator_visitor";
}

QByteArray ApprovalPage::newVisitor()
{
    const quint64 parts[]{ QRandomGenerator::system()->generate64(),
        QRandomGenerator::system()->generate64() };
    return QByteArray::number(parts[0], 36) + QByteArray::number(parts[1], 36);
}

QByteArray ApprovalPage::visitorOf(const QByteArray& cookieField)
{
    for (const QByteArray& cookie : cookieField.split(';')) {
        const QByteArray trimmed = cookie.trimmed();
        if (trimmed.startsWith(cookieName() + '='))
            return trimmed.mid(cookieName().size() + 1);
    }
    return {};
}

QString ApprovalPage::mark(const QByteArray& visitor) const
{
    return QString::fromLatin1(QMessageAuthenticationCode::hash(
        "approval " + visitor, m_secret, QCryptographicHash::Sha256)
                                   .toHex());
}

bool ApprovalPage::isGenuine(const QByteArray& visitor, const Form& form) const
{
    return !visitor.isEmpty() && form.value(QStringLiteral("mark")) == mark(visitor);
}

QByteArray ApprovalPage::form(const QByteArray& visitor, const QString& userCode,
    const std::optional<Authority::Asking>& asking, const QString& problem) const
{
    QByteArray content = "<h1>Connect your player</h1>";
    if (!problem.isEmpty())
        content += R"(<p class="problem" role="alert">)" + escaped(problem) + "</p>";
    if (asking)
        content += "<p>A player asks to use this music service in your name. Allow it only if the "
                   "code below is the one that your player shows.</p>";
    else
        content += "<p>Type the code that your player shows.</p>";
    content += "<form method=\"post\" action=\"/activate\">"
               "<input type=\"hidden\" name=\"mark\" value=\""
        + escaped(mark(visitor))
        + "\"><label for=\"code\">Code</label>"
          "<input id=\"code\" name=\"user_code\" required autocomplete=\"off\" "
          "autocapitalize=\"characters\" spellcheck=\"false\" maxlength=\"20\" value=\""
        + escaped(userCode)
        + "\"><button class=\"main\" name=\"decision\" value=\"allow\">Allow</button>"
          "<button name=\"decision\" value=\"deny\">Deny</button></form>";
    return page("Connect your player", content);
}

QByteArray ApprovalPage::done(bool approved)
{
    return approved
        ? page("Connected",
            "<h1>Connected</h1><p>Your player signs in by itself within a few seconds. You can "
            "close this page.</p>")
        : page("Not connected",
            "<h1>Not connected</h1><p>The player was turned away. Nothing else happens.</p>");
}

QByteArray ApprovalPage::policy()
{
    static const QByteArray digest =
        QCryptographicHash::hash(style, QCryptographicHash::Sha256).toBase64();
    return "default-src 'none'; style-src 'sha256-" + digest
        + "'; form-action 'self'; frame-ancestors 'none'; base-uri 'none'";
}

} // namespace emulator::oauth2
