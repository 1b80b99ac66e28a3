#include "amazonMusicParser.h"

#include "amazonMusicLog.h"
#include "tavuenums.h"
#include "tavujson.h"
#include "tavupaths.h"

#include <utility>

namespace {

void warnOfMissing(const QString& key, const QString& hashName)
{
    AMAZON_MUSIC_ENTER();
    LOG4CPLUS_WARN(logger(), "Hash \"" << hashName << "\" doesn't contain key \"" << key << '"');
}

QVariant get(const TavuHash& hash, const QString& key, const QString& hashName)
{
    AMAZON_MUSIC_ENTER();
    if (const QVariant* value = hash.__find(key))
        return *value;
    warnOfMissing(key, hashName);
    return QVariant();
}

template <class Record>
Record record(const TavuHash& hash, const QString& key, const QString& hashName)
{
    AMAZON_MUSIC_ENTER();
    return Record(get(hash, key, hashName).toHash());
}

TavuAmazonMusic document(const QByteArray& body)
{
    AMAZON_MUSIC_ENTER();
    return TavuAmazonMusic(TavuHash(TavuJson::parse(body).toHash()));
}

/// Whether it refers to an object of the same document.
bool isLocal(const QString& reference)
{
    AMAZON_MUSIC_ENTER();
    return reference.startsWith(QLatin1Char('#'));
}

QString keyOf(QString reference)
{
    AMAZON_MUSIC_ENTER();
    if (isLocal(reference))
        reference.remove(0, 1);
    return reference;
}

/// The key that `reference` names, or the one of the document's primary object.
QString keyOrResult(const QString& reference, const TavuAmazonMusic& doc)
{
    AMAZON_MUSIC_ENTER();
    const QString key = keyOf(reference);
    return key.isEmpty() ? keyOf(doc.result()) : key;
}

void resolve(TavuAmazonMusicTrackPointer* pointer, const TavuUrl& base)
{
    AMAZON_MUSIC_ENTER();
    const QString chunk = pointer->chunk();
    if (!chunk.isEmpty())
        pointer->setChunkUrl(base.resolvedText(chunk));
}

/// Resolves the track pointer that stands in a field of a record.
void resolvePointer(TavuHash* record, const QString& key, const TavuUrl& base)
{
    AMAZON_MUSIC_ENTER();
    record->__edit<TavuAmazonMusicTrackPointer>(
        key, [&](TavuAmazonMusicTrackPointer* pointer) { resolve(pointer, base); });
}

/// Completes the records of one document. A record is taken out of its collection, completed and
/// put back, so that its fields need not be copied: a page of a service has thousands of them.
class Completion
{
public:
    Completion(TavuAmazonMusic doc, TavuUrl base)
        : m_base(std::move(base))
        , m_items(taken(&doc, TavuAmazonMusic::ItemDescriptions()))
        , m_playables(taken(&doc, TavuAmazonMusic::Playables()))
        , m_instances(taken(&doc, TavuAmazonMusic::TrackInstances()))
        , m_definitions(taken(&doc, TavuAmazonMusic::TrackDefinitions()))
        , m_doc(std::move(doc))
    {
        AMAZON_MUSIC_ENTER();
    }

    void complete(TavuAmazonMusicTrackDefinition* definition);
    void complete(TavuAmazonMusicPlayable* playable);
    void complete(TavuAmazonMusicItemDescription* item);
    void complete(TavuAmazonMusicTrackInstance* instance);

    // The completed record of the key; an empty one, completed too, when there is none.
    TavuAmazonMusicTrackDefinition definition(const QString& key);
    TavuAmazonMusicPlayable playable(const QString& key);
    TavuAmazonMusicItemDescription item(const QString& key);
    TavuAmazonMusicTrackInstance instance(const QString& key);

    /// The key in a reference to an object of the same document; null when it is none. It stays
    /// until the next one is asked for.
    const QString* localKey(const QString& reference);
    /// That key, or the reference itself. As localKey().
    const QString& keyOf(const QString& reference);

private:
    static QVariantHash taken(TavuHash* record, const QString& key);
    template <class Record>
    Record completed(QVariantHash* collection, const QString& key, const QString& hashName);

