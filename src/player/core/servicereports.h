#pragma once

#include <QVariantList>

namespace player {

/// A plug-in collects the reports of its service on a screen that only grows: each report is a
/// message row and the rows of its buttons behind it, and the latest comes last. These are the rows
/// of the latest one, which is the one to show; those before it are among the player's messages.
QVariantList latestReport(const QVariantList& rows);

} // namespace player
