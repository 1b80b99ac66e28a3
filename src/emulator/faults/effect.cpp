#include "effect.h"

#include <algorithm>

namespace emulator::faults {

namespace {

using Type = Parameter::Type;

const Parameter after{ "after", Type::Number, "bytes of the body that still arrive (0)" };
const Parameter pace{ "bytesPerSecond", Type::Number, "how slowly they arrive (no limit)" };

std::vector<EffectKind> preparations()
{
    return {
        { "none", Stage::Prepare, "nothing; for rules that only delay", {} },
        { "expire", Stage::Prepare, "stream addresses in the answer expire early",
            { { "in", Type::Number, "milliseconds from now; may be negative (0)" },
                { "status", Type::Number, "what they answer from then on (403)" } } },
        { "key-headers", Stage::Prepare, "every track of the answer needs key headers", {} },
        { "no-ranges", Stage::Prepare, "sound is served whole, whatever range is asked for", {} },
    };
}

std::vector<EffectKind> replacements()
{
    return {
        { "status", Stage::Replace, "answers with a status",
            { { "status", Type::Number, "the status (503)" },
                { "retryAfter", Type::Text, "value of a Retry-After field" },
                { "location", Type::Text, "value of a Location field" },
                { "body", Type::Text, "the body (empty JSON object)" },
                { "type", Type::Text, "its media type (application/json)" } } },
        { "unauthorized", Stage::Replace, "answers 401 as if the token were not good",
            { { "status", Type::Number, "401 or 403 (401)" } } },
        { "conflict", Stage::Replace, "answers 409 with an error report",
            { { "brief", Type::Text, "the headline" },
                { "terse", Type::Text, "the short headline" },
                { "explanation", Type::Text, "the text" },
                { "options", Type::Json, "list of {label, action, uri, resume}; [] for none" },
                { "label", Type::Text, "or a single option: its label" },
                { "action", Type::Text, "its action: www, post or another (close)" },
                { "uri", Type::Text, "its address" },
                { "uriBytes", Type::Number, "makes the address so long" },
                { "resume", Type::Switch, "lets the player go on (false)" },
                { "count", Type::Number, "repeats the options up to this number" },
                { "report", Type::Switch, "false leaves generalErrorReports out (true)" } } },
        { "redirect", Stage::Replace, "redirects, to the same address unless told otherwise",
            { { "status", Type::Number, "301, 302, 303, 307 or 308 (302)" },
                { "toHost", Type::Text, "same path on this host; may name a port" },
                { "location", Type::Text, "the Location field as it is" },
                { "locationBytes", Type::Number, "makes the Location field so long" },
                { "noLocation", Type::Switch, "leaves the field out (false)" } } },
        { "body", Stage::Replace, "answers with these bytes",
            { { "text", Type::Text, "the body (empty)" },
                { "base64", Type::Text, "or the body in base64" },
                { "noise", Type::Number, "or so many bytes of noise" },
                { "status", Type::Number, "the status (200)" },
                { "type", Type::Text, "media type (application/json)" } } },
        { "oauth-error", Stage::Replace, "answers as an authorization server that refuses",
            { { "error", Type::Text, "the error code (slow_down)" },
                { "description", Type::Text, "error_description" },
                { "status", Type::Number, "the status (400)" } } },
        { "rating", Stage::Replace, "answers a rating",
            { { "message", Type::Text, "the text for the user (Thanks.)" },
                { "shouldSkip", Type::Switch, "asks the player to skip (true)" } } },
        { "gzip-bomb", Stage::Replace, "a small compressed body that unpacks to a large one",
            { { "megabytes", Type::Number, "unpacked size (200)" } } },
        { "nesting", Stage::Replace, "JSON that nests deeply",
            { { "depth", Type::Number, "levels (100000)" } } },
    };
}

std::vector<EffectKind> bends()
{
    return {
        { "bad-json", Stage::Bend, "JSON that is cut or broken",
            { { "form", Type::Text, "cut, comma, text or empty (cut)" },
                { "after", Type::Number, "bytes left by cut (half)" } } },
        { "bad-utf8", Stage::Bend, "texts that are not UTF-8",
            { { "form", Type::Text,
                "invalid, overlong, surrogate, escaped-surrogate or nul (invalid)" } } },
        { "edit", Stage::Bend, "changes the JSON of the answer",
            { { "set", Type::Json, "object: path to value; a path is /a/*/b" },
                { "remove", Type::Json,
                    "list of paths, or of keys that go wherever they stand" } } },
        { "wrong-types", Stage::Bend, "every value but the collections gets another type", {} },
        { "duplicate-keys", Stage::Bend, "repeats a key in the answer's object",
            { { "count", Type::Number, "how often (100000)" },
                { "key", Type::Text, "which (result)" },
                { "text", Type::Text, R"(its value as it is written ([{"a":"b"}]))" } } },
        { "numbers", Stage::Bend, "puts an odd number in place of every number",
            { { "text", Type::Text, "the number as it is written (1e999)" },
                { "spare", Type::Text, "a key whose values stay" } } },
        { "many-items", Stage::Bend, "repeats the first item of a page",
            { { "count", Type::Number, "items of the page (100000)" } } },
        { "pad", Stage::Bend, "lengthens the body with blanks to an exact size",
            { { "bytes", Type::Number, "the size (1048576)" },
                { "chunked", Type::Switch, "sends it without Content-Length (false)" } } },
        { "header", Stage::Bend, "adds a header field",
            { { "field", Type::Text, "its name (x-extra)" }, { "value", Type::Text, "its value" },
                { "valueBytes", Type::Number, "makes the value so long" } } },
    };
}

std::vector<EffectKind> disturbances()
{
    return {
        { "trickle", Stage::Deliver, "sends the body slowly",
            { { "bytesPerSecond", Type::Number, "how slowly (1)" } } },
        { "stall", Stage::Deliver, "stops in the body and keeps the connection open",
            { after, pace } },
        { "cut", Stage::Deliver, "closes the connection before Content-Length is reached",
            { after, pace } },
        { "reset", Stage::Deliver, "resets the connection in the body", { after, pace } },
        { "chunked-cut", Stage::Deliver, "sends the body in chunks and closes without the last one",
            { { "after", Type::Number, "bytes of the body that still arrive (all)" } } },
        { "surplus", Stage::Deliver, "sends more bytes than Content-Length says",
            { { "bytes", Type::Number, "how many more (100)" } } },
        { "lengths", Stage::Deliver, "contradicts itself about the length",
            { { "form", Type::Text, "two-lengths or length-and-chunked (two-lengths)" } } },
    };
}

std::vector<EffectKind> silences()
{
    return {
        { "hang", Stage::Raw, "never answers", {} },
        { "close", Stage::Raw, "closes the connection without an answer", {} },
        { "abort", Stage::Raw, "resets the connection without an answer", {} },
        { "garbage", Stage::Raw, "bytes that are not HTTP",
            { { "form", Type::Text, "noise or http09 (noise)" } } },
        { "endless-headers", Stage::Raw, "header fields without end", {} },
    };
}

std::vector<EffectKind> allKinds()
{
    std::vector<EffectKind> kinds;
    for (auto* group : { preparations, replacements, bends, disturbances, silences }) {
        for (EffectKind& kind : group())
            kinds.push_back(std::move(kind));
    }
    return kinds;
}

} // namespace

const std::vector<EffectKind>& effectKinds()
{
    static const std::vector<EffectKind> kinds = allKinds();
    return kinds;
}

const EffectKind* effectKind(const QString& name)
{
    const auto& kinds = effectKinds();
    const auto found = std::find_if(kinds.begin(), kinds.end(),
        [&name](const EffectKind& kind) { return name == QLatin1String(kind.name); });
    return found == kinds.end() ? nullptr : &*found;
}

qint64 Effect::number(const char* name, qint64 otherwise) const
{
    return has(name) ? value(name).toLongLong() : otherwise;
}

QString Effect::text(const char* name, const char* otherwise) const
{
    return has(name) ? value(name).toString() : QString::fromLatin1(otherwise);
}

bool Effect::isOn(const char* name, bool otherwise) const
{
    return has(name) ? value(name).toBool() : otherwise;
}

Stage Effect::stage() const
{
    const EffectKind* found = effectKind(kind);
    return found ? found->stage : Stage::Prepare;
}

} // namespace emulator::faults
