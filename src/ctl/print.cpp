#include "print.h"

#include "messages.h"
#include "tavuenums.h"
#include "tavujson.h"

#include <QDateTime>
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

namespace {

QString ofHertz(int rate)
{
    return rate > 0 ? QString::number(rate / 1000.0) + QLatin1String(" kHz") : QString();
}

QString counted(int number, const char* unit)
{
    return number > 0 ? QStringLiteral("%1 %2").arg(number).arg(QLatin1String(unit)) : QString();
}

/// "FLAC, 44.1 kHz, 16 bit, lossless, to Speakers"; empty while nothing is known.
QString soundText(const QVariantHash& audio)
{
    if (!audio.contains(QStringLiteral("codec")))
        return {};
    const auto number = [&](const char* key) {
        return audio.value(QString::fromLatin1(key)).toInt();
    };
    const bool lossless = audio.value(QStringLiteral("lossless")).toBool();
    const QString output =
        audio.value(QStringLiteral("output")).toHash().value(QStringLiteral("name")).toString();
    constexpr int bitsPerKilobit = 1000;
    QStringList texts{ audio.value(QStringLiteral("codec")).toString(),
        ofHertz(number("sampleRate")), counted(number("bitDepth"), "bit"),
        counted(number("bitRate") / bitsPerKilobit, "kbit/s"),
        lossless ? QStringLiteral("lossless") : QString(),
        output.isEmpty() ? QString() : QStringLiteral("to ") + output };
    texts.removeAll(QString());
    return texts.join(QLatin1String(", "));
}

QString trackText(const QVariant& value)
{
    const QVariantHash row = value.toHash();
    QStringList names{ row.value(QStringLiteral("title")).toString(), artistOf(row) };
    names.removeAll(QString());
    return names.join(QLatin1String(" - "));
}

QString localTime(const QVariant& at)
{
    return QDateTime::fromString(at.toString(), Qt::ISODateWithMs)
        .toLocalTime()
        .toString(QStringLiteral("HH:mm"));
}

} // namespace

QString queueText(const QVariantHash& queue)
{
    QStringList lines;
    const QString from =
        queue.value(QStringLiteral("from")).toHash().value(QStringLiteral("title")).toString();
    const bool endless = queue.value(QStringLiteral("endless")).toBool();
    if (!from.isEmpty())
        lines += QStringLiteral("from   %1%2")
                     .arg(from, endless ? QStringLiteral(" (endless)") : QString());
    for (const QVariant& entry : queue.value(QStringLiteral("played")).toList())
        lines += localTime(entry.toHash().value(QStringLiteral("at"))) + QLatin1String("  ")
            + trackText(entry.toHash().value(QStringLiteral("row")));
    const QString now = trackText(queue.value(QStringLiteral("current")));
    const QString next = trackText(queue.value(QStringLiteral("next")));
    if (!now.isEmpty())
        lines += QLatin1String("now    ") + now;
    if (!next.isEmpty())
        lines += QLatin1String("next   ") + next;
    if (lines.isEmpty())
        return QStringLiteral("Nothing has played yet.");
    return lines.join(QLatin1Char('\n'));
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
    const QString sound = soundText(player.value(QStringLiteral("audio")).toHash());
    if (!sound.isEmpty())
        text += QLatin1Char('\n') + sound;
    const auto mode =
        static_cast<TavuPlayerPlayMode::Enum>(player.value(QStringLiteral("mode")).toInt());
    text += QStringLiteral("\nvolume %1%2, mode %3")
                .arg(player.value(QStringLiteral("volume")).toInt())
                .arg(player.value(QStringLiteral("mute")).toBool() ? QStringLiteral(" (muted)")
                                                                   : QString(),
                    TavuPlayerPlayMode::toString(mode));
    const QVariantHash sleep = player.value(QStringLiteral("sleep")).toHash();
    if (!sleep.isEmpty())
        text += QStringLiteral("\nsleeps in %1%2")
                    .arg(clockTime(sleep.value(QStringLiteral("remaining")).toLongLong()),
                        sleep.value(QStringLiteral("finishTrack")).toBool()
                            ? QStringLiteral(", at the end of the track")
                            : QString());
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
