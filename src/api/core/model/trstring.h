#pragma once

#include "tavuexport.h"

#include <QList>
#include <QString>

/// The context under which translators find a source text.
struct TrContext
{
    const char* context = "";
};

/// Marks the context of the texts beside it for the extraction tool.
constexpr TrContext trExtractContext(const char* context)
{
    return TrContext{ context };
}

/// A source text and its context. Both must outlive it, as string literals do.
struct TrCharData
{
    constexpr TrCharData(TrContext trContext, const char* sourceText)
        : context(trContext.context)
        , text(sourceText)
    {
    }

    const char* context;
    const char* text;
};

/// A value for a "%1" of a translatable text.
using TrArg = QString;

/// Translatable text. It is translated when it is read, by the translators that the application has
/// installed by then; without one it reads as its source text.
class TAVU_EXPORT TrString
{
public:
    TrString() = default;
    TrString(const char* sourceText); // NOLINT(google-explicit-constructor): text is text
    TrString(const QString& sourceText); // NOLINT(google-explicit-constructor)
    TrString(const TrCharData& source, const QList<TrArg>& args = {});

    /// The translation, with %1, %2 … replaced by the arguments in one pass: what an argument
    /// contains is never replaced again.
    QString toString() const;

private:
    QByteArray m_context;
    QByteArray m_text;
    QList<TrArg> m_args;
};
