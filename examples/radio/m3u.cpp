#include "m3u.h"

#include <QUrl>

namespace {

const QLatin1String entryMark("#EXTINF:");

/// The title behind "#EXTINF:-1 key="value",Title". Commas may stand in quoted values too.
QString titleOf(const QString& line)
{
    bool quoted = false;
    for (int i = entryMark.size(); i < line.size(); ++i) {
        if (line.at(i) == QLatin1Char('"'))
            quoted = !quoted;
        else if (line.at(i) == QLatin1Char(',') && !quoted)
            return line.mid(i + 1).trimmed();
    }
    return QString();
}

bool isStation(const QUrl& url)
{
    const bool http =
        url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    return url.isValid() && http && !url.host().isEmpty();
}

} // namespace

QVector<Station> readM3u(const QString& text)
{
    QVector<Station> stations;
    QString title;
    for (const QString& raw : text.split(QLatin1Char('\n'))) {
        const QString line = raw.trimmed();
        if (line.startsWith(entryMark)) {
            title = titleOf(line);
        } else if (!line.isEmpty() && !line.startsWith(QLatin1Char('#'))) {
            if (isStation(QUrl(line)))
                stations.append({ title.isEmpty() ? line : title, line });
            title.clear();
        }
    }
    return stations;
}
