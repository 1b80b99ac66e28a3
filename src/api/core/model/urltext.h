#pragma once

#include <QString>

#include <string_view>

/// URLs as text (RFC 3986): taken apart, put together, resolved, without reading what the parts
/// mean. What is absent has no data; what is there may be empty.
namespace urltext {

using View = std::u16string_view;

struct Parts
{
    View scheme;
    View authority;
    View path; // Always there.
    View query;
    View fragment;
};

inline bool isThere(View part)
{
    return part.data() != nullptr;
}

inline View view(const QString& text)
{
    return { reinterpret_cast<const char16_t*>(text.utf16()),
        static_cast<std::size_t>(text.size()) };
}

/// Null when the part is absent.
inline QString text(View part)
{
    return QString(reinterpret_cast<const QChar*>(part.data()), static_cast<int>(part.size()));
}

/// The parts of any text (RFC 3986, appendix B). They point into it.
Parts split(View url);
/// Afterwards the parts point into the result.
QString joined(Parts* parts);

/// Whether a URL or relative reference is well-formed and spelled in the one way that this host
/// writes it, so that nothing of it needs to be mended. Says no rather than to look closely.
bool isPlain(const Parts& parts);
bool isPlainPath(View path);
bool isPlainQuery(View query);

/// `reference` seen from `base` (RFC 3986, section 5.2.2). Afterwards `reference` holds the parts
/// of the result.
QString resolved(const Parts& base, Parts* reference);

} // namespace urltext
