#include "urltext.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace urltext {

namespace {

// What a character is, as bits.
using Kind = std::uint16_t;
constexpr Kind none = 0;
constexpr Kind unreserved = 1;
constexpr Kind inPath = 2; // Bare in a path.
constexpr Kind inHost = 4;
constexpr Kind digit = 8;
constexpr Kind upperHex = 16;
constexpr Kind endsScheme = 32; // Or says that there is none.
constexpr Kind endsAuthority = 64;
constexpr Kind endsPath = 128;
constexpr Kind endsQuery = 256;
constexpr Kind inQuery = 512; // Bare in a query or a fragment.

constexpr std::array<Kind, 128> characterTable()
{
    std::array<Kind, 128> table{};
    for (unsigned char c = 'a'; c <= 'z'; ++c)
        table[c] = unreserved | inPath | inHost;
    for (unsigned char c = 'A'; c <= 'Z'; ++c)
        table[c] = unreserved | inPath;
    for (unsigned char c = 'A'; c <= 'F'; ++c)
        table[c] |= upperHex;
    for (unsigned char c = '0'; c <= '9'; ++c)
        table[c] = unreserved | inPath | inHost | digit | upperHex;
    for (const char c : { '-', '.' })
        table[static_cast<unsigned char>(c)] = unreserved | inPath | inHost;
    for (const char c : { '_', '~' })
        table[static_cast<unsigned char>(c)] = unreserved | inPath;
    for (const char c : { '/', ':', '@', '!', '$', '&', '\'', '(', ')', '*', '+', ',', ';', '=' })
        table[static_cast<unsigned char>(c)] = inPath;
    table[':'] |= endsScheme;
    table['/'] |= endsScheme | endsAuthority;
    for (const char c : { '?', '#' })
        table[static_cast<unsigned char>(c)] = endsScheme | endsAuthority | endsPath;
    for (Kind& kinds : table)
        kinds |= (kinds & inPath) != 0 ? inQuery : 0;
    table['?'] |= inQuery;
    table['#'] |= endsQuery;
    return table;
}

constexpr std::array<Kind, 128> characters = characterTable();

bool is(char16_t c, Kind kind)
{
    return c < characters.size() && (characters[c] & kind) != 0;
}

int size(View text)
{
    return static_cast<int>(text.size());
}

void append(QString* text, View part)
{
    text->append(reinterpret_cast<const QChar*>(part.data()), size(part));
}

bool all(View text, Kind kind)
{
    return std::all_of(text.begin(), text.end(), [kind](char16_t c) { return is(c, kind); });
}

unsigned hexValue(char16_t c)
{
    return static_cast<unsigned>(is(c, digit) ? c - u'0' : c - u'A' + 10);
}

/// Whether the u"%" at `place` begins an encoding that must stay one, in capitals.
bool isPlainEncoding(View text, std::size_t place)
{
    if (place + 2 >= text.size() || !is(text[place + 1], upperHex)
        || !is(text[place + 2], upperHex))
        return false;
    const unsigned code = hexValue(text[place + 1]) * 16 + hexValue(text[place + 2]);
    return !is(static_cast<char16_t>(code), unreserved);
}

bool isPlainText(View text, Kind bare)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (is(text[i], bare))
            continue;
        if (text[i] != u'%' || !isPlainEncoding(text, i))
            return false;
        i += 2;
    }
    return true;
}

constexpr std::size_t longestLabel = 63;
constexpr std::size_t longestHost = 253;

bool isPlainLabel(View label)
{
    // Punycode has rules of its own.
    return !label.empty() && label.size() <= longestLabel && label.front() != u'-'
        && label.back() != u'-' && label.substr(0, 4) != u"xn--";
}

