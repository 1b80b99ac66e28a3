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
    return { reinterpret_cast<const char16_t*>(text.constData()),
        static_cast<std::size_t>(text.size()) };
}

/// Null when the part is absent.
inline QString text(View part)
{
    return QString(reinterpret_cast<const QChar*>(part.data()), static_cast<int>(part.size()));
}

/// The parts of any text (RFC 3986, appendix B). They point into it. `plain`, unless null, tells
/// whether it is a well-formed URL or relative reference, spelled in the one way that this host
/// writes it, so that nothing of it needs to be mended. It says no rather than to look closely.
Parts split(View url, bool* plain = nullptr);

/// A text and its parts.
struct Url
{
    View text;
    Parts parts;
};

QString beforeFragment(const Url& url);
/// `reference` seen from `base` (RFC 3986, section 5.2).
QString resolved(const Url& base, const Url& reference);

} // namespace urltext
