#pragma once

#include "cmpath.h"
#include "tavuenums.h"
#include "tavuhash.h"
#include "tavumediadata.h"

/// One row, or one node as a row: what it is, how it looks, and where it leads.
class TavuRoles : public TavuHash
{
    TAVU_RECORD(TavuRoles)
    TAVU_FIELD(QString, title, Title)
    /// A URL, or "skin:" and the name of a picture that the player brings.
    TAVU_FIELD(QString, icon, Icon)
    TAVU_FIELD(CMPath, path, Path)
    TAVU_FIELD(TavuRolesType::Enum, type, Type)
    TAVU_FIELD(TavuRolesAudioType::Enum, audioType, AudioType)
    TAVU_FIELD(TavuRolesContainerType::Enum, containerType, ContainerType)
    TAVU_FIELD(bool, containerPlayable, ContainerPlayable)
    TAVU_FIELD(TavuMediaData, mediaData, MediaData)
    TAVU_FIELD(QString, longDescription, LongDescription)
    /// The row is not to be kept in histories.
    TAVU_FIELD(bool, doNotTrack, DoNotTrack)
    TAVU_FIELD(bool, disabled, Disabled)

    /// The search entry of a container: a row of its own.
    static QString Search() { return QStringLiteral("search"); }
    TavuRoles search() const { return TavuRoles(__value(Search()).toHash()); }
    void setSearch(const TavuRoles& roles) { __set(Search(), roles.__variant()); }

    // Roles that an activation carries its value under.
    static QString LikeIt() { return QStringLiteral("likeIt"); }
    static QString PrePlay() { return QStringLiteral("prePlay"); }
    static QString Value() { return QStringLiteral("value"); }
};

Q_DECLARE_METATYPE(TavuRoles)
Q_DECLARE_TYPEINFO(TavuRoles, Q_MOVABLE_TYPE);
