#include "jsonedit.h"

#include "tavujson.h"

#include <QStringList>

namespace emulator::faults {

namespace {

const QString any = QStringLiteral("*");
// A text that no document holds; stands where a number is to be written by hand.
const QString numberMark = QStringLiteral("@@number@@");

bool isObject(const QVariant& json)
{
    return json.type() == QVariant::Hash;
}

bool isList(const QVariant& json)
{
    return json.type() == QVariant::List;
}

QStringList pathOf(const QString& text)
{
    return text.mid(text.startsWith(QLatin1Char('/')) ? 1 : 0).split(QLatin1Char('/'));
}

// Runs `change` on each child of the name; a missing one is made when `make`.
template <typename Change>
QVariant withChildren(const QVariant& json, const QString& name, bool make, Change change)
{
    if (isObject(json)) {
        QVariantHash object = json.toHash();
        if (name == any) {
            for (QVariant& child : object)
                child = change(child);
        } else if (object.contains(name) || make) {
            object.insert(name, change(object.value(name)));
        }
        return object;
    }
    if (isList(json)) {
        QVariantList list = json.toList();
        bool isIndex = false;
        const int index = name.toInt(&isIndex);
        for (int i = 0; i < list.size(); ++i) {
            if (name == any || (isIndex && i == index))
                list[i] = change(list.at(i));
        }
        return list;
    }
    return json;
}

QVariant setAt(const QVariant& json, const QStringList& path, const QVariant& value)
{
    if (path.isEmpty())
        return value;
    const QVariant place = json.isValid() ? json : QVariant(QVariantHash());
    return withChildren(place, path.first(), true,
        [&](const QVariant& child) { return setAt(child, path.mid(1), value); });
}

QVariant removeAt(const QVariant& json, const QStringList& path)
{
    if (path.size() > 1)
        return withChildren(json, path.first(), false,
            [&](const QVariant& child) { return removeAt(child, path.mid(1)); });
    if (!isObject(json))
        return json;
    QVariantHash object = json.toHash();
    if (path.first() == any)
        object.clear();
    object.remove(path.first());
    return object;
}

QVariant removeKey(const QVariant& json, const QString& key)
{
    const QVariant rest = isObject(json) ? removeAt(json, { key }) : json;
    return withChildren(
        rest, any, false, [&key](const QVariant& child) { return removeKey(child, key); });
}

QVariant wrongValue(const QVariant& json)
{
    if (isObject(json))
        return QVariantList{ json };
    if (isList(json))
        return QStringLiteral("a list");
    if (json.type() == QVariant::String)
        return 17;
    if (json.type() == QVariant::Bool)
        return QVariantHash();
    return QStringLiteral("a number");
}

QVariant markNumbers(const QVariant& json, const QString& spare)
{
    if (isObject(json) || isList(json)) {
        const auto mark = [&spare](const QVariant& child) { return markNumbers(child, spare); };
        QVariant marked = withChildren(json, any, false, mark);
        if (isObject(json) && json.toHash().contains(spare))
            marked = setAt(marked, { spare }, json.toHash().value(spare));
        return marked;
    }
    const bool number =
        json.isValid() && json.type() != QVariant::String && json.type() != QVariant::Bool;
    return number ? QVariant(numberMark) : json;
}

} // namespace

QVariant edited(const QVariant& json, const QVariantHash& set, const QVariantList& remove)
{
    QVariant result = json;
    for (const QVariant& entry : remove) {
        const QString path = entry.toString();
        result = path.startsWith(QLatin1Char('/')) ? removeAt(result, pathOf(path))
                                                   : removeKey(result, path);
    }
    for (auto entry = set.cbegin(); entry != set.cend(); ++entry)
        result = setAt(result, pathOf(entry.key()), *entry);
    return result;
}

// Collections and the records in them keep their shape, so that the records are found and it is
// their fields that are wrong.
QVariant withWrongTypes(const QVariant& json)
{
    return withChildren(json, any, false, [](const QVariant& collection) {
        if (!isObject(collection))
            return collection;
        return withChildren(collection, any, false,
            [](const QVariant& record) { return withChildren(record, any, false, wrongValue); });
    });
}

// The repeated item gets a key of one letter, so that very many fit into a body of bearable size.
QVariant withItems(const QVariant& json, int count)
{
    const QString nodesKey = QStringLiteral("navigationNodeDescriptions");
    const QString itemsKey = QStringLiteral("items");
    const QString descriptionsKey = QStringLiteral("itemDescriptions");
    const QVariantHash nodes = json.toHash().value(nodesKey).toHash();
    const QVariantList items =
        nodes.isEmpty() ? QVariantList() : nodes.begin()->toHash().value(itemsKey).toList();
    if (items.isEmpty())
        return json;
    const QVariant first =
        json.toHash().value(descriptionsKey).toHash().value(items.first().toString().mid(1));
    QVariantList many;
    many.reserve(count);
    for (int i = 0; i < count; ++i)
        many += QStringLiteral("#i");
    return setAt(setAt(json, { nodesKey, any, itemsKey }, many),
        { descriptionsKey, QStringLiteral("i") }, first);
}

QByteArray withNumbers(const QVariant& json, const QByteArray& number, const QString& spare)
{
    return TavuJson::toJson(markNumbers(json, spare))
        .replace('"' + numberMark.toUtf8() + '"', number);
}

} // namespace emulator::faults
