#include "tavujson.h"

#include "utf8.h"

#include <QString>

#include <array>
#include <simdjson.h>
#include <string_view>

namespace {

/// The same few dozen keys stand in every document of a service; making each QString once halves
/// the time of a parse. Direct-mapped, so that hostile keys cost a miss and never more.
class KeyCache
{
public:
    const QString& key(std::string_view utf8)
    {
        Slot& slot = m_slots[std::hash<std::string_view>()(utf8) % m_slots.size()];
        if (slot.utf8 != utf8) {
            slot.utf8.assign(utf8);
            slot.text = textOfUtf8(utf8);
        }
        return slot.text;
    }

private:
    struct Slot
    {
        std::string utf8;
        QString text;
    };
    std::array<Slot, 512> m_slots;
};

using simdjson::dom::element;
using simdjson::dom::element_type;

QVariant toVariant(element value, KeyCache& keys);

QVariantHash toHash(const simdjson::dom::object& object, KeyCache& keys)
{
    QVariantHash hash;
    hash.reserve(static_cast<int>(object.size()));
    for (const auto field : object) {
        // The value first: its keys may take the key's slot.
        const QVariant value = toVariant(field.value, keys);
        hash.insert(keys.key(field.key), value);
    }
    return hash;
}

QVariantList toList(const simdjson::dom::array& array, KeyCache& keys)
{
    QVariantList list;
    list.reserve(static_cast<int>(array.size()));
    for (const element value : array)
        list.append(toVariant(value, keys));
    return list;
}

QVariant toVariant(element value, KeyCache& keys)
{
    // The type is tested first, so none of the unchecked reads below can fail.
    switch (value.type()) {
    case element_type::OBJECT:
        return toHash(value.get_object().value_unsafe(), keys);
    case element_type::ARRAY:
        return toList(value.get_array().value_unsafe(), keys);
    case element_type::STRING:
        return textOfUtf8(value.get_string().value_unsafe());
    case element_type::INT64:
        return QVariant::fromValue<qlonglong>(value.get_int64().value_unsafe());
    case element_type::UINT64:
        return QVariant::fromValue<qulonglong>(value.get_uint64().value_unsafe());
    case element_type::DOUBLE:
        return value.get_double().value_unsafe();
    case element_type::BOOL:
        return value.get_bool().value_unsafe();
    case element_type::NULL_VALUE:
        break;
    }
    return QVariant();
}

} // namespace

QVariant TavuJson::parse(const QByteArray& text)
{
    thread_local simdjson::dom::parser parser;
    thread_local KeyCache keys;
    const int bom = text.startsWith("\xEF\xBB\xBF") ? 3 : 0;
    const auto document =
        parser.parse(text.constData() + bom, static_cast<std::size_t>(text.size() - bom));
    if (document.error() != simdjson::SUCCESS)
        return QVariant();
    return toVariant(document.value_unsafe(), keys);
}
