#include "amazonMusicBrowser.h"
#include "amazonMusicParser.h"
#include "fuzzbytes.h"

#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>

namespace {

/// Off: the warnings about missing keys are the point of the input, not news.
struct QuietLog
{
    QuietLog() { log4cplus::Logger::getRoot().setLogLevel(log4cplus::OFF_LOG_LEVEL); }
    log4cplus::Initializer initializer;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QuietLog quiet;
    const QByteArray body = bytesOf(data, size);
    const TavuUrl url(QStringLiteral("https://music.example/page?x=1"));
    const AmazonMusicParser parser;
    const AmazonMusicBrowser browser(nullptr, nullptr);

    const auto page = parser.parseBrowseResponse(body, url);
    const auto items = page.itemsInst();
    require(items.size() == page.items().size(), "each item of a page has an element");
    for (int index = 0; index < items.size(); ++index)
        browser.createRow(items.record(index), url);
    browser.createSeeMoreRow(page, url);

    const auto chunk = parser.parseChunkResponse(body, url);
    require(chunk.itemsInst().size() == chunk.trackInstances().size(),
        "each track of a chunk has an element");
    parser.parsePlayableResponse(body, url);
    parser.parseTrackInstanceResponse(body, url);
    const auto rows =
        parser.createErrorReportScreen(parser.parseGeneralErrorReport(body, QString()));
    require(!rows.isEmpty(), "a message screen has its header row");
    return 0;
}
