#include "controlfixture.h"

control::ControlServer& ControlFixture::server()
{
    if (!m_server)
        m_server = std::make_unique<control::ControlServer>(player, options);
    return *m_server;
}

quint16 ControlFixture::port()
{
    if (m_port == 0)
        m_port = server().listen(QHostAddress::LocalHost, 0);
    return m_port;
}

RawPeer::Answer ControlFixture::get(const QByteArray& target, const QByteArray& fields)
{
    return RawPeer(port()).ask("GET", target, {}, fields);
}

RawPeer::Answer ControlFixture::post(const QByteArray& target, const QByteArray& body)
{
    return RawPeer(port()).ask("POST", target, body);
}

std::unique_ptr<RawPeer> ControlFixture::begin(
    const QByteArray& method, const QByteArray& target, const QByteArray& body)
{
    const int before = player.calls.size();
    auto peer = std::make_unique<RawPeer>(port());
    peer->request(method, target, body);
    EXPECT_TRUE(waitUntil([&] { return player.calls.size() == before + 1; }));
    return peer;
}

QVariantHash ControlFixture::shown(const QVariantHash& row)
{
    player.answerWith(QVariantHash{ { QStringLiteral("rows"), QVariantList{ row } } });
    const QVariantHash page = object(get("/api/v1/rows"));
    player.hold();
    player.calls.clear();
    return at(page, "rows.0").toHash();
}

QVariantHash object(const RawPeer::Answer& answer)
{
    const QVariant parsed = TavuJson::parse(answer.body);
    EXPECT_EQ(parsed.type(), QVariant::Hash) << answer.body.constData();
    return parsed.toHash();
}

QVariantHash hash(const char* json)
{
    const QVariant parsed = TavuJson::parse(json);
    EXPECT_EQ(parsed.type(), QVariant::Hash) << json;
    return parsed.toHash();
}

QVariant at(const QVariant& value, const char* way)
{
    QVariant here = value;
    for (const QByteArray& step : QByteArray(way).split('.')) {
        bool isIndex = false;
        const int index = step.toInt(&isIndex);
        here =
            isIndex ? here.toList().value(index) : here.toHash().value(QString::fromLatin1(step));
    }
    return here;
}
