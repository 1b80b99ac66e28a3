#include "trstring.h"

#include <QCoreApplication>
#include <QRegularExpression>

namespace {

QString withArguments(const QString& text, const QList<TrArg>& args)
{
    static const QRegularExpression placeholder(QStringLiteral("%([1-9][0-9]?)"));
    QString result;
    int end = 0;
    auto matches = placeholder.globalMatch(text);
    while (matches.hasNext()) {
        const auto match = matches.next();
        const int number = match.captured(1).toInt();
        result += text.midRef(end, match.capturedStart() - end);
        result += number <= args.size() ? args.at(number - 1) : match.captured();
        end = match.capturedEnd();
    }
    return result + text.midRef(end);
}

} // namespace

TrString::TrString(const char* sourceText)
    : m_text(sourceText)
{
}

TrString::TrString(const QString& sourceText)
    : m_text(sourceText.toUtf8())
{
}

TrString::TrString(const TrCharData& source, const QList<TrArg>& args)
    : m_context(source.context)
    , m_text(source.text)
    , m_args(args)
{
}

QString TrString::toString() const
{
    const QString text = QCoreApplication::translate(m_context.constData(), m_text.constData());
    return m_args.isEmpty() ? text : withArguments(text, m_args);
}
