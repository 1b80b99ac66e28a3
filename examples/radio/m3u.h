#pragma once

#include <QString>
#include <QVector>

/// An entry of an M3U playlist.
struct Station
{
    QString title; ///< The entry's title, else its address.
    QString url;
};

/// The entries of a playlist whose addresses are http or https, in their order. `text` is the
/// playlist, decoded; what is no such entry is passed over.
QVector<Station> readM3u(const QString& text);