    TavuUrl m_base;
    QVariantHash m_items;
    QVariantHash m_playables;
    QVariantHash m_instances;
    QVariantHash m_definitions;
    TavuAmazonMusic m_doc; // Without these four.
    QString m_key; // One for all references: to allocate each costs as much as to look it up.
};

QVariantHash Completion::taken(TavuHash* record, const QString& key)
{
    AMAZON_MUSIC_ENTER();
    QVariantHash field = record->__value(key).toHash();
    record->__remove(key);
    return field;
}

template <class Record>
Record Completion::completed(QVariantHash* collection, const QString& key, const QString& hashName)
{
    AMAZON_MUSIC_ENTER();
    const auto place = collection->find(key);
    if (place == collection->end()) {
        warnOfMissing(key, hashName);
        Record none;
        complete(&none);
        return none;
    }
    Record completed;
    TavuHash::__editField<Record>(&*place, [&](Record* record) {
        complete(record);
        completed = *record;
    });
    return completed;
}

const QString* Completion::localKey(const QString& reference)
{
    AMAZON_MUSIC_ENTER();
    if (!isLocal(reference))
        return nullptr;
    m_key.resize(0);
    m_key.append(reference.constData() + 1, reference.size() - 1);
    return &m_key;
}

const QString& Completion::keyOf(const QString& reference)
{
    AMAZON_MUSIC_ENTER();
    const QString* key = localKey(reference);
    return key ? *key : reference;
}

TavuAmazonMusicTrackDefinition Completion::definition(const QString& key)
{
    AMAZON_MUSIC_ENTER();
    return completed<TavuAmazonMusicTrackDefinition>(
        &m_definitions, key, QStringLiteral("trackDefinitions"));
}

TavuAmazonMusicPlayable Completion::playable(const QString& key)
{
    AMAZON_MUSIC_ENTER();
    return completed<TavuAmazonMusicPlayable>(&m_playables, key, QStringLiteral("playables"));
}

TavuAmazonMusicItemDescription Completion::item(const QString& key)
{
    AMAZON_MUSIC_ENTER();
    return completed<TavuAmazonMusicItemDescription>(
        &m_items, key, QStringLiteral("itemDescriptions"));
}

TavuAmazonMusicTrackInstance Completion::instance(const QString& key)
{
    AMAZON_MUSIC_ENTER();
    return completed<TavuAmazonMusicTrackInstance>(
        &m_instances, key, QStringLiteral("trackInstances"));
}

void Completion::complete(TavuAmazonMusicTrackDefinition* definition)
{
    AMAZON_MUSIC_ENTER();
    const QString ratingUri = definition->trackRating().ratingURI();
    if (!ratingUri.isEmpty())
        definition->setTrackRatingUrl(m_base.resolvedText(ratingUri));
    if (const QString* key = localKey(definition->error()))
        definition->setErrorInst(record<TavuAmazonMusicGeneralErrorReport>(
            m_doc.generalErrorReports(), *key, QStringLiteral("generalErrorReports")));
}

void Completion::complete(TavuAmazonMusicPlayable* playable)
{
    AMAZON_MUSIC_ENTER();
    if (const QString* key = localKey(playable->trackDefinition()))
        playable->setTrackDefinitionInst(definition(*key));
    resolvePointer(playable, TavuAmazonMusicPlayable::NaturalTrackPointer(), m_base);
    resolvePointer(playable, TavuAmazonMusicPlayable::ShuffleTrackPointer(), m_base);
    if (playable->__contains(TavuAmazonMusicPlayable::SelfData()))
        playable->setSelfDataUrl(m_base.resolvedText(playable->selfData()));
}

void Completion::complete(TavuAmazonMusicItemDescription* item)
{
    AMAZON_MUSIC_ENTER();
    if (const QString* key = localKey(item->summary()))
        item->setSummaryInst(record<TavuAmazonMusicNavigationNodeSummary>(
            m_doc.navigationNodeSummaries(), *key, QStringLiteral("navigationNodeSummaries")));
    const QString reference = item->playable();
    if (const QString* key = localKey(reference))
        item->setPlayableInst(playable(*key));
    if (!reference.isEmpty())
        item->setPlayableUrl(m_base.resolvedText(reference));
}

void Completion::complete(TavuAmazonMusicTrackInstance* instance)
{
    AMAZON_MUSIC_ENTER();
    const QString collector = instance->playbackEventCollector();
    if (!collector.isEmpty())
        instance->setPlaybackEventCollectorUrl(m_base.resolvedText(collector));
    if (instance->__contains(TavuAmazonMusicTrackInstance::SelfData()))
        instance->setSelfDataUrl(m_base.resolvedText(instance->selfData()));
    instance->setTrackDefinitionInst(definition(keyOf(instance->trackDefinition())));
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
    return isLocal(ref);
}

QString AmazonMusicParser::removeLocalReference(QString ref) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    return keyOf(std::move(ref));
}

