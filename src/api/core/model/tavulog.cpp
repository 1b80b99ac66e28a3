#include "tavulog.h"

#include <ostream>

std::ostream& operator<<(std::ostream& out, const QString& text)
{
    return out << text.toUtf8();
}

std::ostream& operator<<(std::ostream& out, const QByteArray& utf8)
{
    return out.write(utf8.constData(), utf8.size());
}

std::ostream& operator<<(std::ostream& out, const QStringList& texts)
{
    return out << texts.join(QLatin1String(", "));
}
