#include "documentbuilder.h"

#include "tavujson.h"

namespace emulator::documents {

namespace {

QString add(QVariantHash& collection, const QString& key, const TavuHash& record)
{
    collection.insert(key, record.__variant());
    return QLatin1Char('#') + key;
}

} // namespace

QString DocumentBuilder::addReport(
    const QString& key, const TavuAmazonMusicGeneralErrorReport& record)
{
    return add(m_reports, key, record);
}

QString DocumentBuilder::addDefinition(
    const QString& key, const TavuAmazonMusicTrackDefinition& record)
{
    return add(m_definitions, key, record);
}

QString DocumentBuilder::addSummary(
    const QString& key, const TavuAmazonMusicNavigationNodeSummary& record)
{
    return add(m_summaries, key, record);
}

QString DocumentBuilder::addPlayable(const QString& key, const TavuAmazonMusicPlayable& record)
{
    return add(m_playables, key, record);
}

QString DocumentBuilder::addInstance(const QString& key, const TavuAmazonMusicTrackInstance& record)
{
    return add(m_instances, key, record);
}

QString DocumentBuilder::addNode(
    const QString& key, const TavuAmazonMusicNavigationNodeDescription& record)
{
    return add(m_nodes, key, record);
}

QString DocumentBuilder::addItem(const QString& key, const TavuAmazonMusicItemDescription& record)
{
    return add(m_items, key, record);
}

QString DocumentBuilder::addChunk(
    const QString& key, const TavuAmazonMusicTrackContainerChunkDescription& record)
{
    return add(m_chunks, key, record);
}

QByteArray DocumentBuilder::toJson(const QString& result) const
{
    QVariantHash document{ { TavuAmazonMusic::Result(), result } };
    const auto put = [&document](const QString& name, const QVariantHash& collection) {
        if (!collection.isEmpty())
            document.insert(name, collection);
    };
    put(TavuAmazonMusic::GeneralErrorReports(), m_reports);
    put(TavuAmazonMusic::TrackDefinitions(), m_definitions);
    put(TavuAmazonMusic::NavigationNodeSummaries(), m_summaries);
    put(TavuAmazonMusic::Playables(), m_playables);
    put(TavuAmazonMusic::TrackInstances(), m_instances);
    put(TavuAmazonMusic::NavigationNodeDescriptions(), m_nodes);
    put(TavuAmazonMusic::ItemDescriptions(), m_items);
    put(TavuAmazonMusic::TrackContainerChunkDescriptions(), m_chunks);
    return TavuJson::toJson(document);
}

} // namespace emulator::documents
