#include "bending.h"

#include "jsonedit.h"
#include "tavujson.h"

namespace emulator::faults {

namespace {

QByteArray broken(const Effect& effect, const QByteArray& body)
{
    const QString form = effect.text("form", "cut");
    if (form == QLatin1String("empty"))
        return {};
    if (form == QLatin1String("text"))
        return "<html><body>Service temporarily unavailable</body></html>";
    if (form == QLatin1String("comma"))
        return body.left(body.size() - 1) + ",}";
    return body.left(static_cast<int>(effect.number("after", body.size() / 2)));
}

QByteArray badText(const QString& form)
{
    if (form == QLatin1String("overlong"))
        return "\xc0\xaf";
    if (form == QLatin1String("surrogate"))
        return "\xed\xa0\x80";
    if (form == QLatin1String("escaped-surrogate"))
        return "\\ud800";
    if (form == QLatin1String("nul"))
        return "\\u0000";
    return "\xff\xfe";
}

// Puts the bad bytes in front of every label, title and name, where users would see them.
QByteArray withBadTexts(const Effect& effect, QByteArray body)
{
    const QByteArray bad = badText(effect.text("form", "invalid"));
    for (const char* key : { "itemLabel", "title", "name", "message", "brief", "terse" })
        body.replace(QByteArray("\"") + key + "\":\"", QByteArray("\"") + key + "\":\"" + bad);
    return body;
}

QByteArray withDuplicates(const Effect& effect, const QByteArray& body)
{
    const QByteArray value = effect.text("text", R"([{"a":"b"}])").toUtf8();
    const QByteArray pair = "\"" + effect.text("key", "result").toUtf8() + "\":" + value + ",";
    return "{" + pair.repeated(static_cast<int>(effect.number("count", 100000))) + body.mid(1);
}

QByteArray bendJson(const Effect& effect, const QByteArray& body)
{
    const auto is = [&effect](const char* kind) { return effect.kind == QLatin1String(kind); };
    if (is("bad-json"))
        return broken(effect, body);
    if (is("bad-utf8"))
        return withBadTexts(effect, body);
    if (is("duplicate-keys"))
        return withDuplicates(effect, body);
    const QVariant json = TavuJson::parse(body);
    if (is("edit"))
        return TavuJson::toJson(
            edited(json, effect.value("set").toHash(), effect.value("remove").toList()));
    if (is("wrong-types"))
        return TavuJson::toJson(withWrongTypes(json));
    if (is("many-items"))
        return TavuJson::toJson(withItems(json, static_cast<int>(effect.number("count", 100000))));
    if (is("numbers"))
        return withNumbers(json, effect.text("text", "1e999").toUtf8(), effect.text("spare"));
    return body;
}

http::Response padded(const Effect& effect, http::Response answer)
{
    const auto size = static_cast<int>(effect.number("bytes", 1024LL * 1024));
    answer.body = answer.body.leftJustified(size, ' ');
    return answer;
}

http::Response withHeader(const Effect& effect, http::Response answer)
{
    const QByteArray value = effect.text("value").toUtf8();
    answer.headers.append(effect.text("field", "x-extra").toUtf8(),
        value.leftJustified(static_cast<int>(effect.number("valueBytes", value.size())), 'x'));
    return answer;
}

} // namespace

http::Response bend(const Effect& effect, http::Response answer)
{
    if (effect.kind == QLatin1String("pad"))
        return padded(effect, std::move(answer));
    if (effect.kind == QLatin1String("header"))
        return withHeader(effect, std::move(answer));
    if (answer.body.startsWith('{'))
        answer.body = bendJson(effect, answer.body);
    answer.headers.remove("ETag");
    return answer;
}

} // namespace emulator::faults
