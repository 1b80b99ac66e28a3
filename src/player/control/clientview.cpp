#include "clientview.h"

#include "tavuactionreply.h"
#include "tavuroles.h"

namespace control {

ClientView::ClientView(RowMemory& rows, ArtworkStore& artwork)
    : m_rows(rows)
    , m_artwork(artwork)
{
}

namespace {

QVariant shownResource(const QVariant& resource)
{
    QVariantHash shown = tavuvariant::toHash(resource);
    shown.remove(QStringLiteral("cryptoData"));
    return shown;
}

QVariantHash shownMediaData(const TavuRoles& roles)
{
    QVariantHash shown = roles.mediaData().__hash();
    QVariantList resources;
    for (const QVariant& resource : roles.mediaData().resources())
        resources += shownResource(resource);
    shown.insert(TavuMediaData::Resources(), resources);
    return shown;
}

/// Only what a browser may safely open.
QString linkOf(const TavuRoles& roles)
{
    const QString uri = roles.mediaData().firstResource().uri();
    const bool onTheWeb = uri.startsWith(QLatin1String("https://"), Qt::CaseInsensitive)
        || uri.startsWith(QLatin1String("http://"), Qt::CaseInsensitive);
    return roles.type() == TavuRolesType::Link && onTheWeb ? uri : QString();
}

/// Copies a role as the type that it ought to have; one that was never set stays away.
template <class Value>
void copy(const TavuRoles& roles, QVariantHash& shown, const QString& key, const Value& value)
{
    if (roles.__contains(key))
        shown.insert(key, value);
}

} // namespace

QVariantHash ClientView::row(const QVariantHash& row) const
{
    const TavuRoles roles(row);
    QVariantHash shown{
        { TavuRoles::Title(), roles.title() },
        { TavuRoles::Icon(), m_artwork.addressOf(roles.icon()) },
        { TavuRoles::Path(), roles.path().toEncoded() },
        { TavuRoles::Type(), static_cast<int>(roles.type()) },
        { QStringLiteral("ref"), m_rows.remember(row) },
        { QStringLiteral("playable"),
            roles.type() == TavuRolesType::Playable || roles.containerPlayable() },
        { QStringLiteral("openable"), roles.type() == TavuRolesType::Folder },
        { QStringLiteral("likeable"), !roles.mediaData().metaData().likeItPath().isEmpty() },
    };
    copy(roles, shown, TavuRoles::AudioType(), static_cast<int>(roles.audioType()));
    copy(roles, shown, TavuRoles::ContainerType(), static_cast<int>(roles.containerType()));
    copy(roles, shown, TavuRoles::ContainerPlayable(), roles.containerPlayable());
    copy(roles, shown, TavuRoles::LongDescription(), roles.longDescription());
    copy(roles, shown, TavuRoles::DoNotTrack(), roles.doNotTrack());
    copy(roles, shown, TavuRoles::Disabled(), roles.disabled());
    copy(roles, shown, TavuRoles::MediaData(), shownMediaData(roles));
    if (roles.__contains(TavuRoles::Search()))
        shown.insert(TavuRoles::Search(), this->row(roles.search().__hash()));
    const QString link = linkOf(roles);
    if (!link.isEmpty())
        shown.insert(QStringLiteral("link"), link);
    return shown;
}

QVariantList ClientView::rows(const QVariantList& rows) const
{
    QVariantList shown;
    shown.reserve(rows.size());
    for (const QVariant& each : rows)
        shown += row(tavuvariant::toHash(each));
    return shown;
}

QVariantHash ClientView::page(const QVariantHash& page) const
{
    QVariantHash shown = page;
    shown.insert(
        QStringLiteral("parent"), row(tavuvariant::toHash(page.value(QStringLiteral("parent")))));
    shown.insert(
        QStringLiteral("rows"), rows(tavuvariant::toList(page.value(QStringLiteral("rows")))));
    return shown;
}

QVariantHash ClientView::actionReply(const QVariant& value) const
{
    if (!value.isValid() || value == QVariant(QVariantHash()))
        return {};
    const TavuActionReply reply(tavuvariant::toHash(value));
    if (!reply.__contains(TavuActionReply::Result())
        && !reply.__contains(TavuActionReply::Events()))
        return { { QStringLiteral("value"), value } };
    QVariantHash shown;
    if (reply.__contains(TavuActionReply::Result()))
        shown.insert(QStringLiteral("result"), row(reply.result().__hash()));
    const TavuList<TavuEvent> events = reply.events();
    for (int i = 0; i < events.size(); ++i) {
        if (events.record(i).rowsType() == TavuEventRowsType::Close)
            shown.insert(QStringLiteral("close"), true);
    }
    return shown;
}

QVariantHash ClientView::player(const QVariantHash& player) const
{
    const QString artwork = QStringLiteral("artwork");
    const QString address = m_artwork.addressOf(tavuvariant::toText(player.value(artwork)));
    QVariantHash shown = player;
    shown.insert(artwork, address.startsWith(QLatin1Char('/')) ? address : QString());
    return shown;
}

QVariant ClientView::rowOrNull(const QVariant& row) const
{
    const QVariantHash roles = tavuvariant::toHash(row);
    return roles.isEmpty() ? QVariant() : QVariant(this->row(roles));
}

QVariantHash ClientView::queue(const QVariantHash& queue) const
{
    const QString played = QStringLiteral("played");
    QVariantHash shown = queue;
    for (const auto& key :
        { QStringLiteral("from"), QStringLiteral("current"), QStringLiteral("next") })
        shown.insert(key, rowOrNull(queue.value(key)));
    QVariantList entries;
    for (const QVariant& entry : tavuvariant::toList(queue.value(played))) {
        QVariantHash shownEntry = tavuvariant::toHash(entry);
        const QString row = QStringLiteral("row");
        shownEntry.insert(row, this->row(tavuvariant::toHash(shownEntry.value(row))));
        entries += shownEntry;
    }
    shown.insert(played, entries);
    return shown;
}

QVariantHash ClientView::message(const QVariantHash& message) const
{
    const QString key = QStringLiteral("rows");
    QVariantHash shown = message;
    if (message.contains(key))
        shown.insert(key, rows(tavuvariant::toList(message.value(key))));
    return shown;
}

} // namespace control
