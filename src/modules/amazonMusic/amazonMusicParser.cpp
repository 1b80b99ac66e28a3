#include "amazonMusicParser.h"

#include "amazonMusicLog.h"
#include "tavuenums.h"
#include "tavujson.h"
#include "tavupaths.h"

namespace {

QVariant get(const TavuHash& hash, const QString& key, const QString& hashName)
{
    AMAZON_MUSIC_ENTER();
    if (hash.__contains(key))
        return hash.__value(key);
    LOG4CPLUS_WARN(logger(), "Hash \"" << hashName << "\" doesn't contain key \"" << key << '"');
    return QVariant();
}

template <class Record>
Record record(const TavuHash& hash, const QString& key, const QString& hashName)
{
    AMAZON_MUSIC_ENTER();
    return Record(get(hash, key, hashName).toHash());
}

/// `text`, relative to `base`, as an absolute URL.
QString resolved(const QString& text, const TavuUrl& base)
{
    AMAZON_MUSIC_ENTER();
    return QString::fromLatin1(base.resolved(TavuUrl(text)).toEncoded());
}

TavuAmazonMusic document(const QByteArray& body)
{
    AMAZON_MUSIC_ENTER();
    return TavuAmazonMusic(TavuHash(TavuJson::parse(body).toHash()));
}

/// The key that `reference` names, or the one of the document's primary object.
QString keyOrResult(
    const AmazonMusicParser& parser, const QString& reference, const TavuAmazonMusic& doc)
{
    AMAZON_MUSIC_ENTER();
    const QString key = parser.removeLocalReference(reference);
    return key.isEmpty() ? parser.removeLocalReference(doc.result()) : key;
}

TavuRoles headerRow(const TavuAmazonMusicGeneralErrorReport& report)
{
    AMAZON_MUSIC_ENTER();
    const QString terse = report.terse();
    TavuRoles row;
    row.setTitle(terse.isEmpty() ? report.brief() : terse);
    row.setLongDescription(report.explanation());
    row.setType(TavuRolesType::Message);
    return row;
}

TavuMediaData linkTo(const QString& uri)
{
    AMAZON_MUSIC_ENTER();
    TavuResource resource;
    resource.setUri(uri);
    TavuList<TavuResource> resources;
    resources.append(resource);
    TavuMediaData mediaData;
    mediaData.setResources(resources);
    return mediaData;
}

TavuRoles optionRow(const TavuAmazonMusicGeneralErrorReportOption& option)
{
    AMAZON_MUSIC_ENTER();
    TavuRoles row;
    row.setTitle(option.label());
    if (option.action() == QLatin1String("www")) {
        row.setType(TavuRolesType::Link);
        row.setMediaData(linkTo(option.uri()));
        return row;
    }
    row.setType(TavuRolesType::Action);
    if (option.action() == QLatin1String("post"))
        row.setPath(
            TavuAmazonMusicBrowsePostActionPath().addParam(QStringLiteral("url"), option.uri()));
    else
        row.setPath(TavuAmazonMusicBrowseCloseActionPath());
    return row;
}

} // namespace

bool AmazonMusicParser::isLocalReference(const QString& ref) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    return ref.startsWith(QLatin1Char('#'));
}

QString AmazonMusicParser::removeLocalReference(QString ref) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    return isLocalReference(ref) ? ref.remove(0, 1) : ref;
}

TavuAmazonMusicTrackPointer AmazonMusicParser::resolveTrackPointer(
    TavuAmazonMusicTrackPointer pointer, const TavuUrl& base) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    const QString chunk = pointer.chunk();
    if (!chunk.isEmpty())
        pointer.setChunkUrl(resolved(chunk, base));
    return pointer;
}

void AmazonMusicParser::fillTrackDefinition(TavuAmazonMusicTrackDefinition* definition,
    const TavuAmazonMusic& doc, const TavuUrl& base) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    const QString ratingUri = definition->trackRating().ratingURI();
    if (!ratingUri.isEmpty())
        definition->setTrackRatingUrl(resolved(ratingUri, base));
    const QString error = definition->error();
    if (isLocalReference(error))
        definition->setErrorInst(
            record<TavuAmazonMusicGeneralErrorReport>(doc.generalErrorReports(),
                removeLocalReference(error), QStringLiteral("generalErrorReports")));
}

void AmazonMusicParser::fillItemPlayable(
    TavuAmazonMusicPlayable* playable, const TavuAmazonMusic& doc, const TavuUrl& base) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    const QString reference = playable->trackDefinition();
    if (isLocalReference(reference)) {
        auto definition = record<TavuAmazonMusicTrackDefinition>(doc.trackDefinitions(),
            removeLocalReference(reference), QStringLiteral("trackDefinitions"));
        fillTrackDefinition(&definition, doc, base);
        playable->setTrackDefinitionInst(definition);
    }
    playable->setNaturalTrackPointer(resolveTrackPointer(playable->naturalTrackPointer(), base));
    playable->setShuffleTrackPointer(resolveTrackPointer(playable->shuffleTrackPointer(), base));
    if (playable->__contains(TavuAmazonMusicPlayable::SelfData()))
        playable->setSelfDataUrl(resolved(playable->selfData(), base));
}

