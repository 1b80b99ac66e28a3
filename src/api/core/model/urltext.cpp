#include "urltext.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace urltext {

namespace {

// What a character is, as bits.
constexpr std::uint8_t unreserved = 1;
constexpr std::uint8_t inPath = 2; // Bare in a path; a query and a fragment take "?" as well.
constexpr std::uint8_t inHost = 4;
constexpr std::uint8_t digit = 8;
constexpr std::uint8_t upperHex = 16;
constexpr std::uint8_t endsScheme = 32; // Or says that there is none.
constexpr std::uint8_t endsAuthority = 64;
constexpr std::uint8_t endsPath = 128;

constexpr std::array<std::uint8_t, 128> characterTable()
{
    std::array<std::uint8_t, 128> table{};
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
    return table;
}

constexpr std::array<std::uint8_t, 128> characters = characterTable();

bool is(char16_t c, std::uint8_t kind)
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

bool all(View text, std::uint8_t kind)
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

bool isPlainText(View text, bool withQuestionMarks)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (is(text[i], inPath) || (withQuestionMarks && text[i] == u'?'))
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

/// Where the first character of the kind stands, or the end of `text`.
std::size_t findFirst(View text, std::uint8_t kind)
{
    const auto place =
        std::find_if(text.begin(), text.end(), [kind](char16_t c) { return is(c, kind); });
    return static_cast<std::size_t>(place - text.begin());
}

/// Cuts what stands before `end` off the front of `text`.
View take(View* text, std::size_t end)
{
    const View part = text->substr(0, end);
    text->remove_prefix(part.size());
    return part;
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

/// What stands before a path that is relative to `base` (RFC 3986, section 5.2.3).
View folder(const Parts& base)
{
    const bool bare = isThere(base.authority) && base.path.empty();
    return bare ? View(u"/") : base.path.substr(0, base.path.rfind(u'/') + 1);
}

/// Writes the parts of a URL one behind the other.
class Writer
{
public:
    explicit Writer(int longest)
        : m_url(longest, Qt::Uninitialized)
        , m_out(reinterpret_cast<char16_t*>(m_url.data()))
    {
    }

    void separator(char16_t c) { *m_out++ = c; }
    View part(View text)
    {
        const char16_t* const place = m_out;
        m_out = std::copy(text.begin(), text.end(), m_out);
        return { place, text.size() };
    }
    QString url()
    {
        m_url.truncate(static_cast<int>(m_out - reinterpret_cast<char16_t*>(m_url.data())));
        return std::move(m_url);
    }

private:
    QString m_url;
    char16_t* m_out;
};

/// As joined(), with `before` in front of the path.
QString joinedBehind(View before, Parts* parts)
{
    constexpr int separators = 5;
    Writer writer(size(parts->scheme) + size(parts->authority) + size(before) + size(parts->path)
        + size(parts->query) + size(parts->fragment) + separators);
    if (isThere(parts->scheme)) {
        parts->scheme = writer.part(parts->scheme);
        writer.separator(u':');
    }
    if (isThere(parts->authority)) {
        writer.separator(u'/');
        writer.separator(u'/');
        parts->authority = writer.part(parts->authority);
    }
    const View folder = writer.part(before);
    parts->path = { folder.data(), folder.size() + writer.part(parts->path).size() };
    if (isThere(parts->query)) {
        writer.separator(u'?');
        parts->query = writer.part(parts->query);
    }
    if (isThere(parts->fragment)) {
        writer.separator(u'#');
        parts->fragment = writer.part(parts->fragment);
    }
    return writer.url();
}

} // namespace

Parts split(View url)
{
    Parts parts;
    const std::size_t mark = findFirst(url, endsScheme);
    if (mark < url.size() && mark > 0 && url[mark] == u':' && beginsLikeScheme(url)) {
        parts.scheme = take(&url, mark);
        url.remove_prefix(1);
    }
    if (url.substr(0, 2) == u"//") {
        url.remove_prefix(2);
        parts.authority = take(&url, findFirst(url, endsAuthority));
    }
    parts.path = take(&url, findFirst(url, endsPath));
    if (!url.empty() && url.front() == u'?') {
        url.remove_prefix(1);
        parts.query = take(&url, url.find(u'#'));
    }
    if (!url.empty())
        parts.fragment = url.substr(1);
    return parts;
}

QString joined(Parts* parts)
{
    return joinedBehind(View(), parts);
}

bool isPlain(const Parts& parts)
{
    const bool absolute = isThere(parts.scheme);
    if (absolute && parts.scheme != u"https" && parts.scheme != u"http")
        return false;
    // Neither a scheme without a host nor a colon that could end a scheme.
    if (!isThere(parts.authority) && (absolute || parts.path.find(u':') < parts.path.find(u'/')))
        return false;
    return (!isThere(parts.authority) || isPlainAuthority(parts.authority))
        && isPlainPath(parts.path) && isPlainQuery(parts.query) && isPlainQuery(parts.fragment);
}

bool isPlainPath(View path)
{
    return isPlainText(path, false);
}

bool isPlainQuery(View query)
{
    return isPlainText(query, true);
}

QString resolved(const Parts& base, Parts* reference)
{
    if (isThere(reference->scheme) && !isThere(reference->authority))
        return joined(reference);
    const bool ownPlace = isThere(reference->scheme) || isThere(reference->authority);
    if (!isThere(reference->scheme))
        reference->scheme = base.scheme;
    if (!ownPlace)
        reference->authority = base.authority;
    if (!ownPlace && reference->path.empty()) {
        reference->path = base.path;
        if (!isThere(reference->query))
            reference->query = base.query;
        return joined(reference);
    }
    const bool ownPath = ownPlace || reference->path.substr(0, 1) == u"/";
    const View before = ownPath ? View() : folder(base);
    if (!mayHaveDots(before) && !mayHaveDots(reference->path))
        return joinedBehind(before, reference);
    const QString path = withoutDots(text(before) + text(reference->path));
    reference->path = view(path);
    return joined(reference);
}

} // namespace urltext
