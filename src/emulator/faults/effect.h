#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantHash>

#include <vector>

namespace emulator::faults {

/// When an effect acts on the way of an answer.
enum class Stage {
    Prepare, ///< changes what the service takes into account; the answer itself is sound
    Replace, ///< stands in place of the service's answer
    Bend, ///< changes the bytes of the service's answer
    Deliver, ///< lets the answer be sound and disturbs its way to the peer
    Raw ///< writes to the connection, or leaves it, without an answer
};

/// A parameter of an effect, for checking and for telling.
struct Parameter
{
    enum class Type { Number, Text, Switch, Json };

    const char* name;
    Type type;
    const char* meaning; ///< with the default
};

/// One kind of fault that can be injected.
struct EffectKind
{
    const char* name;
    Stage stage;
    const char* meaning;
    std::vector<Parameter> parameters;
};

/// Every kind, in the order in which they are told.
const std::vector<EffectKind>& effectKinds();
/// Null for an unknown name.
const EffectKind* effectKind(const QString& name);

/// A kind with its parameters filled in; a value. Parameters that were not given are absent.
struct Effect
{
    QString kind;
    QVariantHash parameters;
    int delayMs = 0; ///< before anything else happens

    bool has(const char* name) const { return parameters.contains(QLatin1String(name)); }
    qint64 number(const char* name, qint64 otherwise) const;
    QString text(const char* name, const char* otherwise = "") const;
    bool isOn(const char* name, bool otherwise) const;
    QVariant value(const char* name) const { return parameters.value(QLatin1String(name)); }
    Stage stage() const;
};

} // namespace emulator::faults
