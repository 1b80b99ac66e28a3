#pragma once

#include "tavuhash.h"

// The documents of the Amazon Music service: typed views of its JSON. A reference field holds "#"
// and the key of a record in a collection of the same document, or a URL relative to the document's
// own. Beside it, "...Inst" holds the record it names and "...Url" the absolute URL; the service
// never sends these two, the parser writes them, and all later code reads only them.

class TavuAmazonMusicArtist : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicArtist)
    TAVU_FIELD(QString, name, Name)
};

class TavuAmazonMusicAlbum : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicAlbum)
    TAVU_FIELD(QString, name, Name)
};

class TavuAmazonMusicImage : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicImage)
    TAVU_FIELD(QString, uri, Uri)
};

/// One button of a message.
class TavuAmazonMusicGeneralErrorReportOption : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicGeneralErrorReportOption)
    TAVU_FIELD(QString, label, Label)
    /// "www" opens a web link, "post" posts to `uri`, anything else closes the message.
    TAVU_FIELD(QString, action, Action)
    TAVU_FIELD(QString, uri, Uri)
    TAVU_FIELD(bool, resume, Resume)
};

/// A message that the service wants shown.
class TavuAmazonMusicGeneralErrorReport : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicGeneralErrorReport)
    TAVU_FIELD(QString, brief, Brief)
    /// A shorter headline, preferred when it is there.
    TAVU_FIELD(QString, terse, Terse)
    TAVU_FIELD(QString, explanation, Explanation)
    TAVU_FIELD(TavuList<TavuAmazonMusicGeneralErrorReportOption>, options, Options)
};

class TavuAmazonMusicAudioHeader : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicAudioHeader)
    TAVU_FIELD(QString, name, Name)
    TAVU_FIELD(QString, value, Value)
};

class TavuAmazonMusicAudioHeaders : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicAudioHeaders)
    /// Header fields that the player must send with the stream request.
    TAVU_FIELD(TavuList<TavuAmazonMusicAudioHeader>, keyHeaders, KeyHeaders)
};

class TavuAmazonMusicAudio : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicAudio)
    TAVU_FIELD(QString, uri, Uri)
    /// UTC, "yyyy-MM-ddTHH:mm:ss.zzzZ".
    TAVU_FIELD(QString, expires, Expires)
    /// Present when the stream is encrypted.
    TAVU_FIELD(TavuAmazonMusicAudioHeaders, headers, Headers)
};

class TavuAmazonMusicTrackRating : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicTrackRating)
    TAVU_FIELD(QString, ratingURI, RatingURI)
};

class TavuAmazonMusicTrackDefinition : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicTrackDefinition)
    TAVU_FIELD(QString, title, Title)
    TAVU_FIELD(TavuAmazonMusicArtist, artist, Artist)
    TAVU_FIELD(TavuAmazonMusicAlbum, album, Album)
    /// Milliseconds.
    TAVU_FIELD(qint64, duration, Duration)
    TAVU_FIELD(TavuAmazonMusicImage, image, Image)
    TAVU_FIELD(TavuAmazonMusicAudio, audio, Audio)
    /// Reference into generalErrorReports; present when the track cannot be played.
    TAVU_FIELD(QString, error, Error)
    TAVU_FIELD(TavuAmazonMusicGeneralErrorReport, errorInst, ErrorInst)
    TAVU_FIELD(TavuAmazonMusicTrackRating, trackRating, TrackRating)
    TAVU_FIELD(QString, trackRatingUrl, TrackRatingUrl)
    /// The player moves on by itself when this track fails.
    TAVU_FIELD(bool, autoSkipOnError, AutoSkipOnError)
};

/// A position in a chunked track list.
class TavuAmazonMusicTrackPointer : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicTrackPointer)
    TAVU_FIELD(QString, chunk, Chunk)
    TAVU_FIELD(QString, chunkUrl, ChunkUrl)
    /// Zero-based, into the chunk's track instances.
    TAVU_FIELD(qint32, indexWithinChunk, IndexWithinChunk)
};

/// One occurrence of a track in a queue.
class TavuAmazonMusicTrackInstance : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicTrackInstance)
    TAVU_FIELD(QString, trackDefinition, TrackDefinition)
    TAVU_FIELD(TavuAmazonMusicTrackDefinition, trackDefinitionInst, TrackDefinitionInst)
    TAVU_FIELD(QString, playbackEventCollector, PlaybackEventCollector)
    TAVU_FIELD(QString, playbackEventCollectorUrl, PlaybackEventCollectorUrl)
    TAVU_FIELD(QString, selfData, SelfData)
    TAVU_FIELD(QString, selfDataUrl, SelfDataUrl)
};

/// Something that can be started: a track, an album, a station.
class TavuAmazonMusicPlayable : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicPlayable)
    TAVU_FIELD(QString, trackDefinition, TrackDefinition)
    TAVU_FIELD(TavuAmazonMusicTrackDefinition, trackDefinitionInst, TrackDefinitionInst)
    TAVU_FIELD(TavuAmazonMusicTrackPointer, naturalTrackPointer, NaturalTrackPointer)
    TAVU_FIELD(TavuAmazonMusicTrackPointer, shuffleTrackPointer, ShuffleTrackPointer)
    TAVU_FIELD(QString, selfData, SelfData)
    TAVU_FIELD(QString, selfDataUrl, SelfDataUrl)
};

