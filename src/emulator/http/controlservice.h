#pragma once

#include "../catalogue/library.h"
#include "../faults/dial.h"
#include "../oauth2/authority.h"
#include "gateway.h"
#include "httpstaticfiles.h"
#include "ledger.h"

namespace emulator {

/// What the one who runs the emulator can see and turn, under "/emulator/": its state, the ledger,
/// the fault dial and the logins, as JSON and as pages. Answers this machine only, and changes
/// nothing on behalf of foreign pages.
class ControlService
{
public:
    ControlService(Ledger& ledger, faults::Dial& dial, oauth2::Authority& authority,
        catalogue::Library& library);

    void addRoutes(Gateway& gateway);

private:
    faults::Answer status(Call& call);
    faults::Answer catalogue(Call& call);
    faults::Answer rescan(Call& call);
    faults::Answer ledger(Call& call);
    faults::Answer clearLedger(Call& call);
    faults::Answer listFaults(Call& call);
    faults::Answer addFaults(Call& call);
    faults::Answer clearFaults(Call& call);
    faults::Answer removeFault(Call& call);
    faults::Answer listEffects(Call& call);
    faults::Answer login(Call& call);

    QVariantHash statusFields() const;
    void servePage(const http::Request& request, const http::Responder& responder) const;

    Ledger& m_ledger;
    faults::Dial& m_dial;
    oauth2::Authority& m_authority;
    catalogue::Library& m_library;
    http::StaticFiles m_pages;
};

} // namespace emulator
