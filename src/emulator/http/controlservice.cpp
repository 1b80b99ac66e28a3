#include "controlservice.h"

#include "../documents/links.h"
#include "tavujson.h"

#include <QDateTime>
#include <QUrl>

// A static library's resources have to be named to be there; the macro wants no namespace.
static void addPages()
{
    Q_INIT_RESOURCE(emulator_web);
}

namespace emulator {

using faults::Answer;

namespace {

QString key(const char* name)
{
    return QLatin1String(name);
}

Answer json(const QVariant& value)
{
    Answer answer = document(TavuJson::toJson(value));
    answer.response.headers.append("Cache-Control", "no-store");
    return answer;
}

Answer done()
{
    return json(QVariantHash{ { key("done"), true } });
}

// A page of another site can make a browser post here, but not with this media type, and not
// without saying where it comes from.
bool isForeign(const http::Request& request)
{
    const QByteArray origin = request.headers.value("origin");
    const bool otherOrigin = !origin.isEmpty()
        && QUrl(QString::fromLatin1(origin)).authority().toLatin1() != request.authority;
    const bool otherType = !request.body.isEmpty()
        && !request.headers.value("content-type").toLower().startsWith("application/json");
    return otherOrigin || otherType;
}

// Names that lead elsewhere by way of a rebound DNS entry are not ours.
bool isOwnHost(const http::Request& request)
{
    const QString host = hostOf(request);
    return host == QLatin1String("localhost") || host.endsWith(QLatin1String(".localhost"))
        || host == QLatin1String("[::1]") || QHostAddress(host).isLoopback();
}

QString phaseName(catalogue::ScanStatus::Phase phase)
{
    switch (phase) {
    case catalogue::ScanStatus::Phase::Looking:
        return key("looking");
    case catalogue::ScanStatus::Phase::Reading:
        return key("reading");
    case catalogue::ScanStatus::Phase::Done:
        return key("done");
    }
    return {};
}

int countOf(size_t size)
{
    return static_cast<int>(size);
}

} // namespace

ControlService::ControlService(
    Ledger& ledger, faults::Dial& dial, oauth2::Authority& authority, catalogue::Library& library)
    : m_ledger(ledger)
    , m_dial(dial)
    , m_authority(authority)
    , m_library(library)
    , m_pages(key(":/emulator"),
          { { "Content-Security-Policy",
              "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
              "frame-ancestors 'none'; base-uri 'none'" } })
{
    addPages();
}

void ControlService::addRoutes(Gateway& gateway)
{
    const auto add = [&](const char* method, const char* pattern,
                         Answer (ControlService::*member)(Call&)) {
        gateway.add(method, QLatin1String(pattern), QStringLiteral("control"),
            Gateway::Access::Local, [this, member](Call& call) {
                if (!isOwnHost(call.request))
                    return problem(421, QStringLiteral("this host is not ours"));
                if (call.request.method != "GET" && isForeign(call.request))
                    return problem(403, QStringLiteral("send application/json from this host"));
                return (this->*member)(call);
            });
    };
    add("GET", "/emulator/status", &ControlService::status);
    add("GET", "/emulator/catalogue", &ControlService::catalogue);
    add("POST", "/emulator/rescan", &ControlService::rescan);
    add("GET", "/emulator/ledger", &ControlService::ledger);
    add("POST", "/emulator/ledger/clear", &ControlService::clearLedger);
    add("GET", "/emulator/faults", &ControlService::listFaults);
    add("POST", "/emulator/faults", &ControlService::addFaults);
    add("DELETE", "/emulator/faults", &ControlService::clearFaults);
    add("DELETE", "/emulator/faults/{id}", &ControlService::removeFault);
    add("GET", "/emulator/effects", &ControlService::listEffects);
    add("POST", "/emulator/login/{action}", &ControlService::login);
    gateway.addRaw("GET", key("/emulator/{page*}"),
        [this](const http::Request& request, const http::Responder& responder) {
            servePage(request, responder);
        });
}

void ControlService::servePage(const http::Request& request, const http::Responder& responder) const
{
    if (isLocal(request) && isOwnHost(request))
        m_pages.serve(request.segments.mid(1), responder);
    else
        responder.send(problem(403, QStringLiteral("only for this machine")).response);
}

QVariantHash ControlService::statusFields() const
{
    const catalogue::ScanStatus scan = m_library.status();
    const auto catalogue = m_library.catalogue();
    QVariantList problems;
    for (const auto& entry : scan.problems)
        problems += QVariantHash{ { key("path"), entry.first }, { key("reason"), entry.second } };
    return { { key("folder"), m_library.root() }, { key("scan"), phaseName(scan.phase) },
        { key("found"), scan.found }, { key("toRead"), scan.toRead }, { key("read"), scan.read },
        { key("problems"), problems }, { key("tracks"), countOf(catalogue->tracks.size()) },
        { key("albums"), countOf(catalogue->albums.size()) },
        { key("artists"), countOf(catalogue->artists.size()) },
        { key("playlists"), countOf(catalogue->playlists.size()) },
        { key("stations"), countOf(catalogue->stations.size()) } };
}

Answer ControlService::status(Call&)
{
    return json(statusFields());
}

// Where the albums and their tracks are found, for tests that compare what was heard with the file.
Answer ControlService::catalogue(Call& call)
{
    const auto catalogue = m_library.catalogue();
    const int offset = std::max(0, call.request.queryValue(key("offset")).toInt());
    const int limit =
        call.request.hasQuery(key("limit")) ? call.request.queryValue(key("limit")).toInt() : 1000;
    QVariantList tracks;
    for (int i = offset; i < countOf(catalogue->tracks.size()) && tracks.size() < limit; ++i) {
        const catalogue::Track& track = catalogue->trackAt(i);
        const catalogue::Album& album = catalogue->albumOf(track);
        tracks += QVariantHash{ { key("id"), catalogue::toText(track.id) },
            { key("title"), track.title }, { key("artist"), track.artist },
            { key("album"), album.title }, { key("albumId"), catalogue::toText(album.id) },
            { key("place"), track.placeInAlbum }, { key("duration"), track.durationMs },
            { key("file"), m_library.absolutePath(track.path) } };
    }
    return json(QVariantHash{ { key("tracks"), tracks } });
}

Answer ControlService::rescan(Call&)
{
    m_library.scan();
    return done();
}

Answer ControlService::ledger(Call& call)
{
    Ledger::Filter filter;
    const QString kinds = call.request.queryValue(key("kind"));
    if (!kinds.isEmpty())
        filter.kinds = kinds.split(QLatin1Char(','));
    filter.since = call.request.queryValue(key("since")).toLongLong();
    filter.limit = call.request.queryValue(key("limit")).toInt();
    QVariantList entries;
    for (const LedgerEntry& entry : m_ledger.entries(filter))
        entries += describe(entry);
    return json(
        QVariantHash{ { key("serial"), m_ledger.lastSerial() }, { key("entries"), entries } });
}

Answer ControlService::clearLedger(Call&)
{
    m_ledger.clear();
    return done();
}

Answer ControlService::listFaults(Call&)
{
    QVariantList rules;
    for (const faults::Rule& rule : m_dial.rules())
        rules += faults::describe(rule);
    return json(QVariantHash{ { key("rules"), rules } });
}

// One rule, or a list of them; a list is taken as a whole or not at all.
Answer ControlService::addFaults(Call& call)
{
    const QVariant given = TavuJson::parse(call.request.body);
    const QVariantList list =
        given.type() == QVariant::List ? given.toList() : QVariantList{ given };
    std::vector<faults::Rule> rules;
    for (const QVariant& fields : list) {
        if (fields.type() != QVariant::Hash)
            return problem(400, QStringLiteral("a rule is a JSON object"));
        const faults::ParsedRule parsed = faults::parseRule(fields.toHash());
        if (!parsed.rule)
            return problem(400, parsed.problem);
        rules.push_back(*parsed.rule);
    }
    QVariantList ids;
    for (const faults::Rule& rule : rules)
        ids += m_dial.add(rule);
    return json(QVariantHash{ { key("ids"), ids } });
}

Answer ControlService::clearFaults(Call&)
{
    m_dial.clear();
    return done();
}

Answer ControlService::removeFault(Call& call)
{
    const bool found = m_dial.remove(call.request.parameters.value(key("id")).toInt());
    return found ? done() : problem(404, QStringLiteral("there is no rule of this id"));
}

Answer ControlService::listEffects(Call&)
{
    QVariantList effects;
    for (const faults::EffectKind& kind : faults::effectKinds()) {
        QVariantList parameters;
        for (const faults::Parameter& parameter : kind.parameters)
            parameters += QVariantHash{ { key("name"), key(parameter.name) },
                { key("meaning"), key(parameter.meaning) } };
        effects += QVariantHash{ { key("name"), key(kind.name) },
            { key("meaning"), key(kind.meaning) }, { key("parameters"), parameters } };
    }
    return json(QVariantHash{ { key("effects"), effects } });
}

// Steps of a login without a user: for tests and for trying things out.
Answer ControlService::login(Call& call)
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const QString action = call.request.parameters.value(key("action"));
    const QVariantHash fields = TavuJson::parse(call.request.body).toHash();
    if (action == QLatin1String("approve") || action == QLatin1String("deny")) {
        const bool approve = action == QLatin1String("approve");
        return m_authority.decide(fields.value(key("user_code")).toString(), approve, now)
            ? done()
            : problem(404, QStringLiteral("there is no open code of this text"));
    }
    if (action == QLatin1String("token"))
        return json(m_authority.grantDirectly(now).json);
    if (action == QLatin1String("expire")) {
        m_authority.expireAccessTokens();
        return done();
    }
    if (action == QLatin1String("revoke")) {
        m_authority.revokeAll();
        return done();
    }
    return problem(404, QStringLiteral("the actions are approve, deny, token, expire and revoke"));
}

} // namespace emulator
