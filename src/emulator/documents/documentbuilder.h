#pragma once

#include "tavuamazonmusic.h"

#include <QByteArray>
#include <QString>

namespace emulator::documents {

/// Collects the records of one answer. Each add gives the local reference by which other records
/// name the added one; a key that is taken is written anew.
class DocumentBuilder
{
public:
    QString addReport(const QString& key, const TavuAmazonMusicGeneralErrorReport& record);
    QString addDefinition(const QString& key, const TavuAmazonMusicTrackDefinition& record);
    QString addSummary(const QString& key, const TavuAmazonMusicNavigationNodeSummary& record);
    QString addPlayable(const QString& key, const TavuAmazonMusicPlayable& record);
    QString addInstance(const QString& key, const TavuAmazonMusicTrackInstance& record);
    QString addNode(const QString& key, const TavuAmazonMusicNavigationNodeDescription& record);
    QString addItem(const QString& key, const TavuAmazonMusicItemDescription& record);
    QString addChunk(
        const QString& key, const TavuAmazonMusicTrackContainerChunkDescription& record);

    bool hasDefinition(const QString& key) const { return m_definitions.contains(key); }

    /// The document. Collections without a record are left out.
    QByteArray toJson(const QString& result) const;

private:
    QVariantHash m_reports;
    QVariantHash m_definitions;
    QVariantHash m_summaries;
    QVariantHash m_playables;
    QVariantHash m_instances;
    QVariantHash m_nodes;
    QVariantHash m_items;
    QVariantHash m_chunks;
};

} // namespace emulator::documents
