#pragma once

#include "effect.h"

#include <QString>
#include <QVariantHash>

#include <optional>

namespace emulator::faults {

/// What a rule looks at in a request.
struct Target
{
    QString method;
    QString path; ///< encoded, without query
    QString query; ///< encoded, without "?"
    QString host; ///< without port
    QString kind; ///< what the service takes the request for, for example "browse"
    bool secure = false;
};

/// One setting of the dial: which requests, how many of them, and what happens to them. Patterns
/// may hold "*" for any run of characters, slashes included; empty patterns match everything.
struct Rule
{
    int id = 0; ///< given by the dial
    QString name; ///< for people; the effect's kind when none is given
    QString method;
    QString path; ///< matched with the query when the pattern holds a "?"
    QString host;
    QString kind;
    QString listener; ///< "http", "tls" or empty
    int skip = 0; ///< matching requests that pass unharmed first
    int times = 0; ///< requests that are then hit; 0: all that follow
    Effect effect;

    int seen = 0; ///< matching requests so far
    int hits = 0; ///< of these hit

    bool matches(const Target& target) const;
    bool isSpent() const { return times > 0 && hits >= times; }
};

/// A rule, or what is wrong with the text that should be one.
struct ParsedRule
{
    std::optional<Rule> rule;
    QString problem;
};

/// Reads a rule as JSON has it: the fields of Rule and beside them "effect", its parameters, and
/// "delay" in milliseconds. "times" may be "forever".
ParsedRule parseRule(const QVariantHash& given);
/// Reads a JSON object, or "name=value" pairs separated by blanks; a value with blanks stands in
/// double quotes.
ParsedRule parseRule(const QString& text);

/// The rule as parseRule() reads it, with its id and counts.
QVariantHash describe(const Rule& rule);

/// Whether the text matches a pattern with "*".
bool matchesPattern(const QString& pattern, const QString& text);

} // namespace emulator::faults
