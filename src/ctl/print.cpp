#include "print.h"

#include "messages.h"
#include "tavuenums.h"
#include "tavujson.h"

#include <QTextStream>

#include <cstdio>

namespace ctl {

void printLine(const QString& line)
{
    QTextStream out(stdout);
    out.setCodec("UTF-8");
    out << line << '\n';
}

void printError(const QString& line)
{
    QTextStream out(stderr);
    out.setCodec("UTF-8");
    out << "tavu-ctl: " << line << '\n';
}

void printJson(const QVariant& value)
{
    printLine(QString::fromUtf8(TavuJson::toJson(value)));
}

QString clockTime(qint64 ms)
{
    const qint64 seconds = qMax<qint64>(0, ms) / 1000;
    const auto two = [](qint64 number) {
        return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
    };
    const QString minutes = QString::number(seconds / 60 % 60);
    if (seconds < 3600)
        return minutes + QLatin1Char(':') + two(seconds % 60);
    return QString::number(seconds / 3600) + QLatin1Char(':') + two(seconds / 60 % 60)
        + QLatin1Char(':') + two(seconds % 60);
}

namespace {

QLatin1String markOf(const QVariantHash& row)
{
    const bool playable = row.value(QStringLiteral("playable")).toBool();
    switch (row.value(QStringLiteral("type")).toInt()) {
    case TavuRolesType::Folder:
        return playable ? QLatin1String("[>]") : QLatin1String("[ ]");
    case TavuRolesType::Playable:
        return QLatin1String(" > ");
    case TavuRolesType::Action:
    case TavuRolesType::Link:
        return QLatin1String("(*)");
    default:
        return QLatin1String("   ");
    }
}

QString artistOf(const QVariantHash& row)
{
    return row.value(QStringLiteral("mediaData"))
        .toHash()
        .value(QStringLiteral("metaData"))
        .toHash()
        .value(QStringLiteral("artist"))
        .toString();
}

} // namespace

QString rowLine(int number, const QVariantHash& row)
{
    QString line = QStringLiteral("%1. ").arg(number, 3) + markOf(row) + QLatin1Char(' ')
        + row.value(QStringLiteral("title")).toString();
    const QString artist = artistOf(row);
    if (!artist.isEmpty())
        line += QLatin1String(" - ") + artist;
    const QString text = row.value(QStringLiteral("longDescription")).toString();
    if (!text.isEmpty())
        line += QLatin1String("\n         ") + text;
    const QString link = row.value(QStringLiteral("link")).toString();
    if (!link.isEmpty())
        line += QLatin1String("\n         ") + link;
    return line;
}

QString statusText(const QVariantHash& player)
{
    const auto state =
        static_cast<TavuPlayLogicState::Enum>(player.value(QStringLiteral("state")).toInt());
    QString text = TavuPlayLogicState::toString(state);
    if (state != TavuPlayLogicState::Idle) {
        text += QStringLiteral("  %1 / %2")
                    .arg(clockTime(player.value(QStringLiteral("position")).toLongLong()),
                        clockTime(player.value(QStringLiteral("duration")).toLongLong()));
        // While the first track is fetched neither is known.
        QStringList names{ player.value(QStringLiteral("title")).toString(),
            player.value(QStringLiteral("artist")).toString() };
        names.removeAll(QString());
        if (!names.isEmpty())
            text += QLatin1Char('\n') + names.join(QLatin1String(" - "));
    }
    const auto mode =
        static_cast<TavuPlayerPlayMode::Enum>(player.value(QStringLiteral("mode")).toInt());
    text += QStringLiteral("\nvolume %1%2, mode %3")
                .arg(player.value(QStringLiteral("volume")).toInt())
                .arg(player.value(QStringLiteral("mute")).toBool() ? QStringLiteral(" (muted)")
                                                                   : QString(),
                    TavuPlayerPlayMode::toString(mode));
    const QVariantHash error = player.value(QStringLiteral("error")).toHash();
    if (!error.isEmpty())
        text += QLatin1Char('\n')
            + words(error.value(QStringLiteral("title")).toString(),
                error.value(QStringLiteral("detail")).toString());
    const QString rating = player.value(QStringLiteral("rating")).toString();
    if (!rating.isEmpty())
        text += QStringLiteral("\nrated %1").arg(rating);
    return text;
}

} // namespace ctl
