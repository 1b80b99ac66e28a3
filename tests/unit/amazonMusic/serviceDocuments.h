#pragma once

#include "tavuamazonmusic.h"
#include "tavujson.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariant>

/// Documents as the service sends them, written down by what a test wants of them.
namespace serviceDocuments {

struct Option
{
    QString label;
    QString action;
    QString uri;
    bool resume = false;

    TavuAmazonMusicGeneralErrorReportOption record() const
    {
        TavuAmazonMusicGeneralErrorReportOption option;
        option.setLabel(label);
        option.setAction(action);
        option.setUri(uri);
        option.setResume(resume);
        return option;
    }
};

struct ErrorReport
{
    QString brief;
    QString explanation;
    QList<Option> options;

    TavuAmazonMusicGeneralErrorReport record() const
    {
        TavuAmazonMusicGeneralErrorReport report;
        report.setBrief(brief);
        report.setExplanation(explanation);
        TavuList<TavuAmazonMusicGeneralErrorReportOption> list;
        for (const Option& option : options)
            list.append(option.record());
        report.setOptions(list);
        return report;
    }

    /// The answer that refuses a request with this report.
    QByteArray body() const
    {
        return TavuJson::toJson(QVariantHash{ { QStringLiteral("result"), QStringLiteral("#err") },
            { QStringLiteral("generalErrorReports"),
                QVariantHash{ { QStringLiteral("err"), record().__hash() } } } });
    }
};

struct Track
{
    QString id;
    QString uri = QStringLiteral("https://cdn.example/stream");
    QString expires{};
    QList<QPair<QString, QString>> keyHeaders{};
    bool rateable = false;
    bool autoSkip = false;
    QString error{}; // Brief text of its error report; empty: none.
    qint64 duration = 180000;
    bool reports = true;
    bool defined = true;

    /// "/events/<id>".
    QString collector() const { return QStringLiteral("/events/") + id; }
    QString selfData() const { return QStringLiteral("/tracks/") + id; }
    QString ratingTarget() const { return QStringLiteral("/ratings/") + id; }

    QVariantHash definition() const
    {
        TavuAmazonMusicTrackDefinition definition;
        definition.setTitle(QStringLiteral("Title ") + id);
        definition.setDuration(duration);
        definition.setAudio(audio());
        if (rateable) {
            TavuAmazonMusicTrackRating rating;
            rating.setRatingURI(ratingTarget());
            definition.setTrackRating(rating);
        }
        if (!error.isEmpty())
            definition.setError(QStringLiteral("#error-") + id);
        definition.setAutoSkipOnError(autoSkip);
        return definition.__hash();
    }

    TavuAmazonMusicAudio audio() const
    {
        TavuAmazonMusicAudio audio;
        audio.setUri(uri);
        if (!expires.isEmpty())
            audio.setExpires(expires);
        TavuList<TavuAmazonMusicAudioHeader> headers;
        for (const auto& [name, value] : keyHeaders) {
            TavuAmazonMusicAudioHeader header;
            header.setName(name);
            header.setValue(value);
            headers.append(header);
        }
        if (!headers.isEmpty()) {
            TavuAmazonMusicAudioHeaders record;
            record.setKeyHeaders(headers);
            audio.setHeaders(record);
        }
        return audio;
    }

    QVariantHash instance() const
    {
        TavuAmazonMusicTrackInstance instance;
        instance.setTrackDefinition(QStringLiteral("#def-") + id);
        if (reports)
            instance.setPlaybackEventCollector(collector());
        instance.setSelfData(selfData());
        return instance.__hash();
    }
};

/// The collections that a document about these tracks needs.
inline QVariantHash collections(const QList<Track>& tracks)
{
    QVariantHash definitions;
    QVariantHash instances;
    QVariantHash reports;
    for (const Track& track : tracks) {
        if (track.defined)
            definitions.insert(QStringLiteral("def-") + track.id, track.definition());
        instances.insert(QStringLiteral("inst-") + track.id, track.instance());
        if (!track.error.isEmpty())
            reports.insert(QStringLiteral("error-") + track.id,
                ErrorReport{ track.error, {}, {} }.record().__hash());
    }
    return { { QStringLiteral("trackDefinitions"), definitions },
        { QStringLiteral("trackInstances"), instances },
        { QStringLiteral("generalErrorReports"), reports } };
}

inline TavuAmazonMusicTrackPointer pointer(const QString& chunk, int index)
{
    TavuAmazonMusicTrackPointer pointer;
    pointer.setChunk(chunk);
    pointer.setIndexWithinChunk(index);
    return pointer;
}

/// A document of one track.
inline QByteArray trackBody(const Track& track)
{
    QVariantHash document = collections({ track });
    document.insert(QStringLiteral("result"), QStringLiteral("#inst-") + track.id);
    return TavuJson::toJson(document);
}

/// A chunk; `nextChunk` may be empty.
inline QByteArray chunkBody(
    const QList<Track>& tracks, const QString& nextChunk = {}, int nextIndex = 0)
{
    QStringList references;
    for (const Track& track : tracks)
        references.append(QStringLiteral("#inst-") + track.id);
    TavuAmazonMusicTrackContainerChunkDescription chunk;
    chunk.setTrackInstances(references);
    if (!nextChunk.isEmpty())
        chunk.setNextTrackPointer(pointer(nextChunk, nextIndex));
    QVariantHash document = collections(tracks);
    document.insert(QStringLiteral("trackContainerChunkDescriptions"),
        QVariantHash{ { QStringLiteral("chunk"), chunk.__hash() } });
    return TavuJson::toJson(document);
}

/// A playable under the key "p", which begins at `index` of `chunk`.
inline QByteArray playableBody(const QString& chunk, int index)
{
    TavuAmazonMusicPlayable playable;
    playable.setNaturalTrackPointer(pointer(chunk, index));
    return TavuJson::toJson(QVariantHash{ { QStringLiteral("playables"),
        QVariantHash{ { QStringLiteral("p"), playable.__hash() } } } });
}

inline QList<Track> tracks(int count, int from = 0)
{
    QList<Track> list;
    for (int i = 0; i < count; ++i)
        list.append(Track{ QString::number(from + i) });
    return list;
}

} // namespace serviceDocuments
