#include "cmpath.h"
#include "fuzzbytes.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text = QString::fromUtf8(bytesOf(data, size));

    const CMPath read = CMPath::fromEncoded(text);
    require(CMPath::fromEncoded(read.toEncoded()) == read, "an encoded path reads back as itself");

    const CMPath made = CMPath(QStringLiteral("/a/")).addParam(QStringLiteral("url"), text);
    require(CMPath::fromEncoded(made.toEncoded()).param(QStringLiteral("url")) == text,
        "any text comes back from a parameter");
    require((CMPath(text) + QStringLiteral("/b")).startsWith(CMPath(text)),
        "a path starts with its own beginning");
    return 0;
}