/// One chunk of a play queue.
class TavuAmazonMusicTrackContainerChunkDescription : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicTrackContainerChunkDescription)
    TAVU_FIELD(QStringList, trackInstances, TrackInstances)
    TAVU_FIELD(TavuList<TavuAmazonMusicTrackInstance>, itemsInst, ItemsInst)
    TAVU_FIELD(TavuAmazonMusicTrackPointer, firstTrackPointer, FirstTrackPointer)
    TAVU_FIELD(TavuAmazonMusicTrackPointer, lastTrackPointer, LastTrackPointer)
    TAVU_FIELD(TavuAmazonMusicTrackPointer, nextTrackPointer, NextTrackPointer)
    TAVU_FIELD(TavuAmazonMusicTrackPointer, prevTrackPointer, PrevTrackPointer)
};

/// The short form of a folder, as shown inside its parent.
class TavuAmazonMusicNavigationNodeSummary : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicNavigationNodeSummary)
    /// URL of the folder's page.
    TAVU_FIELD(QString, description, Description)
};

/// One row of a folder.
class TavuAmazonMusicItemDescription : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicItemDescription)
    TAVU_FIELD(QString, itemLabel, ItemLabel)
    TAVU_FIELD(TavuAmazonMusicArtist, artist, Artist)
    TAVU_FIELD(TavuAmazonMusicImage, image, Image)
    TAVU_FIELD(QString, summary, Summary)
    TAVU_FIELD(TavuAmazonMusicNavigationNodeSummary, summaryInst, SummaryInst)
    TAVU_FIELD(QString, playable, Playable)
    TAVU_FIELD(TavuAmazonMusicPlayable, playableInst, PlayableInst)
    TAVU_FIELD(QString, playableUrl, PlayableUrl)
};

/// One browsable page of a folder.
class TavuAmazonMusicNavigationNodeDescription : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicNavigationNodeDescription)
    /// References into itemDescriptions, in display order.
    TAVU_FIELD(QStringList, items, Items)
    TAVU_FIELD(TavuList<TavuAmazonMusicItemDescription>, itemsInst, ItemsInst)
    /// Relative URL; empty on the last page.
    TAVU_FIELD(QString, nextPage, NextPage)
};

/// The answer to a rating.
class TavuAmazonMusicTrackRatingResponse : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicTrackRatingResponse)
    TAVU_FIELD(QString, message, Message)
    TAVU_FIELD(bool, shouldSkip, ShouldSkip)
};

/// A whole answer. Each collection is a hash from key to record.
class TavuAmazonMusic : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusic)
    /// Reference to the primary object, used when the request's URL has no fragment.
    TAVU_FIELD(QString, result, Result)
    TAVU_FIELD(TavuHash, generalErrorReports, GeneralErrorReports)
    TAVU_FIELD(TavuHash, trackDefinitions, TrackDefinitions)
    TAVU_FIELD(TavuHash, navigationNodeSummaries, NavigationNodeSummaries)
    TAVU_FIELD(TavuHash, playables, Playables)
    TAVU_FIELD(TavuHash, trackInstances, TrackInstances)
    TAVU_FIELD(TavuHash, navigationNodeDescriptions, NavigationNodeDescriptions)
    TAVU_FIELD(TavuHash, itemDescriptions, ItemDescriptions)
    TAVU_FIELD(TavuHash, trackContainerChunkDescriptions, TrackContainerChunkDescriptions)
};

/// An answer that refuses a playback event report.
class TavuAmazonMusicErrors : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicErrors)
    TAVU_FIELD(QString, result, Result)
    TAVU_FIELD(TavuHash, generalErrorReports, GeneralErrorReports)
};

/// An answer to a rating.
class TavuAmazonMusicRatings : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicRatings)
    TAVU_FIELD(QString, result, Result)
    TAVU_FIELD(TavuHash, trackRatingResponses, TrackRatingResponses)
};

/// The body of a report that playback started or stopped.
class TavuAmazonMusicPlaybackEventReport : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicPlaybackEventReport)
    TAVU_FIELD(QString, event, Event)
    TAVU_FIELD(QString, reason, Reason)
    TAVU_FIELD(QString, source, Source)
    TAVU_FIELD(bool, isShufflePlay, IsShufflePlay)
    TAVU_FIELD(bool, isDirectedPlay, IsDirectedPlay)
    /// Milliseconds.
    TAVU_FIELD(qint64, trackPosition, TrackPosition)
    /// Milliseconds.
    TAVU_FIELD(qint64, playbackDelay, PlaybackDelay)
    TAVU_FIELD(bool, cacheHitStatus, CacheHitStatus)
    /// Bytes per second.
    TAVU_FIELD(qint32, transferSpeedBPS, TransferSpeedBPS)
    TAVU_FIELD(qint32, rebufferCount, RebufferCount)
    /// UTC, ISO 8601.
    TAVU_FIELD(QString, wallClockTime, WallClockTime)
};

/// The body of a rating.
class TavuAmazonMusicTrackRatingRequest : public TavuHash
{
    TAVU_RECORD(TavuAmazonMusicTrackRatingRequest)
    TAVU_FIELD(QString, thumbRating, ThumbRating)
    /// Milliseconds.
    TAVU_FIELD(qint64, trackPosition, TrackPosition)
    /// UTC, ISO 8601.
    TAVU_FIELD(QString, wallClockTime, WallClockTime)
};
