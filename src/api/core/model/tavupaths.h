#pragma once

#include "cmpath.h"
#include "tavuexport.h"

#include <QString>

// The paths of the host's settings and values, and of the nodes that the Amazon Music plug-in
// publishes. A value at one of these paths is a TavuValue.

// Nodes. Every one lies under the prefix, which ends in a separator.
TAVU_EXPORT CMPath TavuAmazonMusicPrefixPath();
TAVU_EXPORT CMPath TavuAmazonMusicBrowsePath();
TAVU_EXPORT CMPath TavuAmazonMusicSearchPath();
TAVU_EXPORT CMPath TavuAmazonMusicPlayLogicPath();
TAVU_EXPORT CMPath TavuAmazonMusicPrePlayPath();
TAVU_EXPORT CMPath TavuAmazonMusicBrowsePostActionPath();
TAVU_EXPORT CMPath TavuAmazonMusicBrowseRatingPath();
TAVU_EXPORT CMPath TavuAmazonMusicBrowseCloseActionPath();

// Settings.
/// Ends in "/".
TAVU_EXPORT CMPath TavuAmazonMusicBaseUrlPath();
TAVU_EXPORT CMPath TavuAmazonMusicAuthorizationServiceUrlPath();
TAVU_EXPORT CMPath TavuAmazonMusicTokenServiceUrlPath();
TAVU_EXPORT CMPath TavuAmazonMusicDeviceCodeUrlPath();
TAVU_EXPORT CMPath TavuAmazonMusicClientIdPath();
TAVU_EXPORT CMPath TavuAmazonMusicClientSecretPath();
TAVU_EXPORT CMPath TavuAmazonMusicScope();
/// Number of tracks.
TAVU_EXPORT CMPath TavuAmazonMusicMaxQueueSizePath();
/// What the device can play, as the service wants it told; empty when it is not to be told.
TAVU_EXPORT CMPath TavuAmazonMusicDeviceHDCapabilityPath();
/// The suffix, leading dot included, of the host names among which the service may move the base
/// URL; unset or without the dot, it never moves.
TAVU_EXPORT CMPath TavuAmazonMusicDomainSuffixPath();

/// The service's internal name.
TAVU_EXPORT QString TavuAmazonMusicName();
/// The service's id in metadata.
TAVU_EXPORT QString TavuService_AmazonMusic_Id();

// The OAuth 2 service. A service registers with a TavuOAuth2ServiceInfo invoked on the add path.
// All about it stands under the service path and its name.
TAVU_EXPORT CMPath TavuOAuth2AddServicePath();
TAVU_EXPORT CMPath TavuOAuth2ServicePath();
/// Value: the access token as string; empty when there is none.
TAVU_EXPORT QString TavuOAuth2AccessTokenSubPath();
/// Invoked to ask for a new token.
TAVU_EXPORT QString TavuOAuth2RefreshTokenSubPath();
/// Value: whether the user is signed in, as bool.
TAVU_EXPORT QString TavuOAuth2LoggedInSubPath();
/// Value: the TavuOAuth2DeviceCode of the login in progress.
TAVU_EXPORT QString TavuOAuth2DeviceCodeSubPath();
/// Invoked to start a login; one that is starting or waits for the user goes on, but the TavuValue
/// true asks for a new code in place of one that waits.
TAVU_EXPORT QString TavuOAuth2StartLoginSubPath();
/// Invoked to forget the tokens.
TAVU_EXPORT QString TavuOAuth2LogoutSubPath();

// The player.
/// Value: a TavuPlayerPlayMode.
TAVU_EXPORT CMPath TavuPlayerPlayModePath();
/// Value: whether the network is there, as bool.
TAVU_EXPORT CMPath TavuNetworkStateConnected();
/// Milliseconds into a track up to which "previous" goes to the track before.
TAVU_EXPORT qint64 TavuPreviousTrackTimeLimit();
/// Changes the limit, which is 3000 ms at first. Callable on any thread.
TAVU_EXPORT void TavuSetPreviousTrackTimeLimit(qint64 ms);
/// Key of a play command's attributes: pre-roll silently and begin when ready.
TAVU_EXPORT QString TavuStreamerAttributesStartPaused();
