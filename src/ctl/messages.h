#pragma once

#include "apiclient.h"

#include <QVariant>

namespace ctl {

/// "Title: text", or the one that there is.
QString words(const QString& title, const QString& text);

/// A message or a screen in the lines that people read: its words, then its buttons, numbered from
/// 1, with the address of those that lead out.
QString messageText(const QVariantHash& message);
QString screenText(const QVariantList& rows);

/// The rows of a message or a screen that can be pressed or opened, in its order.
QVariantList buttonsOf(const QVariantList& rows);

/// The rows that an answer leads to; none when it leads nowhere.
QVariantList resultRows(ApiClient& api, const Answer& answer);

/// The player's messages, oldest first.
Answer readMessages(ApiClient& api, QVariantList& messages);

} // namespace ctl
