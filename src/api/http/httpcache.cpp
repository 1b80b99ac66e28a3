#include "httpcache.h"

#include "cachecontrol.h"

#include <algorithm>

namespace httpclient {

namespace {

bool hasValidator(const HttpClientHeaders& headers)
{
    return headers.contains("etag") || headers.contains("last-modified");
}

bool mayStore(const HttpClientHeaders& request, const HttpClientHeaders& headers)
{
    const bool forbidden = CacheControl::of(request).noStore || CacheControl::of(headers).noStore;
    const bool variesByAll = members(combined(headers, "vary")).contains("*");
    return !forbidden && !variesByAll && (freshMs(headers) > 0 || hasValidator(headers));
}

bool sameField(const HttpClientHeaders& a, const HttpClientHeaders& b, const QByteArray& name)
{
    return a.contains(name) == b.contains(name) && combined(a, name) == combined(b, name);
}

/// Fields that describe this one transfer and say nothing of the kept body.
bool belongsToTransfer(const QByteArray& name)
{
    const QByteArray lower = name.toLower();
    return lower == "content-length" || lower == "content-encoding" || lower == "transfer-encoding"
        || lower == "connection";
}

} // namespace

HttpCache::HttpCache(Clock clock)
    : m_clock(std::move(clock))
{
}

qint64 HttpCache::Entry::size() const
{
    qint64 bytes = url.size() + data.size();
    for (const HttpClientHeaders* fields : { &request, &headers })
        for (const HttpClientHeaders::Field& field : fields->fields())
            bytes += field.first.size() + field.second.size();
    return bytes;
}

bool HttpCache::Entry::answers(
    const QByteArray& otherUrl, const HttpClientHeaders& otherRequest) const
{
    if (url != otherUrl || !sameField(request, otherRequest, "authorization"))
        return false;
    const QList<QByteArray> names = members(combined(headers, "vary"));
    return std::all_of(names.begin(), names.end(),
        [&](const QByteArray& name) { return sameField(request, otherRequest, name); });
}

void HttpCache::setCapacity(qint64 bytes)
{
    m_capacity = bytes;
    makeRoom();
}

void HttpCache::clear()
{
    m_entries.clear();
    m_size = 0;
    ++m_generation;
}

std::optional<HttpCache::Answer> HttpCache::find(
    const QByteArray& url, const HttpClientHeaders& request)
{
    const auto entry = match(url, request);
    if (entry == m_entries.end())
        return std::nullopt;
    m_entries.splice(m_entries.begin(), m_entries, entry);
    return answer(*entry);
}

void HttpCache::store(const QByteArray& url, const HttpClientHeaders& request,
    const HttpClientHeaders& headers, const QByteArray& data)
{
    const auto present = match(url, request);
    if (present != m_entries.end())
        remove(present);
    if (m_capacity == 0 || !mayStore(request, headers))
        return;
    Entry entry{ url, request, headers, data, freshUntil(headers) };
    if (entry.size() > m_capacity)
        return;
    m_size += entry.size();
    m_entries.push_front(std::move(entry));
    makeRoom();
}

void HttpCache::invalidate(const QByteArray& url)
{
    for (auto entry = m_entries.begin(); entry != m_entries.end();) {
        const auto next = std::next(entry);
        if (entry->url == url)
            remove(entry);
        entry = next;
    }
}

HttpCache::Entries::iterator HttpCache::match(
    const QByteArray& url, const HttpClientHeaders& request)
{
    return std::find_if(m_entries.begin(), m_entries.end(),
        [&](const Entry& entry) { return entry.answers(url, request); });
}

void HttpCache::remove(Entries::iterator entry)
{
    m_size -= entry->size();
    m_entries.erase(entry);
}

void HttpCache::makeRoom()
{
    while (m_size > m_capacity)
        remove(std::prev(m_entries.end()));
}

qint64 HttpCache::freshUntil(const HttpClientHeaders& headers) const
{
    return m_clock() + freshMs(headers);
}

HttpCache::Answer HttpCache::answer(const Entry& entry) const
{
    return { entry.headers, entry.data, m_clock() < entry.freshUntil };
}

HttpClientHeaders refreshed(HttpClientHeaders kept, const HttpClientHeaders& headers)
{
    // All old values go before any new one comes: a field may have several.
    for (const HttpClientHeaders::Field& field : headers.fields())
        if (!belongsToTransfer(field.first))
            kept.remove(field.first);
    for (const HttpClientHeaders::Field& field : headers.fields())
        if (!belongsToTransfer(field.first))
            kept.append(field.first, field.second);
    return kept;
}

HttpClientHeaders checkFields(const HttpClientHeaders& headers)
{
    HttpClientHeaders fields;
    if (headers.contains("etag"))
        fields.insert("if-none-match", headers.value("etag"));
    if (headers.contains("last-modified"))
        fields.insert("if-modified-since", headers.value("last-modified"));
    return fields;
}

} // namespace httpclient