TavuAmazonMusicTrackPointer AmazonMusicParser::resolveTrackPointer(
    TavuAmazonMusicTrackPointer pointer, const TavuUrl& base) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    resolve(&pointer, base);
    return pointer;
}

void AmazonMusicParser::fillTrackDefinition(TavuAmazonMusicTrackDefinition* definition,
    const TavuAmazonMusic& doc, const TavuUrl& base) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    Completion(doc, base).complete(definition);
}

void AmazonMusicParser::fillItemPlayable(
    TavuAmazonMusicPlayable* playable, const TavuAmazonMusic& doc, const TavuUrl& base) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    Completion(doc, base).complete(playable);
}

void AmazonMusicParser::fillItemDescription(
    TavuAmazonMusicItemDescription* item, const TavuAmazonMusic& doc, const TavuUrl& base) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    Completion(doc, base).complete(item);
}

void AmazonMusicParser::fillTrackInstance(
    TavuAmazonMusicTrackInstance* instance, const TavuAmazonMusic& doc, const TavuUrl& base) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    Completion(doc, base).complete(instance);
}

TavuAmazonMusicPlayable AmazonMusicParser::parsePlayableResponse(
    const QByteArray& body, const TavuUrl& url) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    return Completion(document(body), url).playable(url.fragment());
}

TavuAmazonMusicTrackInstance AmazonMusicParser::parseTrackInstanceResponse(
    const QByteArray& body, const TavuUrl& url) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    TavuAmazonMusic doc = document(body);
    const QString key = keyOrResult(url.fragment(), doc);
    return Completion(std::move(doc), url).instance(key);
}

TavuAmazonMusicNavigationNodeDescription AmazonMusicParser::parseBrowseResponse(
    const QByteArray& body, const TavuUrl& url) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    TavuAmazonMusic doc = document(body);
    const QString key = keyOrResult(url.fragment(), doc);
    auto page = record<TavuAmazonMusicNavigationNodeDescription>(
        doc.navigationNodeDescriptions(), key, QStringLiteral("navigationNodeDescriptions"));
    Completion completion(std::move(doc), url);
    TavuList<TavuAmazonMusicItemDescription> items;
    const QStringList entries = page.items();
    items.reserve(entries.size());
    for (const QString& entry : entries)
        items.append(completion.item(completion.keyOf(entry)));
    page.setItemsInst(items);
    return page;
}

TavuAmazonMusicTrackContainerChunkDescription AmazonMusicParser::parseChunkResponse(
    const QByteArray& body, const TavuUrl& url) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    TavuAmazonMusic doc = document(body);
    const QString fragment = url.fragment();
    auto chunk =
        record<TavuAmazonMusicTrackContainerChunkDescription>(doc.trackContainerChunkDescriptions(),
            fragment.isEmpty() ? QStringLiteral("chunk") : fragment,
            QStringLiteral("trackContainerChunkDescriptions"));
    Completion completion(std::move(doc), url);
    TavuList<TavuAmazonMusicTrackInstance> items;
    const QStringList entries = chunk.trackInstances();
    items.reserve(entries.size());
    for (const QString& entry : entries)
        items.append(completion.instance(completion.keyOf(entry)));
    resolvePointer(&chunk, TavuAmazonMusicTrackContainerChunkDescription::FirstTrackPointer(), url);
    resolvePointer(&chunk, TavuAmazonMusicTrackContainerChunkDescription::LastTrackPointer(), url);
    resolvePointer(&chunk, TavuAmazonMusicTrackContainerChunkDescription::NextTrackPointer(), url);
    resolvePointer(&chunk, TavuAmazonMusicTrackContainerChunkDescription::PrevTrackPointer(), url);
    chunk.setItemsInst(items);
    return chunk;
}

TavuAmazonMusicGeneralErrorReport AmazonMusicParser::parseGeneralErrorReport(
    const QByteArray& body, const QString& id) const
{
    AMAZON_MUSIC_ENTER_SCOPE();
    const TavuAmazonMusic doc = document(body);
    const QString key = keyOrResult(id, doc);
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
