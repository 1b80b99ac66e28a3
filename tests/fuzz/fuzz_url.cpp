#include "fuzzbytes.h"
#include "tavuurl.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = bytesOf(data, size);
    const TavuUrl url = TavuUrl::fromEncoded(bytes);
    require(TavuUrl::fromEncoded(url.toEncoded()) == url || !url.isValid(),
        "an encoded URL reads back as itself");

    // What a redirect does with a location.
    const TavuUrl base(QStringLiteral("https://music.example/a/b?c=d"));
    TavuUrl target = base.resolved(url);
    require(base.resolvedText(QString::fromStdString(bytes.toStdString())) == target.toString(),
        "a text resolves as the URL that it is");
    target.setScheme(QStringLiteral("https"));
    TavuUrl rebased(QStringLiteral("https://eu.music.example/"));
    rebased.setPath(target.path());
    rebased.setQueryItems(target.queryItems());
    rebased.setFragment(target.fragment());
    require(!rebased.isValid() || rebased.host() == QLatin1String("eu.music.example"),
        "a rebased URL stays on its host");

    TavuUrl search;
    search.setPath(QStringLiteral("/search/"));
    search.addQueryItem(QStringLiteral("keywords"), QString::fromUtf8(bytes));
    require(search.queryItems().size() == 1, "any text is one query item");
    return 0;
}
