#include "rule.h"

#include "tavujson.h"

#include <QStringList>

namespace emulator::faults {

namespace {

const QString effectKey = QStringLiteral("effect");
const QString delayKey = QStringLiteral("delay");
const QString timesKey = QStringLiteral("times");
const QString skipKey = QStringLiteral("skip");
const QString forever = QStringLiteral("forever");

struct TextField
{
    const char* name;
    QString Rule::*member;
};
const TextField textFields[]{ { "name", &Rule::name }, { "method", &Rule::method },
    { "path", &Rule::path }, { "host", &Rule::host }, { "kind", &Rule::kind },
    { "listener", &Rule::listener } };

bool isNumber(const QVariant& value)
{
    bool number = false;
    value.toLongLong(&number);
    return number;
}

bool isSwitch(const QVariant& value)
{
    return value.type() == QVariant::Bool || value.toString() == QLatin1String("true")
        || value.toString() == QLatin1String("false");
}

// The value in its type; invalid when it is of another one. In pairs everything is text.
QVariant convert(const QVariant& value, Parameter::Type type)
{
    switch (type) {
    case Parameter::Type::Number:
        return isNumber(value) ? value.toLongLong() : QVariant();
    case Parameter::Type::Switch:
        return isSwitch(value) ? value.toBool() : QVariant();
    case Parameter::Type::Text:
        return value.canConvert<QString>() ? value.toString() : QVariant();
    case Parameter::Type::Json:
        return value.type() == QVariant::String ? TavuJson::parse(value.toString().toUtf8())
                                                : value;
    }
    return {};
}

// Takes the rule's own fields out of `fields`; what stays belongs to the effect.
QString takeFields(QVariantHash& fields, Rule& rule)
{
    for (const TextField& field : textFields)
        rule.*field.member = fields.take(QLatin1String(field.name)).toString();
    const QVariant times = fields.take(timesKey);
    const QVariant skip = fields.take(skipKey);
    const QVariant delay = fields.take(delayKey);
    if (times.isValid() && times.toString() != forever && (!isNumber(times) || times.toInt() < 0))
        return QStringLiteral("\"times\" must be a number or \"forever\"");
    if (skip.isValid() && (!isNumber(skip) || skip.toInt() < 0))
        return QStringLiteral("\"skip\" must be a number");
    if (delay.isValid() && (!isNumber(delay) || delay.toInt() < 0))
        return QStringLiteral("\"delay\" must be a number of milliseconds");
    if (!rule.listener.isEmpty() && rule.listener != QLatin1String("http")
        && rule.listener != QLatin1String("tls"))
        return QStringLiteral("\"listener\" must be \"http\" or \"tls\"");
    rule.times = times.toString() == forever ? 0 : times.toInt();
    rule.skip = skip.toInt();
    rule.effect.delayMs = delay.toInt();
    return {};
}

QString namesOf(const std::vector<Parameter>& parameters)
{
    QStringList names{ delayKey };
    for (const Parameter& parameter : parameters)
        names += QLatin1String(parameter.name);
    return names.join(QLatin1String(", "));
}

QString takeParameters(const QVariantHash& fields, const EffectKind& kind, Effect& effect)
{
    for (auto field = fields.cbegin(); field != fields.cend(); ++field) {
        const Parameter* known = nullptr;
        for (const Parameter& parameter : kind.parameters) {
            if (field.key() == QLatin1String(parameter.name))
                known = &parameter;
        }
        if (!known)
            return QStringLiteral("the effect \"%1\" has no parameter \"%2\"; it has: %3")
                .arg(effect.kind, field.key(), namesOf(kind.parameters));
        const QVariant value = convert(*field, known->type);
        if (!value.isValid())
            return QStringLiteral("the parameter \"%1\" of \"%2\" cannot be read: %3")
                .arg(field.key(), effect.kind, QString::fromUtf8(known->meaning));
        effect.parameters.insert(field.key(), value);
    }
    return {};
}

ParsedRule problem(const QString& text)
{
    return { std::nullopt, text };
}

QString knownEffects()
{
    QStringList names;
    for (const EffectKind& kind : effectKinds())
        names += QLatin1String(kind.name);
    return names.join(QLatin1String(", "));
}

// Splits at blanks outside of double quotes; the quotes go.
QStringList splitPairs(const QString& text)
{
    QStringList pairs;
    QString pair;
    bool quoted = false;
    for (const QChar letter : text + QLatin1Char(' ')) {
        if (letter == QLatin1Char('"')) {
            quoted = !quoted;
        } else if (letter.isSpace() && !quoted) {
            if (!pair.isEmpty())
                pairs += pair;
            pair.clear();
        } else {
            pair += letter;
        }
    }
    return pairs;
}

bool matchesFrom(const QString& pattern, int p, const QString& text, int t)
{
    while (p < pattern.size() && pattern.at(p) != QLatin1Char('*')) {
        if (t >= text.size() || text.at(t) != pattern.at(p))
            return false;
        ++p;
        ++t;
    }
    if (p == pattern.size())
        return t == text.size();
    for (; t <= text.size(); ++t) {
        if (matchesFrom(pattern, p + 1, text, t))
            return true;
    }
    return false;
}

} // namespace

bool matchesPattern(const QString& pattern, const QString& text)
{
    return matchesFrom(pattern, 0, text, 0);
}

bool Rule::matches(const Target& target) const
{
    const bool withQuery = path.contains(QLatin1Char('?'));
    const QString where = withQuery ? target.path + QLatin1Char('?') + target.query : target.path;
    // Who asks for a head only keeps a connection; it takes no fault away from who asks for more.
    const bool meant =
        method.isEmpty() ? target.method != QLatin1String("HEAD") : method == target.method;
    return meant && (path.isEmpty() || matchesPattern(path, where))
        && (host.isEmpty() || matchesPattern(host, target.host))
        && (kind.isEmpty() || matchesPattern(kind, target.kind))
        && (listener.isEmpty() || (listener == QLatin1String("tls")) == target.secure);
}

ParsedRule parseRule(const QVariantHash& given)
{
    QVariantHash fields = given;
    Rule rule;
    const QString wrong = takeFields(fields, rule);
    if (!wrong.isEmpty())
        return problem(wrong);
    rule.effect.kind =
        fields.contains(effectKey) ? fields.take(effectKey).toString() : QStringLiteral("none");
    const EffectKind* kind = effectKind(rule.effect.kind);
    if (!kind)
        return problem(QStringLiteral("there is no effect \"%1\"; there are: %2")
                           .arg(rule.effect.kind, knownEffects()));
    const QString wrongParameter = takeParameters(fields, *kind, rule.effect);
    if (!wrongParameter.isEmpty())
        return problem(wrongParameter);
    if (rule.name.isEmpty())
        rule.name = rule.effect.kind;
    return { rule, QString() };
}

ParsedRule parseRule(const QString& text)
{
    if (text.trimmed().startsWith(QLatin1Char('{'))) {
        const QVariant json = TavuJson::parse(text.toUtf8());
        return json.isValid() ? parseRule(json.toHash())
                              : problem(QStringLiteral("the rule is not valid JSON"));
    }
    QVariantHash fields;
    for (const QString& pair : splitPairs(text)) {
        const int equals = pair.indexOf(QLatin1Char('='));
        if (equals <= 0)
            return problem(QStringLiteral("\"%1\" is not of the form name=value").arg(pair));
        fields.insert(pair.left(equals), pair.mid(equals + 1));
    }
    if (fields.isEmpty())
        return problem(QStringLiteral("the rule is empty"));
    return parseRule(fields);
}

QVariantHash describe(const Rule& rule)
{
    QVariantHash fields = rule.effect.parameters;
    for (const TextField& field : textFields) {
        if (!(rule.*field.member).isEmpty())
            fields.insert(QLatin1String(field.name), rule.*field.member);
    }
    fields.insert(effectKey, rule.effect.kind);
    if (rule.effect.delayMs > 0)
        fields.insert(delayKey, rule.effect.delayMs);
    if (rule.skip > 0)
        fields.insert(skipKey, rule.skip);
    fields.insert(timesKey, rule.times > 0 ? QVariant(rule.times) : QVariant(forever));
    fields.insert(QStringLiteral("id"), rule.id);
    fields.insert(QStringLiteral("hits"), rule.hits);
    return fields;
}

} // namespace emulator::faults
