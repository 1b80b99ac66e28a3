#include "cmpath.h"

#include "percent.h"
#include "tavulog.h"

#include <QHash>

#include <algorithm>
#include <ostream>

namespace {

QString decoded(const QStringRef& text)
{
    return percentDecoded(text.toUtf8());
}

/// Whether it means something in an encoded path before its parameters.
bool isMark(QChar c)
{
    return c == QLatin1Char('%') || c == QLatin1Char('?');
}

QString encodedText(QString text)
{
    if (std::none_of(text.cbegin(), text.cend(), isMark))
        return text;
    return text.replace(QLatin1Char('%'), QLatin1String("%25"))
        .replace(QLatin1Char('?'), QLatin1String("%3F"));
}

QPair<QString, QString> decodedParam(const QStringRef& param)
{
    const int equals = param.indexOf(QLatin1Char('='));
    if (equals < 0)
        return { decoded(param), QString() };
    return { decoded(param.left(equals)), decoded(param.mid(equals + 1)) };
}

template <class Params>
auto find(Params& params, const QString& name)
{
    return std::find_if(
        params.begin(), params.end(), [&](const auto& param) { return param.first == name; });
}

} // namespace

CMPath CMPath::fromEncoded(const QString& encoded)
{
    const int mark = encoded.indexOf(QLatin1Char('?'));
    CMPath path(decoded(encoded.leftRef(mark)));
    if (mark < 0)
        return path;
    QHash<QString, int> places; // Anybody may have written the text: keep the work linear.
    const auto params = encoded.midRef(mark + 1).split(QLatin1Char('&'), Qt::SkipEmptyParts);
    for (const QStringRef& text : params) {
        const auto param = decodedParam(text);
        const int place = places.value(param.first, path.m_params.size());
        if (place < path.m_params.size()) {
            path.m_params[place].second = param.second;
        } else {
            places.insert(param.first, place);
            path.m_params.append(param);
        }
    }
    return path;
}

QString CMPath::toEncoded() const
{
    QString text = encodedText(m_text);
    if (m_params.isEmpty())
        return text;
    CharBuffer encoded;
    encoded.append(text);
    char16_t separator = u'?';
    for (const auto& [name, value] : m_params) {
        encoded.append(separator);
        encoded.appendPercentEncoded(name);
        encoded.append(u'=');
        encoded.appendPercentEncoded(value);
        separator = u'&';
    }
    return encoded.text();
}

CMPath CMPath::operator+(const QString& suffix) const
{
    CMPath path(*this);
    path.m_text += suffix;
    return path;
}

CMPath CMPath::appendSubpath(const QString& subpath) const
{
    const QLatin1Char separator('/');
    const bool ends = m_text.endsWith(separator);
    const bool starts = subpath.startsWith(separator);
    if (ends && starts)
        return *this + subpath.mid(1);
    return *this + (ends || starts ? subpath : separator + subpath);
}

CMPath CMPath::addParam(const QString& name, const QString& value) const
{
    CMPath path(*this);
    const auto present = find(path.m_params, name);
    if (present != path.m_params.end())
        present->second = value;
    else
        path.m_params.append({ name, value });
    return path;
}

bool CMPath::hasParam(const QString& name) const
{
    return find(m_params, name) != m_params.end();
}

QString CMPath::param(const QString& name) const
{
    const auto present = find(m_params, name);
    return present != m_params.end() ? present->second : QString();
}

QMap<QString, QString> CMPath::params() const
{
    QMap<QString, QString> all;
    for (const auto& [name, value] : m_params)
        all.insert(name, value);
    return all;
}

bool CMPath::startsWith(const CMPath& prefix, QString* rest) const
{
    if (!m_text.startsWith(prefix.m_text))
        return false;
    const QLatin1Char separator('/');
    QString remainder = m_text.mid(prefix.m_text.size());
    const bool atBorder = prefix.m_text.isEmpty() || prefix.m_text.endsWith(separator)
        || remainder.isEmpty() || remainder.startsWith(separator);
    if (!atBorder)
        return false;
    if (rest)
        *rest = remainder.startsWith(separator) ? remainder.mid(1) : remainder;
    return true;
}

std::ostream& operator<<(std::ostream& out, const CMPath& path)
{
    return out << path.toEncoded();
}