/// A name whose last label cannot make it a number, or an IPv4 address in its usual form.
bool isPlainHost(View host)
{
    if (host.size() > longestHost || !all(host, inHost))
        return false;
    int labels = 0;
    bool quad = true;
    while (true) {
        const View label = host.substr(0, host.find(u'.'));
        if (!isPlainLabel(label))
            return false;
        ++labels;
        quad = quad && all(label, digit) && (label.size() == 1 || label.front() != u'0')
            && (label.size() < 3 || (label.size() == 3 && label <= u"255"));
        if (label.size() == host.size())
            return (quad && labels == 4) || !is(label.front(), digit);
        host.remove_prefix(label.size() + 1);
    }
}

bool isPlainPort(View port)
{
    return !port.empty() && port.size() <= 5 && all(port, digit) && port.front() != u'0'
        && (port.size() < 5 || port <= u"65535");
}

bool isPlainAuthority(View authority)
{
    const std::size_t colon = authority.find(u':');
    return isPlainHost(authority.substr(0, colon))
        && (colon == View::npos || isPlainPort(authority.substr(colon + 1)));
}

bool beginsLikeScheme(View text)
{
    return (text.front() >= u'a' && text.front() <= u'z')
        || (text.front() >= u'A' && text.front() <= u'Z');
}

/// Reads a text from its front. Bare pointers: each field of each row of a page is read so.
class Reader
{
public:
    explicit Reader(View text)
        : m_at(text.data())
        , m_end(text.data() + text.size())
    {
    }

    View rest() const { return upTo(m_end); }
    bool isAt(char16_t c) const { return m_at != m_end && *m_at == c; }
    void skip(std::size_t count) { m_at += count; }

    /// Up to the first character of the kind, or all.
    View before(Kind kind) const
    {
        const char16_t* place = m_at;
        while (place != m_end && !is(*place, kind))
            ++place;
        return upTo(place);
    }

    View take(View part)
    {
        m_at += part.size();
        return part;
    }

    /// Cuts off the part up to the first character that ends it. `bare` becomes false when it has a
    /// character that does not stand bare in it.
    View takePart(Kind bareInIt, Kind end, bool* bare)
    {
        const char16_t* place = m_at;
        while (place != m_end && is(*place, bareInIt))
            ++place;
        if (place == m_end || is(*place, end))
            return take(upTo(place));
        *bare = false;
        return take(before(end));
    }

private:
    View upTo(const char16_t* place) const
    {
        return { m_at, static_cast<std::size_t>(place - m_at) };
    }

    const char16_t* m_at;
    const char16_t* m_end;
};

/// Cuts what stands before `end` off the front of `text`.
View take(View* text, std::size_t end)
{
    const View part = text->substr(0, end);
    text->remove_prefix(part.size());
    return part;
}

/// Where it is: scheme and host. `colon`: one stands in the first segment.
bool isPlainPlace(const Parts& parts, bool colon)
{
    const bool absolute = isThere(parts.scheme);
    if (absolute && parts.scheme != u"https" && parts.scheme != u"http")
        return false;
    // Neither a scheme without a host nor a colon that could end a scheme.
    if (!isThere(parts.authority))
        return !absolute && !colon;
    return isPlainAuthority(parts.authority);
}

/// What it is there.
bool isPlainRest(const Parts& parts)
{
    return isPlainText(parts.path, inPath) && isPlainText(parts.query, inQuery)
        && isPlainText(parts.fragment, inQuery);
}

/// Whether a segment may be u"." or u"..".
bool mayHaveDots(View path)
{
    const std::size_t dot = path.find(u'.');
    return dot == 0 || (dot != View::npos && path.find(u"/.", dot - 1) != View::npos);
}

/// The path without its u"." and u".." (RFC 3986, section 5.2.4).
QString withoutDots(const QString& text)
{
    View path = view(text);
    QString output; // Ends where the next segment begins.
    output.reserve(size(path));
    const int root = path.substr(0, 1) == u"/" ? 1 : 0;
    append(&output, take(&path, static_cast<std::size_t>(root)));
    while (!path.empty()) {
        const View segment = take(&path, path.find(u'/'));
        const View separator = take(&path, 1);
        if (segment == u"..") {
            const int previous = output.lastIndexOf(QLatin1Char('/'), output.size() - 2) + 1;
            output.truncate(std::max(previous, root));
        } else if (segment != u".") {
            append(&output, segment);
            append(&output, separator);
        }
    }
    return output;
}

