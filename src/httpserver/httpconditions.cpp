#include "httpconditions.h"

namespace http {

static QByteArray withoutWeakness(const QByteArray& tag)
{
    return tag.startsWith("W/") ? tag.mid(2) : tag;
}

static bool anyTagMatches(const Headers& request, const QByteArray& etag)
{
    for (const QByteArray& field : request.values("If-None-Match"))
        for (const QByteArray& item : field.split(',')) {
            const QByteArray tag = item.trimmed();
            if (tag == "*" || (!etag.isEmpty() && withoutWeakness(tag) == withoutWeakness(etag)))
                return true;
        }
    return false;
}

static bool isUnchanged(const Headers& request, const ContentInfo& info)
{
    if (request.contains("If-None-Match"))
        return anyTagMatches(request, info.etag);
    return !info.lastModified.isEmpty() && request.value("If-Modified-Since") == info.lastModified;
}

/// If-Range takes strong tags only, and dates only as they were given out.
static bool rangeIsMeant(const Headers& request, const ContentInfo& info)
{
    const QByteArray condition = request.value("If-Range");
    if (condition.isEmpty())
        return true;
    const QByteArray& validator = condition.endsWith('"') ? info.etag : info.lastModified;
    return !condition.startsWith("W/") && !validator.isEmpty() && condition == validator;
}

static std::optional<qint64> number(const QByteArray& text)
{
    if (text.isEmpty())
        return std::nullopt;
    for (const char c : text)
        if (c < '0' || c > '9')
            return std::nullopt;
    bool fits = false;
    const qint64 value = text.toLongLong(&fits);
    return fits ? value : std::numeric_limits<qint64>::max();
}

static const Selection unsatisfiable{ 416, 0, 0 };

/// The last `count` bytes.
static Selection suffix(qint64 count, qint64 size)
{
    if (count == 0 || size == 0)
        return unsatisfiable;
    const qint64 length = qMin(count, size);
    return { 206, size - length, length };
}

/// Malformed and multiple ranges are as good as none.
static std::optional<Selection> parseRange(const QByteArray& field, qint64 size)
{
    const int dash = field.indexOf('-');
    if (!field.toLower().startsWith("bytes=") || dash < 0 || field.contains(','))
        return std::nullopt;
    const QByteArray firstText = field.mid(6, dash - 6).trimmed();
    const QByteArray lastText = field.mid(dash + 1).trimmed();
    const std::optional<qint64> first = number(firstText);
    const std::optional<qint64> last = number(lastText);
    if (firstText.isEmpty() && last)
        return suffix(*last, size);
    if (!first || (!last && !lastText.isEmpty()) || (last && *last < *first))
        return std::nullopt;
    if (*first >= size)
        return unsatisfiable;
    const qint64 end = last ? qMin(*last, size - 1) : size - 1;
    return Selection{ 206, *first, end - *first + 1 };
}

Selection select(const Headers& request, const ContentInfo& info, qint64 size)
{
    if (isUnchanged(request, info))
        return { 304, 0, 0 };
    const QByteArray range = request.value("Range");
    if (info.ranges && !range.isEmpty() && rangeIsMeant(request, info))
        if (const std::optional<Selection> part = parseRange(range, size))
            return *part;
    return { 200, 0, size };
}

} // namespace http
