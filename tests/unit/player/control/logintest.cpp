#include "controlfixture.h"

#include "qrcode.h"

#include <QRegularExpression>
#include <QVector>

class Login : public ControlFixture
{
};

TEST_F(Login, IsToldAsThePlayerTellsIt)
{
    player.m_login = hash(R"({"state": "waiting", "userCode": "AB12CD", "expiresIn": 600})");
    EXPECT_EQ(object(get("/api/v1/login")), player.m_login);
    EXPECT_EQ(object(post("/api/v1/login/start")), player.m_login);
    EXPECT_EQ(object(post("/api/v1/logout")), player.m_login);
    const QStringList told{ QStringLiteral("startLogin[]"), QStringLiteral("logout[]") };
    EXPECT_EQ(player.told(), told);
}

TEST_F(Login, ShowsItsCodeAsAPicture)
{
    EXPECT_EQ(get("/api/v1/login/qr.svg").status, 404);
    player.m_login = hash(R"({"verificationUri": "https://example.org/device"})");
    const RawPeer::Answer plain = get("/api/v1/login/qr.svg?v=1");
    EXPECT_EQ(plain.status, 200);
    EXPECT_EQ(plain.field("Content-Type"), "image/svg+xml");
    EXPECT_EQ(plain.field("Cache-Control"), "no-store");
    EXPECT_EQ(plain.body, control::qrSvg(QStringLiteral("https://example.org/device")));
    player.m_login.insert(QStringLiteral("verificationUriComplete"),
        QStringLiteral("https://example.org/device?c=AB"));
    EXPECT_EQ(get("/api/v1/login/qr.svg").body,
        control::qrSvg(QStringLiteral("https://example.org/device?c=AB")));
}

namespace {

/// The dark modules of a code, by line, with the quiet zone around them.
QVector<QByteArray> modulesOf(const QByteArray& svg)
{
    const QString text = QString::fromUtf8(svg);
    const int size =
        QRegularExpression(QStringLiteral("viewBox=\"0 0 (\\d+) ")).match(text).captured(1).toInt();
    QVector<QByteArray> lines(size, QByteArray(size, '.'));
    auto runs =
        QRegularExpression(QStringLiteral("M(\\d+) (\\d+)h(\\d+)v1h-\\3z")).globalMatch(text);
    while (runs.hasNext()) {
        const QRegularExpressionMatch run = runs.next();
        const int x = run.captured(1).toInt();
        const int length = run.captured(3).toInt();
        lines[run.captured(2).toInt()].replace(x, length, QByteArray(length, '#'));
    }
    return lines;
}

bool hasFinder(const QVector<QByteArray>& lines, int x, int y)
{
    static const QByteArrayList finder{ "#######", "#.....#", "#.###.#", "#.###.#", "#.###.#",
        "#.....#", "#######" };
    for (int line = 0; line < finder.size(); ++line) {
        if (lines[y + line].mid(x, 7) != finder[line])
            return false;
    }
    return true;
}

} // namespace

TEST(QrCode, HasItsThreeFindersAndAQuietZone)
{
    const QVector<QByteArray> lines =
        modulesOf(control::qrSvg(QStringLiteral("https://example.org/device?user_code=ABCD-EFGH")));
    const int size = lines.size();
    ASSERT_EQ((size - 8 - 17) % 4, 0);
    EXPECT_TRUE(hasFinder(lines, 4, 4));
    EXPECT_TRUE(hasFinder(lines, size - 11, 4));
    EXPECT_TRUE(hasFinder(lines, 4, size - 11));
    for (int i = 0; i < 4; ++i) {
        EXPECT_FALSE(lines[i].contains('#'));
        EXPECT_FALSE(lines[size - 1 - i].contains('#'));
        for (const QByteArray& line : lines)
            EXPECT_TRUE(line[i] == '.' && line[size - 1 - i] == '.');
    }
    EXPECT_NE(lines,
        modulesOf(
            control::qrSvg(QStringLiteral("https://example.org/device?user_code=ABCD-EFGI"))));
}

TEST(QrCode, IsNotMadeOfNothingOrTooMuch)
{
    EXPECT_TRUE(control::qrSvg(QString()).isEmpty());
    EXPECT_TRUE(control::qrSvg(QString(5000, QLatin1Char('a'))).isEmpty());
    EXPECT_FALSE(
        control::qrSvg(QStringLiteral("https://m\u00fcsik.example/?a=1&b=<\">")).isEmpty());
}
