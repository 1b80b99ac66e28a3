#include "rowanswer.h"

namespace player {

const QStringList& rowRoles()
{
    static const QStringList roles{
        TavuRoles::Title(),
        TavuRoles::Icon(),
        TavuRoles::Path(),
        TavuRoles::Type(),
        TavuRoles::AudioType(),
        TavuRoles::ContainerType(),
        TavuRoles::MediaData(),
        TavuRoles::ContainerPlayable(),
        TavuRoles::DoNotTrack(),
        TavuRoles::LongDescription(),
        TavuRoles::Disabled(),
    };
    return roles;
}

namespace {

QVariantHash rowOf(const QVariantList& values)
{
    QVariantHash row;
    for (int index = 0; index < values.size(); ++index) {
        if (values.at(index).isValid())
            row.insert(rowRoles().at(index), values.at(index));
    }
    return row;
}

} // namespace

QVariantHash rowAnswer(const TavuRowsRoles& answer, int from)
{
    QVariantList rows;
    const QVariantList values = answer.rows();
    for (const QVariant& value : values) {
        const QVariantList row = value.toList();
        if (row.size() == rowRoles().size())
            rows.append(rowOf(row));
    }
    return {
        { QStringLiteral("parent"), answer.roles().__variant() },
        { QStringLiteral("rows"), rows },
        { QStringLiteral("from"), from },
        { QStringLiteral("count"), qMax(answer.rowsCount(), 0) },
        { QStringLiteral("version"), answer.rowsVersion() },
    };
}

TavuRoles mediaRolesFor(const TavuRoles& row)
{
    TavuRoles roles(row);
    const bool hasPlayable = !row.mediaData().firstResource().uri().isEmpty();
    const bool hasOwnTrack = row.path().hasParam(QStringLiteral("trackUrl"));
    if (hasPlayable && !hasOwnTrack)
        roles.setAudioType(TavuRolesAudioType::Station);
    return roles;
}

} // namespace player
