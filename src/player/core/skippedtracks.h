#pragma once

#include <QObject>
#include <QStringList>
#include <QTimer>

namespace player {

/// Tracks that were skipped in one go, for one reason, make one message instead of one each: an
/// album whose tracks have all become unplayable would drown the reason in notes.
class SkippedTracks : public QObject
{
    Q_OBJECT

public:
    explicit SkippedTracks(QObject* parent = nullptr);

    /// One more; it is told of shortly after, together with those that follow at once.
    void add(const QString& title, const QString& reason);
    /// Tells what has not been told yet. Call it before telling anything that came later.
    void flush();

Q_SIGNALS:
    void told(const QString& title, const QString& text);

private:
    QStringList m_titles;
    QString m_reason;
    QTimer m_pause;
};

} // namespace player
