#pragma once

#include "httpresponder.h"

#include <QByteArray>
#include <QCache>
#include <QHash>
#include <QObject>
#include <QString>
#include <QVector>

#include <functional>

namespace control {

/// A picture as it was fetched.
struct Artwork
{
    int code = 0; ///< HTTP status; 0 when the transfer failed
    QByteArray contentType;
    QByteArray bytes;
};

/// Fetches a picture and calls back once, from the event loop, on the calling thread.
using ArtworkFetch =
    std::function<void(const QString& url, const std::function<void(const Artwork&)>& done)>;

/// Pictures of the service under addresses of the player, so that a client needs neither the
/// service's addresses nor a way to them. Only pictures that the player has seen in a row can be
/// asked for. Keeps the latest 4,096 addresses and 8 MiB of pictures.
class ArtworkStore : public QObject
{
    Q_OBJECT

public:
    explicit ArtworkStore(ArtworkFetch fetch, QObject* parent = nullptr);

    /// What clients see in place of an icon: the player's address for a picture on the web, the
    /// icon itself when it names one of the player's own ("skin:…"), else the empty text.
    QString addressOf(const QString& icon);

    /// Answers with the picture of an id: 404 for an unknown one, 502 when it cannot be had.
    void serve(const QString& id, const http::Responder& responder);

private:
    void fetched(const QString& id, const Artwork& artwork);

    ArtworkFetch m_fetch;
    QCache<QString, QString> m_urls;
    QCache<QString, Artwork> m_pictures;
    /// Clients that wait for the same picture.
    QHash<QString, QVector<http::Responder>> m_waiting;
};

} // namespace control
