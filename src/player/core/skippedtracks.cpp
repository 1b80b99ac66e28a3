#include "skippedtracks.h"

#include "trstring.h"

#include <utility>

namespace player {

namespace {

constexpr int burstMs = 200;
constexpr int titlesNamed = 5;

QString named(const QStringList& titles)
{
    const QString names = titles.mid(0, titlesNamed).join(QStringLiteral(", "));
    return titles.size() > titlesNamed ? names + QStringLiteral(", …") : names;
}

QString headline(const QStringList& titles)
{
    if (titles.size() == 1)
        return TrString(TrCharData(trExtractContext("player"), "Skipped “%1”"), { titles.first() })
            .toString();
    return TrString(TrCharData(trExtractContext("player"), "Skipped %1 tracks"),
        { QString::number(titles.size()) })
        .toString();
}

} // namespace

SkippedTracks::SkippedTracks(QObject* parent)
    : QObject(parent)
{
    m_pause.setSingleShot(true);
    m_pause.setInterval(burstMs);
    connect(&m_pause, &QTimer::timeout, this, &SkippedTracks::flush);
}

void SkippedTracks::add(const QString& title, const QString& reason)
{
    if (reason != m_reason)
        flush();
    m_reason = reason;
    m_titles.append(title);
    m_pause.start();
}

void SkippedTracks::flush()
{
    m_pause.stop();
    const QStringList titles = std::exchange(m_titles, {});
    if (titles.isEmpty())
        return;
    const QString text =
        titles.size() == 1 ? m_reason : m_reason + QStringLiteral("\n") + named(titles);
    Q_EMIT told(headline(titles), text);
}

} // namespace player
