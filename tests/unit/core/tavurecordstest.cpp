// The value records of the host, field by field.

#include "cmerror.h"
#include "recordfields.h"
#include "tavuactionreply.h"
#include "tavumediadata.h"
#include "tavuoauth2devicecode.h"
#include "tavuoauth2serviceinfo.h"
#include "tavurowsroles.h"
#include "tavuvalue.h"

namespace {

const CMPath somePath = CMPath(QStringLiteral("/a"))
                            .addParam(QStringLiteral("url"), QStringLiteral("https://h/?a=%2F"));
const qint64 someMs = 1LL << 45;

TEST(CMError, fields)
{
    EXPECT_FIELD(CMError, name, Name, someText);
    EXPECT_FIELD(CMError, title, Title, someText);
    EXPECT_FIELD(CMError, message, Message, someText);
    EXPECT_FIELD(CMError, actionReply, ActionReply, someRecord<TavuHash>().__hash());
}

TEST(TavuRoles, fields)
{
    EXPECT_FIELD(TavuRoles, title, Title, someText);
    EXPECT_FIELD(TavuRoles, icon, Icon, someText);
    EXPECT_FIELD(TavuRoles, path, Path, somePath);
    EXPECT_FIELD(TavuRoles, type, Type, TavuRolesType::Action);
    EXPECT_FIELD(TavuRoles, audioType, AudioType, TavuRolesAudioType::Station);
    EXPECT_FIELD(TavuRoles, containerType, ContainerType, TavuRolesContainerType::Search);
    EXPECT_FIELD(TavuRoles, containerPlayable, ContainerPlayable, true);
    EXPECT_FIELD(TavuRoles, mediaData, MediaData, someRecord<TavuMediaData>());
    EXPECT_FIELD(TavuRoles, longDescription, LongDescription, someText);
    EXPECT_FIELD(TavuRoles, doNotTrack, DoNotTrack, true);
    EXPECT_FIELD(TavuRoles, disabled, Disabled, true);
}

TEST(TavuRoles, hold_a_search_row_of_their_own)
{
    TavuRoles search;
    search.setTitle(QStringLiteral("Search"));
    TavuRoles roles;
    EXPECT_TRUE(roles.search().isEmpty());
    roles.setSearch(search);
    EXPECT_EQ(roles.search(), search);
    EXPECT_TRUE(roles.__contains(TavuRoles::Search()));
}

TEST(TavuRoles, name_the_roles_of_activations)
{
    EXPECT_EQ(TavuRoles::LikeIt(), QStringLiteral("likeIt"));
    EXPECT_EQ(TavuRoles::PrePlay(), QStringLiteral("prePlay"));
    EXPECT_EQ(TavuRoles::Value(), QStringLiteral("value"));
}

TEST(TavuRowsRoles, fields)
{
    EXPECT_FIELD(TavuRowsRoles, roles, Roles, someRecord<TavuRoles>());
    EXPECT_FIELD(TavuRowsRoles, rows, Rows, (QVariantList{ QVariant(QVariantList{ 1, 2 }) }));
    EXPECT_FIELD(TavuRowsRoles, rowsCount, RowsCount, 10);
    EXPECT_FIELD(TavuRowsRoles, rowsVersion, RowsVersion, 11);
    EXPECT_FIELD(TavuRowsRoles, type, Type, QVariantList{ 0 });
}

TEST(TavuMediaData, fields)
{
    EXPECT_FIELD(TavuMediaData, metaData, MetaData, someRecord<TavuMetaData>());
    EXPECT_FIELD(TavuMediaData, resources, Resources, someRecords<TavuResource>());
}

TEST(TavuMediaData, plays_its_first_resource)
{
    EXPECT_TRUE(TavuMediaData().firstResource().isEmpty());
    TavuMediaData media;
    media.setResources(someRecords<TavuResource>());
    EXPECT_EQ(media.firstResource(), someRecord<TavuResource>());
}

TEST(TavuMetaData, fields)
{
    EXPECT_FIELD(TavuMetaData, serviceID, ServiceID, someText);
    EXPECT_FIELD(TavuMetaData, artist, Artist, someText);
    EXPECT_FIELD(TavuMetaData, album, Album, someText);
    EXPECT_FIELD(TavuMetaData, track, Track, someText);
    EXPECT_FIELD(TavuMetaData, startTime, StartTime, someMs);
    EXPECT_FIELD(TavuMetaData, allowSeekTime, AllowSeekTime, true);
    EXPECT_FIELD(TavuMetaData, likeItPath, LikeItPath, somePath);
    EXPECT_FIELD(TavuMetaData, playLogicPath, PlayLogicPath, somePath);
    EXPECT_FIELD(TavuMetaData, prePlayPath, PrePlayPath, somePath);
    EXPECT_FIELD(TavuMetaData, prePlayData, PrePlayData, someText);
    EXPECT_FIELD(TavuMetaData, prePlayTimeOffset, PrePlayTimeOffset, someMs);
}

TEST(TavuResource, fields)
{
    EXPECT_FIELD(TavuResource, uri, Uri, someText);
    EXPECT_FIELD(TavuResource, mimeType, MimeType, someText);
    EXPECT_FIELD(TavuResource, duration, Duration, someMs);
    EXPECT_FIELD(TavuResource, validUntil, ValidUntil, someMs);
    EXPECT_FIELD(TavuResource, cryptoData, CryptoData, someRecord<TavuHash>().__hash());
}

TEST(TavuActionReply, fields)
{
    EXPECT_FIELD(TavuActionReply, xclass, Xclass, QStringLiteral("TavuActionReply"));
    EXPECT_FIELD(TavuActionReply, events, Events, someRecords<TavuEvent>());
    EXPECT_FIELD(TavuActionReply, result, Result, someRecord<TavuRoles>());
}

TEST(TavuEvent, fields)
{
    EXPECT_FIELD(TavuEvent, rowsType, RowsType, TavuEventRowsType::Close);
}

TEST(TavuOAuth2ServiceInfo, fields)
{
    using Info = TavuOAuth2ServiceInfo;
    EXPECT_FIELD(Info, serviceName, ServiceName, someText);
    EXPECT_FIELD(Info, displayName, DisplayName, someText);
    EXPECT_FIELD(Info, authorizationUrl, AuthorizationUrl, someText);
    EXPECT_FIELD(Info, clientId, ClientId, someText);
    EXPECT_FIELD(Info, clientSecret, ClientSecret, someText);
    EXPECT_FIELD(Info, tokenUrl, TokenUrl, someText);
    EXPECT_FIELD(Info, scope, Scope, someText);
    EXPECT_FIELD(Info, scopeData, ScopeData, QVariant(someText));
    EXPECT_FIELD(Info, usePkce, UsePkce, true);
    EXPECT_FIELD(Info, authMethod, AuthMethod, TavuOAuth2AuthMethod::RequestBody);
    EXPECT_FIELD(Info, deviceCodeUrl, DeviceCodeUrl, someText);
    EXPECT_FIELD(Info, deviceCodeGrantType, DeviceCodeGrantType, someText);
}

TEST(TavuOAuth2DeviceCode, fields)
{
    using Code = TavuOAuth2DeviceCode;
    EXPECT_FIELD(Code, state, State, someText);
    EXPECT_FIELD(Code, userCode, UserCode, someText);
    EXPECT_FIELD(Code, verificationUri, VerificationUri, someText);
    EXPECT_FIELD(Code, verificationUriComplete, VerificationUriComplete, someText);
    EXPECT_FIELD(Code, expiresAt, ExpiresAt, someMs);
    EXPECT_FIELD(Code, message, Message, someText);
}

TEST(TavuValue, fields)
{
    EXPECT_FIELD(TavuValue, string_, String_, someText);
    EXPECT_FIELD(TavuValue, bool_, Bool_, true);
    EXPECT_FIELD(TavuValue, i32_, I32_, -5);
    EXPECT_FIELD(TavuValue, playerPlayMode, PlayerPlayMode, TavuPlayerPlayMode::ShuffleRepeatAll);
}

TEST(TavuValue, is_made_of_one_value)
{
    EXPECT_EQ(TavuValue::fromString(someText).string(), someText);
    EXPECT_TRUE(TavuValue::fromBool(true).bool_());
    EXPECT_TRUE(TavuValue::fromBool(false).__contains(TavuValue::Bool_()));
    EXPECT_EQ(TavuValue::fromI32(-7).i32(), -7);
    EXPECT_EQ(TavuValue::fromPlayerPlayMode(TavuPlayerPlayMode::RepeatOne).playerPlayMode(),
        TavuPlayerPlayMode::RepeatOne);
    EXPECT_EQ(TavuValue::fromString(someText).__hash().size(), 1);
}

TEST(TavuValue, reads_a_value_of_another_kind_as_empty)
{
    EXPECT_EQ(TavuValue::fromBool(true).string(), QString());
    EXPECT_EQ(TavuValue::fromString(someText).i32(), 0);
    EXPECT_FALSE(TavuValue().bool_());
}

TEST(TavuValue, is_read_back_from_the_hash_that_it_is_published_as)
{
    const QVariant published = TavuValue::fromString(someText).__variant();
    EXPECT_EQ(TavuValue(published.toHash()).string(), someText);
}

} // namespace