/// The texts one behind the other.
QString joined(View first, View second, View third)
{
    QString text(size(first) + size(second) + size(third), Qt::Uninitialized);
    auto* out = reinterpret_cast<char16_t*>(text.data());
    out = std::copy(first.begin(), first.end(), out);
    out = std::copy(second.begin(), second.end(), out);
    std::copy(third.begin(), third.end(), out);
    return text;
}

std::size_t beginOf(View part, const Url& url)
{
    return static_cast<std::size_t>(part.data() - url.text.data());
}

std::size_t endOf(View part, const Url& url)
{
    return beginOf(part, url) + part.size();
}

/// How much of `base` stays before `reference` (RFC 3986, section 5.2.2).
std::size_t kept(const Url& base, const Parts& reference)
{
    if (isThere(reference.scheme))
        return 0;
    const Parts& parts = base.parts;
    if (isThere(reference.authority))
        return isThere(parts.scheme) ? endOf(parts.scheme, base) + 1 : 0;
    if (!reference.path.empty()) {
        const bool ownPath = reference.path.front() == u'/';
        return beginOf(parts.path, base) + (ownPath ? 0 : parts.path.rfind(u'/') + 1);
    }
    const bool ownQuery = isThere(reference.query) || !isThere(parts.query);
    return endOf(ownQuery ? parts.path : parts.query, base);
}

/// A path that is relative to a host alone begins at its root (RFC 3986, section 5.2.3).
bool needsRoot(const Parts& base, const Parts& reference)
{
    const bool ownPlace = isThere(reference.scheme) || isThere(reference.authority);
    return !ownPlace && isThere(base.authority) && base.path.empty() && !reference.path.empty()
        && reference.path.front() != u'/';
}

QString withoutDotsInPath(const QString& text)
{
    const Url url{ view(text), split(view(text)) };
    const QString path = withoutDots(urltext::text(url.parts.path));
    return joined(url.text.substr(0, beginOf(url.parts.path, url)), view(path),
        url.text.substr(endOf(url.parts.path, url)));
}

} // namespace

Parts split(View url, bool* plain)
{
    Parts parts;
    Reader reader(url);
    bool bare = true;
    const View mayBeScheme = reader.before(endsScheme);
    const bool colon = mayBeScheme.size() < url.size() && url[mayBeScheme.size()] == u':';
    if (colon && !mayBeScheme.empty() && beginsLikeScheme(url)) {
        parts.scheme = reader.take(mayBeScheme);
        reader.skip(1);
    }
    if (reader.rest().substr(0, 2) == u"//") {
        reader.skip(2);
        parts.authority = reader.take(reader.before(endsAuthority));
    }
    parts.path = reader.takePart(inPath, endsPath, &bare);
    if (reader.isAt(u'?')) {
        reader.skip(1);
        parts.query = reader.takePart(inQuery, endsQuery, &bare);
    }
    if (!reader.rest().empty()) {
        reader.skip(1);
        parts.fragment = reader.takePart(inQuery, none, &bare);
    }
    if (plain)
        *plain = isPlainPlace(parts, colon) && (bare || isPlainRest(parts));
    return parts;
}

QString beforeFragment(const Url& url)
{
    const View fragment = url.parts.fragment;
    return text(url.text.substr(0, isThere(fragment) ? beginOf(fragment, url) - 1 : View::npos));
}

QString resolved(const Url& base, const Url& reference)
{
    const Parts& parts = reference.parts;
    const View root = needsRoot(base.parts, parts) ? View(u"/") : View();
    QString text = joined(base.text.substr(0, kept(base, parts)), root, reference.text);
    const bool opaque = isThere(parts.scheme) && !isThere(parts.authority);
    if (opaque || parts.path.empty())
        return text;
    return mayHaveDots(parts.path) || mayHaveDots(base.parts.path) ? withoutDotsInPath(text) : text;
}

} // namespace urltext
