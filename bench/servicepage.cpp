#include "servicepage.h"

#include <QString>
#include <QStringList>

namespace {

/// The collections of a page, as the texts of their members.
struct Collections
{
    QStringList references;
    QStringList items;
    QStringList summaries;
    QStringList playables;
    QStringList definitions;
};

QString item(int number, const QString& reference)
{
    return QStringLiteral(R"("item-%1":{"itemLabel":"Row number %1 of the page",)"
                          R"("artist":{"name":"The Artist of Row %1"},)"
                          R"("image":{"uri":"https://images.example/covers/%1/large.jpg"},%2})")
        .arg(number)
        .arg(reference);
}

QString playable(int number, const QString& definition)
{
    return QStringLiteral(
        R"("playable-%1":{%2"naturalTrackPointer":{"chunk":"chunks/%1#chunk",)"
        R"("indexWithinChunk":0},"shuffleTrackPointer":{"chunk":"chunks/%1/shuffled#chunk",)"
        R"("indexWithinChunk":3},"selfData":"playables/%1#playable-%1"})")
        .arg(number)
        .arg(definition);
}

QString definition(int number)
{
    return QStringLiteral(
        R"("track-%1":{"title":"Track number %1","artist":{"name":"The Artist of Row %1"},)"
        R"("album":{"name":"The Album of Row %1"},"duration":%2,)"
        R"("image":{"uri":"https://images.example/covers/%1/large.jpg"},)"
        R"("audio":{"uri":"https://audio.example/streams/%1?signature=a1b2c3d4e5f6a7b8c9d0",)"
        R"("expires":"2030-01-02T03:04:05.678Z","headers":{"keyHeaders":[)"
        R"({"name":"x-key-id","value":"%1"},{"name":"x-key-check","value":"0123456789abcdef"}]}},)"
        R"("trackRating":{"ratingURI":"ratings/%1"},"autoSkipOnError":true})")
        .arg(number)
        .arg(180000 + number);
}

void addAlbum(Collections* page, int number)
{
    page->items << item(
        number, QStringLiteral(R"("summary":"#summary-%1","playable":"#playable-%1")").arg(number));
    page->summaries
        << QStringLiteral(R"("summary-%1":{"description":"albums/%1#album"})").arg(number);
    page->playables << playable(number, QString());
}

void addTrack(Collections* page, int number)
{
    page->items << item(number, QStringLiteral(R"("playable":"#playable-%1")").arg(number));
    page->playables << playable(
        number, QStringLiteral(R"("trackDefinition":"#track-%1",)").arg(number));
    page->definitions << definition(number);
}

QString collection(const char* name, const QStringList& members)
{
    return QStringLiteral(R"("%1":{%2})")
        .arg(QString::fromLatin1(name), members.join(QLatin1Char(',')));
}

} // namespace

QByteArray servicePage(int items)
{
    Collections page;
    for (int number = 0; number < items; ++number) {
        page.references << QStringLiteral(R"("#item-%1")").arg(number);
        if (number % 4 == 0)
            addAlbum(&page, number);
        else
            addTrack(&page, number);
    }
    const QString node = QStringLiteral(R"("page":{"items":[%1],"nextPage":"page?from=%2"})")
                             .arg(page.references.join(QLatin1Char(',')))
                             .arg(items);
    const QStringList members{ QStringLiteral(R"("result":"#page")"),
        collection("navigationNodeDescriptions", { node }),
        collection("itemDescriptions", page.items),
        collection("navigationNodeSummaries", page.summaries),
        collection("playables", page.playables), collection("trackDefinitions", page.definitions) };
    return '{' + members.join(QLatin1Char(',')).toUtf8() + '}';
}
