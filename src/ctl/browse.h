#pragma once

#include "apiclient.h"

#include <QVariant>

namespace ctl {

/// A screen of the player: its path and the rows read so far.
struct Screen
{
    QString path;
    QString title;
    QVariantList rows;
    int count = 0;
};

/// Walks the player's screens as a person does.
class Browse
{
public:
    explicit Browse(ApiClient& api)
        : m_api(api)
    {
    }

    /// All rows of a path, asked for in windows. An empty path is the root.
    Answer screen(const QString& path, Screen& screen);
    /// Follows "Albums/3/Track title" from the root: each step is a row's number, counted from 1,
    /// or its title, in which "\/" stands for "/" and "\\" for "\". A first step "?words" is what a
    /// search for the words finds. On success `row` is the row of the last step; an empty walk
    /// gives an empty row.
    Answer walk(const QString& steps, QVariantHash& row);

    /// What a search finds, as a row that leads there.
    Answer search(const QString& text, QVariantHash& row);

private:
    Answer step(const QString& step, const QVariantHash& from, QVariantHash& row);

    ApiClient& m_api;
};

/// The steps of a walk, without their escapes; empty ones are left out.
QStringList stepsOf(const QString& walk);
/// The text as a step of a walk.
QString asStep(const QString& text);
/// The row that `step` names; an empty hash when there is none.
QVariantHash pickRow(const QVariantList& rows, const QString& step);

} // namespace ctl
