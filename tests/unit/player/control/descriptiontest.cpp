#include "controlfixture.h"

#include <QFile>
#include <QSet>

/// The served OpenAPI document against the server's own table of routes.
class Description : public ControlFixture
{
protected:
    QVariantHash document()
    {
        const RawPeer::Answer answer = get("/api/v1/openapi.json");
        EXPECT_EQ(answer.status, 200);
        EXPECT_EQ(answer.field("Content-Type"), "application/json");
        return object(answer);
    }
};

namespace {

/// Each "$ref" below a value.
void collectReferences(const QVariant& value, QSet<QString>& references)
{
    for (const QVariant& each : value.toList())
        collectReferences(each, references);
    const QVariantHash members = value.toHash();
    for (auto it = members.begin(); it != members.end(); ++it) {
        if (it.key() == QLatin1String("$ref"))
            references += it.value().toString();
        else
            collectReferences(it.value(), references);
    }
}

} // namespace

TEST_F(Description, IsTheDocumentOfTheTree)
{
    QFile file(QStringLiteral(TAVU_OPENAPI));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(get("/api/v1/openapi.json").body, file.readAll());
    EXPECT_EQ(at(document(), "openapi").toString(), QStringLiteral("3.1.0"));
}

TEST_F(Description, NamesExactlyTheOperationsThatThereAre)
{
    QSet<QString> described;
    const QVariantHash paths = document().value(QStringLiteral("paths")).toHash();
    for (auto path = paths.begin(); path != paths.end(); ++path) {
        for (const QString& method : path->toHash().keys())
            described += method.toUpper() + QLatin1Char(' ') + path.key();
    }
    QSet<QString> there;
    for (const http::Router::Route& route : server().routes())
        there += QString::fromLatin1(route.method) + QLatin1Char(' ') + route.pattern;
    EXPECT_EQ((described - there).values(), QStringList());
    EXPECT_EQ((there - described).values(), QStringList());
    EXPECT_GT(there.size(), 20);
}

TEST_F(Description, RefersToNothingThatIsMissing)
{
    const QVariantHash whole = document();
    QSet<QString> references;
    collectReferences(whole, references);
    EXPECT_GT(references.size(), 5);
    for (const QString& reference : qAsConst(references)) {
        ASSERT_TRUE(reference.startsWith(QLatin1String("#/")));
        QByteArray way = reference.mid(2).toLatin1();
        way.replace('/', '.');
        EXPECT_TRUE(at(whole, way.constData()).isValid()) << way.constData();
    }
}

TEST_F(Description, NamesEachOperationOnce)
{
    QSet<QString> names;
    int operations = 0;
    for (const QVariant& path : document().value(QStringLiteral("paths")).toHash()) {
        for (const QVariant& operation : path.toHash()) {
            names += at(operation, "operationId").toString();
            ++operations;
        }
    }
    EXPECT_EQ(names.size(), operations);
}

TEST_F(Description, KnowsWhatARowIsMadeOf)
{
    const QVariantHash row =
        shown(hash(R"({"title": "A", "icon": "skin:a", "path": "/a", "type": 106,
        "audioType": 1, "containerType": 2, "containerPlayable": true, "longDescription": "d",
        "doNotTrack": true, "disabled": true, "search": {},
        "mediaData": {"metaData": {}, "resources": [{"uri": "https://a"}]}})"));
    const QVariantHash known = at(document(), "components.schemas.Row.properties").toHash();
    for (const QString& key : row.keys())
        EXPECT_TRUE(known.contains(key)) << key.toLatin1().constData();
    EXPECT_EQ(row.size(), known.size());
}
