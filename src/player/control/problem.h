#pragma once

#include "httpmessage.h"

#include <QString>
#include <QVariant>

class CMError;

namespace control {

/// An answer in JSON that is not to be kept.
http::Response json(const QVariantHash& body, int status = 200);

/// Problem details (RFC 9457). `title` and `detail` are for people; an empty title becomes the
/// status's own phrase. `instance` names this one failure, in the log too.
http::Response problem(int status, const QString& title = {}, const QString& detail = {},
    const QVariantHash& more = {});

} // namespace control
