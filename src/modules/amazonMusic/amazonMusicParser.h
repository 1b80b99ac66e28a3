#pragma once

#include "tavuamazonmusic.h"
#include "tavuroles.h"
#include "tavuurl.h"

#include <QByteArray>
#include <QList>
#include <QString>

/// Turns the bodies of the service's answers into documents, puts the records that they refer to in
/// place and makes their URLs absolute. Holds no state, knows no network and no clock.
///
/// `base` and `url` are the URL that the body was fetched from: relative URLs start there, and its
/// fragment names the object that is wanted. What a document lacks is logged and gives an empty
/// record; a body that is not JSON is a document without anything. Nothing here fails.
class AmazonMusicParser
{
public:
    bool isLocalReference(const QString& ref) const;
    /// The reference without its leading "#", of which only one is taken away.
    QString removeLocalReference(QString ref) const;

    TavuAmazonMusicTrackPointer resolveTrackPointer(
        TavuAmazonMusicTrackPointer pointer, const TavuUrl& base) const;
    void fillTrackDefinition(TavuAmazonMusicTrackDefinition* definition, const TavuAmazonMusic& doc,
        const TavuUrl& base) const;
    void fillItemPlayable(
        TavuAmazonMusicPlayable* playable, const TavuAmazonMusic& doc, const TavuUrl& base) const;
    void fillItemDescription(TavuAmazonMusicItemDescription* item, const TavuAmazonMusic& doc,
        const TavuUrl& base) const;
    void fillTrackInstance(TavuAmazonMusicTrackInstance* instance, const TavuAmazonMusic& doc,
        const TavuUrl& base) const;

    // How the wanted object is named differs from one kind of document to the next.
    /// By the URL's fragment as it is.
    TavuAmazonMusicPlayable parsePlayableResponse(const QByteArray& body, const TavuUrl& url) const;
    /// By the URL's fragment without a leading "#", else by the document's result.
    TavuAmazonMusicTrackInstance parseTrackInstanceResponse(
        const QByteArray& body, const TavuUrl& url) const;
    /// By the URL's fragment without a leading "#", else by the document's result. The page's
    /// itemsInst has an element, if an empty one, for each of its items.
    TavuAmazonMusicNavigationNodeDescription parseBrowseResponse(
        const QByteArray& body, const TavuUrl& url) const;
    /// By the URL's fragment as it is, else by "chunk".
    TavuAmazonMusicTrackContainerChunkDescription parseChunkResponse(
        const QByteArray& body, const TavuUrl& url) const;
    /// By `id` without a leading "#", else by the document's result.
    TavuAmazonMusicGeneralErrorReport parseGeneralErrorReport(
        const QByteArray& body, const QString& id) const;

    /// A message screen: a header row, then a row for each of the report's options.
    QList<TavuRoles> createErrorReportScreen(const TavuAmazonMusicGeneralErrorReport& report) const;
};
