#include "errorreports.h"

#include "documentbuilder.h"
#include "tavujson.h"

namespace emulator::documents {

namespace {

ErrorOption option(const QString& label, const char* action, const QString& uri)
{
    ErrorOption made;
    made.setLabel(label);
    made.setAction(QLatin1String(action));
    if (!uri.isEmpty())
        made.setUri(uri);
    return made;
}

} // namespace

ErrorReport errorReport(const QString& brief, const QString& terse, const QString& explanation,
    const TavuList<ErrorOption>& options)
{
    ErrorReport report;
    report.setBrief(brief);
    if (!terse.isEmpty())
        report.setTerse(terse);
    report.setExplanation(explanation);
    report.setOptions(options);
    return report;
}

ErrorOption linkOption(const QString& label, const QString& url)
{
    return option(label, "www", url);
}

ErrorOption postOption(const QString& label, const QString& url, bool resume)
{
    ErrorOption made = option(label, "post", url);
    made.setResume(resume);
    return made;
}

ErrorOption closeOption(const QString& label)
{
    return option(label, "close", QString());
}

QByteArray errorDocument(const ErrorReport& report)
{
    DocumentBuilder builder;
    return builder.toJson(builder.addReport(QStringLiteral("error"), report));
}

QByteArray ratingDocument(const QString& message, bool shouldSkip)
{
    TavuAmazonMusicTrackRatingResponse response;
    response.setMessage(message);
    response.setShouldSkip(shouldSkip);
    TavuAmazonMusicRatings ratings;
    ratings.setResult(QStringLiteral("#rating"));
    ratings.setTrackRatingResponses(
        QVariantHash{ { QStringLiteral("rating"), response.__variant() } });
    return TavuJson::toJson(ratings.__variant());
}

} // namespace emulator::documents
