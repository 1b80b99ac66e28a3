#include "musicservice.h"

#include "../catalogue/tagreader.h"
#include "../documents/chunks.h"
#include "../documents/messages.h"
#include "../documents/pages.h"
#include "../samples/cover.h"
#include "tavuamazonmusicvocabulary.h"
#include "tavujson.h"

#include <QFile>

namespace emulator {

using catalogue::Id;
using documents::Chunks;
using documents::Messages;
using documents::Pages;
using faults::Answer;

namespace {

constexpr int drawnSize = 300;
constexpr int drawnCacheBytes = 8 * 1024 * 1024;

Answer notFound()
{
    return problem(404, QStringLiteral("there is no such document"));
}

Id idOf(const Call& call)
{
    return catalogue::idFromText(call.request.parameters.value(QStringLiteral("id")));
}

int intQuery(const Call& call, const char* name)
{
    return call.request.queryValue(QLatin1String(name)).toInt();
}

// What carries addresses that expire must not be kept.
Answer privateDocument(const std::optional<QByteArray>& json)
{
    if (!json)
        return notFound();
    Answer answer = document(*json);
    answer.response.headers.append("Cache-Control", "no-store");
    return answer;
}

Answer picture(const catalogue::Picture& shown)
{
    Answer answer{ { 200, { { "Content-Type", shown.mimeType } }, shown.bytes }, QString(), {} };
    answer.response.headers.append("Cache-Control", "public, max-age=86400");
    return answer;
}

} // namespace

MusicService::MusicService(catalogue::Library& library, const documents::Rules& rules,
    const QByteArray& secret, quint64 seed)
    : m_library(library)
    , m_rules(rules)
    , m_media(secret)
    , m_seed(seed)
    , m_drawn(drawnCacheBytes)
{
}

void MusicService::addRoutes(Gateway& gateway)
{
    using Access = Gateway::Access;
    const auto add = [&](const char* method, const char* pattern, const char* kind, Access access,
                         Answer (MusicService::*member)(Call&)) {
        gateway.add(method, QLatin1String(pattern), QLatin1String(kind), access,
            [this, member](Call& call) { return (this->*member)(call); });
    };
    add("GET", "/", "browse", Access::Token, &MusicService::root);
    add("GET", "/search/", "search", Access::Token, &MusicService::search);
    add("GET", "/{section}/", "browse", Access::Token, &MusicService::section);
    add("GET", "/{section}/{id}/", "browse", Access::Token, &MusicService::folder);
    add("GET", "/playables/{folder}/{id}", "playable", Access::Token, &MusicService::playable);
    add("GET", "/chunks/{folder}/{id}", "chunk", Access::Token, &MusicService::chunk);
    add("GET", "/instances/{id}", "instance", Access::Token, &MusicService::instance);
    add("POST", "/events/{id}", "report", Access::Token, &MusicService::report);
    add("POST", "/ratings/{id}", "rating", Access::Token, &MusicService::rating);
    add("POST", "/actions/{name}", "action", Access::Token, &MusicService::accepted);
    add("POST", "/selections/{name}", "selection", Access::Token, &MusicService::accepted);
    add("GET", "/audio/{file}", "audio", Access::Open, &MusicService::audio);
    add("GET", "/artwork/albums/{id}", "artwork", Access::Open, &MusicService::albumArtwork);
    add("GET", "/artwork/drawn/{name}", "artwork", Access::Open, &MusicService::drawnArtwork);
}

void MusicService::annotate(const http::Request& request, QVariantHash& details) const
{
    const QString name = request.parameters.contains(QStringLiteral("file"))
        ? request.parameters.value(QStringLiteral("file")).section(QLatin1Char('.'), 0, 0)
        : request.parameters.value(QStringLiteral("id"));
    if (const catalogue::Track* track = m_library.catalogue()->track(catalogue::idFromText(name)))
        details.insert(QStringLiteral("track"), track->title);
}

documents::Moment MusicService::prepared(const Call& call) const
{
    documents::Moment moment = call.moment;
    moment.expiresAfterMs = m_rules.expiresAfterMs;
    if (call.isHitBy("expire")) {
        moment.expiresAfterMs = call.hit->effect.number("in", 0);
        moment.expiredStatus =
            static_cast<int>(call.hit->effect.number("status", moment.expiredStatus));
    }
    moment.keyHeadersForAll = call.isHitBy("key-headers");
    return moment;
}

// While a scan goes on, each catalogue is another one and so are its pages.
QByteArray MusicService::tagOf(const Call& call) const
{
    const auto catalogue = m_library.catalogue();
    return QStringLiteral("\"%1-%2-%3\"")
        .arg(m_seed, 0, 36)
        .arg(catalogue->revision)
        .arg(catalogue::toText(catalogue::makeId(
            QString::fromLatin1(call.request.authority), QString::fromLatin1(call.request.target))))
        .toLatin1();
}

Answer MusicService::browsePage(Call& call, const std::optional<QByteArray>& page) const
{
    if (!page)
        return notFound();
    Answer answer = document(*page);
    const QByteArray tag = tagOf(call);
    answer.response.headers.append("Cache-Control", "private, no-cache");
    answer.response.headers.append("ETag", tag);
    if (call.request.headers.value("if-none-match") == tag && !call.hit) {
        answer.response.status = 304;
        answer.response.body.clear();
    }
    return answer;
}

QString MusicService::notice() const
{
    const catalogue::ScanStatus status = m_library.status();
    if (status.phase == catalogue::ScanStatus::Phase::Reading && status.toRead > 0)
        return QStringLiteral("Reading the music folder: %1 of %2 files")
            .arg(status.read)
            .arg(status.toRead);
    if (status.phase == catalogue::ScanStatus::Phase::Done && m_library.catalogue()->tracks.empty())
        return QStringLiteral("There is no music in the folder %1").arg(m_library.root());
    return {};
}

Answer MusicService::root(Call& call)
{
    const auto catalogue = m_library.catalogue();
    const documents::Moment moment = prepared(call);
    return browsePage(call, Pages(*catalogue, m_rules, m_media, moment).root(notice()));
}

Answer MusicService::section(Call& call)
{
    const auto catalogue = m_library.catalogue();
    const documents::Moment moment = prepared(call);
    const Pages pages(*catalogue, m_rules, m_media, moment);
    const QString section = call.request.parameters.value(QStringLiteral("section"));
    const int offset = intQuery(call, "offset");
    if (section == QLatin1String("artists"))
        return browsePage(call, pages.artists(offset));
    if (section == QLatin1String("albums"))
        return browsePage(call, pages.albums(offset));
    if (section == QLatin1String("playlists"))
        return browsePage(call, pages.playlists(offset));
    if (section == QLatin1String("stations"))
        return browsePage(call, pages.stations(offset));
    if (section == QLatin1String("tracks"))
        return browsePage(call, pages.tracks(offset));
    if (section == QLatin1String("messages"))
        return browsePage(call, Messages(*catalogue, m_rules, m_media, moment).page());
    return notFound();
}

Answer MusicService::folder(Call& call)
{
    const auto catalogue = m_library.catalogue();
    const documents::Moment moment = prepared(call);
    const Pages pages(*catalogue, m_rules, m_media, moment);
    const QString section = call.request.parameters.value(QStringLiteral("section"));
    const int offset = intQuery(call, "offset");
    if (section == QLatin1String("artists"))
        return browsePage(call, pages.artist(idOf(call), offset));
    if (section == QLatin1String("albums"))
        return browsePage(call, pages.album(idOf(call), offset));
    if (section == QLatin1String("playlists"))
        return browsePage(call, pages.playlist(idOf(call), offset));
    if (section == QLatin1String("messages"))
        return messageAnswer(call);
    return notFound();
}

Answer MusicService::messageAnswer(Call& call)
{
    const auto catalogue = m_library.catalogue();
    const documents::Moment moment = prepared(call);
    const Messages messages(*catalogue, m_rules, m_media, moment);
    const QString name = call.request.parameters.value(QStringLiteral("id"));
    const bool chunk = call.request.parameters.contains(QStringLiteral("folder"));
    const auto found = chunk ? messages.chunk(name) : messages.folder(name);
    if (!found)
        return notFound();
    Answer answer = privateDocument(found->document);
    answer.response.status = found->status;
    return answer;
}

Answer MusicService::search(Call& call)
{
    const auto catalogue = m_library.catalogue();
    const documents::Moment moment = prepared(call);
    return browsePage(call,
        Pages(*catalogue, m_rules, m_media, moment)
            .search(call.request.queryValue(QStringLiteral("keywords")),
                call.request.queryValue(QStringLiteral("cursor"))));
}

Answer MusicService::playable(Call& call)
{
    const auto catalogue = m_library.catalogue();
    const documents::Moment moment = prepared(call);
    return browsePage(call,
        Pages(*catalogue, m_rules, m_media, moment)
            .playable(call.request.parameters.value(QStringLiteral("folder")), idOf(call)));
}

Answer MusicService::chunk(Call& call)
{
    const auto catalogue = m_library.catalogue();
    const documents::Moment moment = prepared(call);
    const Chunks chunks(*catalogue, m_rules, m_media, moment);
    const QString folder = call.request.parameters.value(QStringLiteral("folder"));
    if (folder == QLatin1String("albums"))
        return privateDocument(chunks.album(idOf(call), intQuery(call, "from")));
    if (folder == QLatin1String("playlists"))
        return privateDocument(chunks.playlist(idOf(call), intQuery(call, "from")));
    if (folder == QLatin1String("tracks"))
        return privateDocument(chunks.track(idOf(call)));
    if (folder == QLatin1String("stations"))
        return stationChunk(call, idOf(call));
    return folder == QLatin1String("messages") ? messageAnswer(call) : notFound();
}

// A chunk without a session begins one, so that a station sounds different each time.
Answer MusicService::stationChunk(Call& call, Id id)
{
    const auto catalogue = m_library.catalogue();
    const documents::Moment moment = prepared(call);
    Id session = catalogue::idFromText(call.request.queryValue(QStringLiteral("session")));
    if (session == 0)
        session =
            catalogue::makeId(catalogue::toText(m_seed + ++m_sessions), catalogue::toText(id));
    return privateDocument(
        Chunks(*catalogue, m_rules, m_media, moment).station(id, session, intQuery(call, "at")));
}

Answer MusicService::instance(Call& call)
{
    const auto catalogue = m_library.catalogue();
    const documents::Moment moment = prepared(call);
    return privateDocument(
        Chunks(*catalogue, m_rules, m_media, moment)
            .instance(idOf(call), call.request.queryValue(QStringLiteral("in"))));
}

Answer MusicService::audio(Call& call)
{
    const QString file = call.request.parameters.value(QStringLiteral("file"));
    const Id id = catalogue::idFromText(file.section(QLatin1Char('.'), 0, 0));
    const catalogue::Track* track = m_library.catalogue()->track(id);
    if (!track)
        return notFound();
    const auto query = [&call](const char* name) {
        return call.request.queryValue(QLatin1String(name));
    };
    const QString keyed = query("keyed");
    const auto check = m_media.check(
        id, query("expires"), query("then"), keyed, query("signature"), call.moment.nowMs);
    if (check == documents::MediaUrls::Check::Expired)
        return problem(query("then").toInt(), QStringLiteral("the address has expired"));
    if (check == documents::MediaUrls::Check::Forged)
        return problem(403, QStringLiteral("the address is not signed by this service"));
    const auto field = [&call](const QString& name) {
        return QString::fromLatin1(call.request.headers.value(name.toLatin1()));
    };
    if (keyed == QLatin1String("1")
        && (field(documents::MediaUrls::keyIdName()) != m_media.keyId(id)
            || field(documents::MediaUrls::keyName()) != m_media.key(id)))
        return problem(403, QStringLiteral("the key headers are missing or wrong"));
    Answer answer;
    answer.file = m_library.absolutePath(track->path);
    answer.info.contentType = catalogue::audioMimeType(track->path);
    answer.info.headers.append("Cache-Control", "private, no-store");
    answer.info.ranges = !call.isHitBy("no-ranges");
    return answer;
}

Answer MusicService::drawn(const QString& name)
{
    QByteArray* kept = m_drawn.object(name);
    if (!kept) {
        kept = new QByteArray(samples::drawCover(name, drawnSize));
        m_drawn.insert(name, kept, kept->size());
    }
    return picture({ *kept, "image/png" });
}

Answer MusicService::drawnArtwork(Call& call)
{
    return drawn(call.request.parameters.value(QStringLiteral("name")));
}

Answer MusicService::albumArtwork(Call& call)
{
    const auto catalogue = m_library.catalogue();
    const catalogue::Album* album = catalogue->album(idOf(call));
    if (!album)
        return notFound();
    if (album->picture.isEmpty())
        return drawn(album->artist + album->title);
    const QString file = m_library.absolutePath(album->picture);
    std::optional<catalogue::Picture> shown;
    if (catalogue::isMusicFile(file)) {
        shown = catalogue::readPicture(file);
    } else {
        QFile image(file);
        if (image.open(QIODevice::ReadOnly))
            shown = catalogue::asPicture(image.readAll());
    }
    return shown ? picture(*shown) : drawn(album->artist + album->title);
}

Answer MusicService::report(Call& call)
{
    const auto catalogue = m_library.catalogue();
    if (!catalogue->track(idOf(call)))
        return notFound();
    const TavuAmazonMusicPlaybackEventReport report(TavuJson::parse(call.request.body).toHash());
    const documents::Moment moment = prepared(call);
    const auto refusal = Messages(*catalogue, m_rules, m_media, moment)
                             .startRefusal(call.request.queryValue(QStringLiteral("in")));
    if (refusal && report.event() == TavuAmazonMusicEvent::Start()) {
        Answer answer = document(documents::errorDocument(*refusal));
        answer.response.status = 409;
        return answer;
    }
    return document("{}");
}

Answer MusicService::rating(Call& call)
{
    if (m_library.catalogue()->track(idOf(call)) == nullptr)
        return notFound();
    const TavuAmazonMusicTrackRatingRequest rating(TavuJson::parse(call.request.body).toHash());
    const bool up = rating.thumbRating()
        == TavuAmazonMusicThumbRating::toString(TavuAmazonMusicThumbRating::Up);
    if (Messages::skipsWhenRated(call.request.queryValue(QStringLiteral("in"))))
        return document(documents::ratingDocument(
            QStringLiteral("Noted. Let us go on to the next song."), true));
    return document(
        documents::ratingDocument(up ? QStringLiteral("Thanks! You will hear more like this.")
                                     : QStringLiteral("Thanks! You will hear less like this."),
            false));
}

Answer MusicService::accepted(Call&)
{
    return document("{}");
}

} // namespace emulator