void AmazonMusicParser::fillItemDescription(
    TavuAmazonMusicItemDescription* item, const TavuAmazonMusic& doc, const TavuUrl& base) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    const QString summary = item->summary();
    if (isLocalReference(summary))
        item->setSummaryInst(
            record<TavuAmazonMusicNavigationNodeSummary>(doc.navigationNodeSummaries(),
                removeLocalReference(summary), QStringLiteral("navigationNodeSummaries")));
    const QString reference = item->playable();
    if (isLocalReference(reference)) {
        auto playable = record<TavuAmazonMusicPlayable>(
            doc.playables(), removeLocalReference(reference), QStringLiteral("playables"));
        fillItemPlayable(&playable, doc, base);
        item->setPlayableInst(playable);
    }
    if (!reference.isEmpty())
        item->setPlayableUrl(resolved(reference, base));
}

void AmazonMusicParser::fillTrackInstance(
    TavuAmazonMusicTrackInstance* instance, const TavuAmazonMusic& doc, const TavuUrl& base) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    const QString collector = instance->playbackEventCollector();
    if (!collector.isEmpty())
        instance->setPlaybackEventCollectorUrl(resolved(collector, base));
    if (instance->__contains(TavuAmazonMusicTrackInstance::SelfData()))
        instance->setSelfDataUrl(resolved(instance->selfData(), base));
    auto definition = record<TavuAmazonMusicTrackDefinition>(doc.trackDefinitions(),
        removeLocalReference(instance->trackDefinition()), QStringLiteral("trackDefinitions"));
    fillTrackDefinition(&definition, doc, base);
    instance->setTrackDefinitionInst(definition);
}

TavuAmazonMusicPlayable AmazonMusicParser::parsePlayableResponse(
    const QByteArray& body, const TavuUrl& url) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    const TavuAmazonMusic doc = document(body);
    auto playable = record<TavuAmazonMusicPlayable>(
        doc.playables(), url.fragment(), QStringLiteral("playables"));
    fillItemPlayable(&playable, doc, url);
    return playable;
}

TavuAmazonMusicTrackInstance AmazonMusicParser::parseTrackInstanceResponse(
    const QByteArray& body, const TavuUrl& url) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    const TavuAmazonMusic doc = document(body);
    const QString key = keyOrResult(*this, url.fragment(), doc);
    auto instance = record<TavuAmazonMusicTrackInstance>(
        doc.trackInstances(), key, QStringLiteral("trackInstances"));
    fillTrackInstance(&instance, doc, url);
    return instance;
}

TavuAmazonMusicNavigationNodeDescription AmazonMusicParser::parseBrowseResponse(
    const QByteArray& body, const TavuUrl& url) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    const TavuAmazonMusic doc = document(body);
    const QString key = keyOrResult(*this, url.fragment(), doc);
    auto page = record<TavuAmazonMusicNavigationNodeDescription>(
        doc.navigationNodeDescriptions(), key, QStringLiteral("navigationNodeDescriptions"));
    const QStringList entries = page.items();
    const TavuHash descriptions = doc.itemDescriptions();
    TavuList<TavuAmazonMusicItemDescription> items;
    for (const QString& entry : entries) {
        auto item = record<TavuAmazonMusicItemDescription>(
            descriptions, removeLocalReference(entry), QStringLiteral("itemDescriptions"));
        fillItemDescription(&item, doc, url);
        items.append(item);
    }
    page.setItemsInst(items);
    return page;
}

TavuAmazonMusicTrackContainerChunkDescription AmazonMusicParser::parseChunkResponse(
    const QByteArray& body, const TavuUrl& url) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    const TavuAmazonMusic doc = document(body);
    QString key = url.fragment();
    if (key.isEmpty())
        key = QStringLiteral("chunk");
    auto chunk =
        record<TavuAmazonMusicTrackContainerChunkDescription>(doc.trackContainerChunkDescriptions(),
            key, QStringLiteral("trackContainerChunkDescriptions"));
    const QStringList entries = chunk.trackInstances();
    const TavuHash instances = doc.trackInstances();
    TavuList<TavuAmazonMusicTrackInstance> items;
    for (const QString& entry : entries) {
        auto instance = record<TavuAmazonMusicTrackInstance>(
            instances, removeLocalReference(entry), QStringLiteral("trackInstances"));
        fillTrackInstance(&instance, doc, url);
        items.append(instance);
    }
    chunk.setFirstTrackPointer(resolveTrackPointer(chunk.firstTrackPointer(), url));
    chunk.setLastTrackPointer(resolveTrackPointer(chunk.lastTrackPointer(), url));
    chunk.setNextTrackPointer(resolveTrackPointer(chunk.nextTrackPointer(), url));
    chunk.setPrevTrackPointer(resolveTrackPointer(chunk.prevTrackPointer(), url));
    chunk.setItemsInst(items);
    return chunk;
}

TavuAmazonMusicGeneralErrorReport AmazonMusicParser::parseGeneralErrorReport(
    const QByteArray& body, const QString& id) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    const TavuAmazonMusic doc = document(body);
    const QString key = keyOrResult(*this, id, doc);
    return record<TavuAmazonMusicGeneralErrorReport>(
        doc.generalErrorReports(), key, QStringLiteral("generalErrorReports"));
}

QList<TavuRoles> AmazonMusicParser::createErrorReportScreen(
    const TavuAmazonMusicGeneralErrorReport& report) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    QList<TavuRoles> rows{ headerRow(report) };
    for (const QVariant& option : report.options())
        rows.append(optionRow(TavuAmazonMusicGeneralErrorReportOption(option.toHash())));
    return rows;
}
