#include "redactor.h"

#include <QRegularExpression>
#include <QString>

#include <algorithm>
#include <deque>
#include <mutex>

namespace player {

namespace {

constexpr std::size_t secretsAtMost = 64;
constexpr std::size_t shortestSecret = 6;

struct Secrets
{
    std::mutex mutex;
    // Guarded by mutex.
    std::deque<std::string> passing;
    std::deque<std::string> lasting;
};

Secrets& secrets()
{
    static Secrets all;
    return all;
}

/// A pattern whose first group stays and whose rest goes.
struct Rule
{
    QRegularExpression pattern;
    QString replacement;
};

const std::deque<Rule>& rules()
{
    const auto rule = [](const char* pattern) {
        return Rule{ QRegularExpression(
                         QString::fromLatin1(pattern), QRegularExpression::CaseInsensitiveOption),
            QStringLiteral("\\1***") };
    };
    static const std::deque<Rule> all{
        rule(R"re((\bBearer )[^\s"',]+)re"),
        rule(R"re(("key-?headers"\s*:\s*\[)[^\]]*)re"),
        rule(
            R"re(("(?:access_token|refresh_token|client_secret|device_code|user_code|code_verifier|token)"\s*:\s*")[^"]*)re"),
        rule(
            R"re(([?&](?:access_token|refresh_token|client_secret|device_code|user_code|code_verifier|code|token|sig|signature|key|auth)=)[^&\s"'#]+)re"),
        rule(
            R"re((%(?:3F|26)(?:access_token|device_code|user_code|code|token|sig|signature|key|auth)%3D)(?:(?!%26|%23)[^&\s"'])+)re"),
        rule(R"re((\b(?:authorization|x-[a-z0-9-]*key[a-z0-9-]*)\s*:\s*)[^\r\n"',]+)re"),
    };
    return all;
}

std::string without(const std::deque<std::string>& known, std::string text)
{
    for (const std::string& secret : known) {
        for (auto at = text.find(secret); at != std::string::npos; at = text.find(secret, at + 3))
            text.replace(at, secret.size(), "***");
    }
    return text;
}

std::string withoutKnownSecrets(const std::string& text)
{
    const std::lock_guard<std::mutex> guard(secrets().mutex);
    return without(secrets().lasting, without(secrets().passing, text));
}

void add(std::deque<std::string>& known, const std::string& secret)
{
    known.erase(std::remove(known.begin(), known.end(), secret), known.end());
    if (secret.size() >= shortestSecret)
        known.push_back(secret);
}

bool mayHoldSecrets(const std::string& text)
{
    return text.find_first_of("=:%") != std::string::npos
        || text.find("earer") != std::string::npos;
}

} // namespace

void addSecret(const std::string& secret)
{
    const std::lock_guard<std::mutex> guard(secrets().mutex);
    add(secrets().passing, secret);
    if (secrets().passing.size() > secretsAtMost)
        secrets().passing.pop_front();
}

void addLastingSecret(const std::string& secret)
{
    const std::lock_guard<std::mutex> guard(secrets().mutex);
    add(secrets().lasting, secret);
}

std::string redacted(const std::string& text)
{
    std::string cleaned = withoutKnownSecrets(text);
    if (!mayHoldSecrets(cleaned))
        return cleaned;
    QString result = QString::fromStdString(cleaned);
    for (const Rule& rule : rules())
        result.replace(rule.pattern, rule.replacement);
    return result.toStdString();
}

} // namespace player
