#pragma once

#include "tavuamazonmusic.h"

#include <QByteArray>
#include <QString>

namespace emulator::documents {

using ErrorReport = TavuAmazonMusicGeneralErrorReport;
using ErrorOption = TavuAmazonMusicGeneralErrorReportOption;

ErrorReport errorReport(const QString& brief, const QString& terse, const QString& explanation,
    const TavuList<ErrorOption>& options);

/// A button that opens a web page, posts to the service (and lets the player go on when `resume`),
/// or only closes the message.
ErrorOption linkOption(const QString& label, const QString& url);
ErrorOption postOption(const QString& label, const QString& url, bool resume);
ErrorOption closeOption(const QString& label);

/// The document that carries one report, as it stands in answers with status 409.
QByteArray errorDocument(const ErrorReport& report);

/// The answer to a rating.
QByteArray ratingDocument(const QString& message, bool shouldSkip);

} // namespace emulator::documents
