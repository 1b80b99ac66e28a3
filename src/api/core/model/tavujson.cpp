#include "tavujson.h"

#include "utf8.h"

#include <QString>

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <simdjson.h>
#include <string>
#include <string_view>

namespace {

/// The same few dozen keys stand in every document of a service; making each QString once halves
/// the time of a parse. Direct-mapped, so that hostile keys cost a miss and never more.
class KeyCache
{
public:
    /// Stays until the next key is asked for.
    const QString& key(std::string_view utf8)
    {
        const Digest digest = digestOf(utf8);
        Slot& slot = m_slots[digest.slot()];
        if (slot.digest != digest || (utf8.size() > digestedWhole && slot.utf8 != utf8)) {
            slot.digest = digest;
            slot.utf8.assign(utf8.size() > digestedWhole ? utf8 : std::string_view());
            slot.text = textOfUtf8(utf8);
        }
        return slot.text;
    }

private:
    static constexpr std::size_t slots = 512;
    using Word = std::uint64_t;
    static constexpr std::size_t digestedWhole = 2 * sizeof(Word);

    /// The length of a key and its two ends. They may overlap: of a short key they are all of it.
    struct Digest
    {
        std::size_t size = std::string_view::npos; // Of no key.
        Word first = 0;
        Word last = 0;

        std::size_t slot() const
        {
            constexpr Word golden = 0x9E3779B97F4A7C15; // Fibonacci hashing.
            return ((first * 31 + last + size) * golden >> 32) % slots;
        }
        bool operator!=(const Digest& other) const
        {
            return size != other.size || first != other.first || last != other.last;
        }
    };

    template <class Part>
    static Digest ends(std::string_view utf8)
    {
        Part first = 0;
        Part last = 0;
        std::memcpy(&first, utf8.data(), sizeof first);
        std::memcpy(&last, utf8.data() + utf8.size() - sizeof last, sizeof last);
        return { utf8.size(), first, last };
    }

    static Digest digestOf(std::string_view utf8)
    {
        if (utf8.size() >= sizeof(std::uint64_t))
            return ends<std::uint64_t>(utf8);
        if (utf8.size() >= sizeof(std::uint32_t))
            return ends<std::uint32_t>(utf8);
        if (utf8.size() >= sizeof(std::uint16_t))
            return ends<std::uint16_t>(utf8);
        return utf8.empty() ? Digest{ 0, 0, 0 } : ends<std::uint8_t>(utf8);
    }

    struct Slot
    {
        Digest digest;
        std::string utf8; // Of a key that is longer than its digest.
        QString text;
    };
    std::array<Slot, slots> m_slots;
};

using simdjson::dom::element;
using simdjson::dom::element_type;

QVariant toVariant(element value, KeyCache& keys);

QVariant toHash(const simdjson::dom::object& object, KeyCache& keys)
{
    QVariant value = QVariantHash();
    auto& hash = *static_cast<QVariantHash*>(value.data()); // In its place: a copy would count.
    hash.reserve(static_cast<int>(object.size()));
    // The hash keeps a key of its own: those within the value may take the key's slot.
    for (const auto field : object)
        hash[keys.key(field.key)] = toVariant(field.value, keys);
    return value;
}

QVariant toList(const simdjson::dom::array& array, KeyCache& keys)
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
    // On the heap: of a variable of the thread itself the address would be asked for at each use.
    thread_local const auto keys = std::make_unique<KeyCache>();
    const int bom = text.startsWith("\xEF\xBB\xBF") ? 3 : 0;
    const auto document =
        parser.parse(text.constData() + bom, static_cast<std::size_t>(text.size() - bom));
    if (document.error() != simdjson::SUCCESS)
        return QVariant();
    return toVariant(document.value_unsafe(), *keys);
}
