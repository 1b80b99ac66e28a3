#include "messages.h"

#include "links.h"

#include <QStringList>

namespace emulator::documents {

using catalogue::Track;

namespace {

const QString ask = QStringLiteral("ask");
const QString refuse = QStringLiteral("refuse");
const QString skipWhenRated = QStringLiteral("skip");

QString text(const char* ascii)
{
    return QString::fromUtf8(ascii);
}

QString chunkUrl(const QString& name)
{
    return QLatin1String("/chunks/messages/") + name;
}

bool isContext(const QString& context, const QString& name)
{
    return context.startsWith(QLatin1String("messages-") + name);
}

TavuAmazonMusicItemDescription item(const QString& label)
{
    TavuAmazonMusicItemDescription described;
    described.setItemLabel(label);
    return described;
}

} // namespace

Messages::Messages(const catalogue::Catalogue& catalogue, const Rules& rules,
    const MediaUrls& media, const Moment& moment)
    : m_catalogue(catalogue)
    , m_moment(moment)
    , m_writer(catalogue, rules, media, moment)
{
}

const Track* Messages::exampleTrack() const
{
    return m_catalogue.albums.empty() ? nullptr
                                      : &m_catalogue.trackAt(m_catalogue.albums[0].tracks[0]);
}

ErrorReport Messages::report(const QString& name) const
{
    const ErrorOption close = closeOption(text("Not now"));
    if (name == QLatin1String("plan"))
        return errorReport(text("This song is not in your plan"), text("Not in your plan"),
            text("Your plan holds selected songs only. With a larger plan you can play 100 % of "
                 "the catalogue."),
            { QVariantList{
                linkOption(text("See plans"), text("https://plans.example/compare?a=1&b=2"))
                    .__variant(),
                close.__variant() } });
    if (name == QLatin1String("device"))
        return errorReport(text("Your music is playing on another device"), QString(),
            text("Only one device can play at a time. If you go on here, it stops there."),
            { QVariantList{ postOption(text("Play here"), postUrl(text("/actions/play-here")), true)
                                .__variant(),
                postOption(text("Ask me tomorrow"), postUrl(text("/actions/tomorrow")), false)
                    .__variant(),
                close.__variant() } });
    if (name == QLatin1String("region"))
        return errorReport(text("Not available where you are"), QString(),
            text("The owners of this song do not offer it in your region."),
            { QVariantList{ closeOption(text("Close")).__variant() } });
    if (name == QLatin1String("mute"))
        return errorReport(
            text("Something went wrong"), text("Something went wrong"), QString(), {});
    if (name == refuse)
        return errorReport(text("This song was withdrawn"), text("Withdrawn"),
            text("It was taken out of the catalogue a moment ago."),
            { QVariantList{ closeOption(text("Close")).__variant() } });
    if (name == ask)
        return errorReport(text("Still listening?"), QString(),
            text("The music goes on as soon as the player tells that you are there."),
            { QVariantList{ closeOption(text("Stop")).__variant(),
                postOption(text("Go on"), postUrl(text("/selections/go-on")), true)
                    .__variant() } });
    return errorReport(text("This cannot be played now"), text("Not now"),
        text("The service is having a break here. Everything else plays."),
        { QVariantList{ linkOption(text("Read more"), text("https://help.example/")).__variant(),
            closeOption(text("Close")).__variant() } });
}

QString Messages::addUnplayable(
    DocumentBuilder& builder, const QString& name, const QString& label) const
{
    TavuAmazonMusicTrackDefinition definition;
    definition.setTitle(label);
    definition.setDuration(180000);
    definition.setError(builder.addReport(name, report(name)));
    definition.setAutoSkipOnError(false);
    TavuAmazonMusicPlayable playable;
    playable.setTrackDefinition(builder.addDefinition(name, definition));
    playable.setNaturalTrackPointer(trackPointer(chunkUrl(name), 0));
    TavuAmazonMusicItemDescription described = item(label);
    described.setPlayable(builder.addPlayable(name, playable));
    return builder.addItem(name, described);
}

QString Messages::addPlaying(
    DocumentBuilder& builder, const QString& name, const QString& label, const Track& track) const
{
    TavuAmazonMusicPlayable playable;
    playable.setTrackDefinition(builder.addDefinition(name, m_writer.definition(track)));
    playable.setNaturalTrackPointer(trackPointer(chunkUrl(name), 0));
    TavuAmazonMusicItemDescription described = item(label);
    described.setImage(m_writer.albumImage(m_catalogue.albumOf(track)));
    described.setPlayable(builder.addPlayable(name, playable));
    return builder.addItem(name, described);
}

QString Messages::addContainer(
    DocumentBuilder& builder, const QString& name, const QString& label, bool folder) const
{
    TavuAmazonMusicItemDescription described = item(label);
    described.setImage(m_writer.drawnImage(label));
    if (folder) {
        TavuAmazonMusicNavigationNodeSummary summary;
        summary.setDescription(links::messages() + name + QLatin1Char('/'));
        described.setSummary(builder.addSummary(name, summary));
    } else {
        TavuAmazonMusicPlayable playable;
        playable.setNaturalTrackPointer(trackPointer(chunkUrl(name), 0));
        described.setPlayable(builder.addPlayable(name, playable));
    }
    return builder.addItem(name, described);
}

QByteArray Messages::page() const
{
    DocumentBuilder builder;
    QStringList items{
        addUnplayable(builder, text("plan"), text("A song outside your plan")),
        addUnplayable(builder, text("device"), text("A song that asks where to play")),
        addUnplayable(builder, text("region"), text("A song that is not available")),
        addUnplayable(builder, text("mute"), text("A song with a message without buttons")),
        addContainer(builder, text("refused-station"), text("A station that is refused"), false),
        addContainer(builder, text("refused"), text("A page that is refused"), true),
        addContainer(builder, text("missing"), text("A page that is not there"), true),
        addContainer(builder, text("broken"), text("A page that fails"), true),
    };
    if (const Track* track = exampleTrack()) {
        items += addPlaying(builder, ask, text("Plays after a question"), *track);
        items += addPlaying(builder, refuse, text("Is refused when it starts"), *track);
        items += addPlaying(builder, skipWhenRated, text("Is skipped when rated"), *track);
    }
    TavuAmazonMusicNavigationNodeDescription node;
    node.setItems(items);
    return builder.toJson(builder.addNode(QStringLiteral("page"), node));
}

std::optional<Messages::Answer> Messages::folder(const QString& name) const
{
    if (name == QLatin1String("refused"))
        return Answer{ 409, errorDocument(report(name)) };
    if (name == QLatin1String("broken"))
        return Answer{ 500, QByteArray("{}") };
    return std::nullopt;
}

// The example tracks come with the rest of their album, so that something follows a skip.
std::optional<Messages::Answer> Messages::chunk(const QString& name) const
{
    const Track* example = exampleTrack();
    const bool plays = name == ask || name == refuse || name == skipWhenRated;
    if (!plays)
        return Answer{ 409, errorDocument(report(name)) };
    if (!example)
        return std::nullopt;
    DocumentBuilder builder;
    QStringList instances;
    for (const int place : m_catalogue.albumOf(*example).tracks) {
        const Track& track = m_catalogue.trackAt(place);
        const QString key = QStringLiteral("%1-%2").arg(name).arg(instances.size());
        TavuAmazonMusicTrackDefinition definition = m_writer.playableDefinition(track);
        TavuAmazonMusicTrackRating rating;
        rating.setRatingURI(links::rating(track.id) + QLatin1String("?in=messages-") + key);
        definition.setTrackRating(rating);
        instances += builder.addInstance(key,
            m_writer.instance(
                track, QLatin1String("messages-") + key, builder.addDefinition(key, definition)));
    }
    TavuAmazonMusicTrackContainerChunkDescription chunk;
    chunk.setTrackInstances(instances);
    chunk.setFirstTrackPointer(trackPointer(chunkUrl(name), 0));
    chunk.setLastTrackPointer(trackPointer(chunkUrl(name), instances.size() - 1));
    return Answer{ 200, builder.toJson(builder.addChunk(QStringLiteral("chunk"), chunk)) };
}

std::optional<ErrorReport> Messages::startRefusal(const QString& context) const
{
    for (const QString& name : { ask, refuse }) {
        if (isContext(context, name))
            return report(name);
    }
    return std::nullopt;
}

bool Messages::skipsWhenRated(const QString& context)
{
    return isContext(context, skipWhenRated);
}

} // namespace emulator::documents
