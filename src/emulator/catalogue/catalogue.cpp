#include "catalogue.h"

namespace emulator::catalogue {

QString toText(Id id)
{
    return QStringLiteral("%1").arg(id, 16, 16, QLatin1Char('0'));
}

Id idFromText(const QString& text)
{
    bool valid = false;
    const Id id = text.toULongLong(&valid, 16);
    return valid && text.size() == 16 ? id : 0;
}

// FNV-1a: stable between runs and versions, unlike Qt's own hash.
Id makeId(const QString& kind, const QString& name)
{
    Id hash = 0xcbf29ce484222325;
    for (const char byte : kind.toUtf8() + '\0' + name.toUtf8()) {
        hash ^= static_cast<unsigned char>(byte);
        hash *= 0x100000001b3;
    }
    return hash ? hash : 1;
}

} // namespace emulator::catalogue
