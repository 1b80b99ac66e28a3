#include "radioworker.h"

#include "cmlistrowsnode.h"
#include "cmplugin.h"
#include "m3u.h"
#include "radioplaylogic.h"

#include <QFile>

#include <type_traits>

namespace {

struct Playlist
{
    QVector<Station> stations;
    QString problem; ///< For people; empty when there are stations.
};

Playlist readPlaylist(const QString& fileName)
{
    QFile file(fileName);
    if (fileName.isEmpty())
        return { {},
            QStringLiteral("No playlist is set. Name one as the plug-in's \"playlist\".") };
    if (!file.open(QIODevice::ReadOnly))
        return { {}, QStringLiteral("%1 cannot be read: %2.").arg(fileName, file.errorString()) };
    const QVector<Station> stations = readM3u(QString::fromUtf8(file.readAll()));
    const QString problem = stations.isEmpty()
        ? QStringLiteral("%1 lists no station with an http address.").arg(fileName)
        : QString();
    return { stations, problem };
}

} // namespace

RadioWorker::RadioWorker(const QVariantHash& settings)
    : CMNodesWorker(settings, QStringLiteral("Radio"))
{
    const Playlist playlist = readPlaylist(settings.value(QStringLiteral("playlist")).toString());
    QVector<TavuRoles> rows;
    for (const Station& station : playlist.stations)
        rows.append(rowOf(rows.size(), station.title, station.url));

    CMListRowsNode* screen = CMListRowsNode::create(nodes(), addPrefix(QStringLiteral("browse")));
    screen->setTitle(TrString(QStringLiteral("Radio")));
    screen->setContainerType(TavuRolesContainerType::List);
    for (const TavuRoles& row : rows)
        screen->rowsAppend(row);
    if (!playlist.problem.isEmpty())
        screen->rowsAppend(message(playlist.problem));

    // Belongs to the nodes.
    new RadioPlayLogic(nodes(), addPrefix(QStringLiteral("playLogic")), rows);
}

TavuRoles RadioWorker::rowOf(int number, const QString& title, const QString& url) const
{
    TavuMetaData metaData;
    metaData.setServiceID(name());
    metaData.setTrack(title);
    metaData.setPlayLogicPath(addPrefix(QStringLiteral("playLogic")));
    TavuResource resource;
    resource.setUri(url);
    TavuList<TavuResource> resources;
    resources.append(resource);
    TavuMediaData mediaData;
    mediaData.setMetaData(metaData);
    mediaData.setResources(resources);

    TavuRoles row;
    row.setTitle(title);
    row.setType(TavuRolesType::Playable);
    row.setPath(addPrefix(QStringLiteral("station"))
                    .addParam(QStringLiteral("number"), QString::number(number)));
    row.setMediaData(mediaData);
    return row;
}

TavuRoles RadioWorker::message(const QString& text) const
{
    TavuRoles row;
    row.setTitle(text);
    row.setType(TavuRolesType::Message);
    row.setPath(addPrefix(QStringLiteral("message")));
    return row;
}

extern "C" Q_DECL_EXPORT CMAbstractWorker* worker_create(void*, const QVariantHash& settings)
{
    return new RadioWorker(settings);
}
static_assert(std::is_same_v<decltype(worker_create), CMWorkerCreate>);
