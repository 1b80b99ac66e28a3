#pragma once

#include "../documents/rules.h"
#include "../faults/delivery.h"
#include "../faults/dial.h"
#include "httpmessage.h"
#include "ledger.h"

#include <optional>

namespace emulator {

/// One request on its way through the emulator.
struct Call
{
    http::Request request;
    documents::Moment moment;
    std::optional<faults::Dial::Hit> hit; ///< the fault that strikes it
    LedgerEntry entry; ///< what the ledger is told

    bool isHitBy(const char* effect) const
    {
        return hit && hit->effect.kind == QLatin1String(effect);
    }
};

/// The parts of a request's address, encoded as they were sent, and the host without its port.
QString encodedPath(const http::Request& request);
QString encodedQuery(const http::Request& request);
QString hostOf(const http::Request& request);

/// Whether the peer stands on this machine.
bool isLocal(const http::Request& request);

/// A JSON document that clients may keep but ask about at each use.
faults::Answer document(const QByteArray& json);
faults::Answer problem(int status, const QString& text);

} // namespace emulator
