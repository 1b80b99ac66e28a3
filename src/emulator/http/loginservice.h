#pragma once

#include "../oauth2/approvalpage.h"
#include "../oauth2/authority.h"
#include "gateway.h"

#include <functional>

namespace emulator {

/// The HTTP side of logging in: device authorization, tokens, and the page where the user approves.
class LoginService
{
public:
    /// `verificationUri` gives the page's address as a user can reach it.
    LoginService(oauth2::Authority& authority, const QByteArray& secret,
        std::function<QString()> verificationUri);

    void addRoutes(Gateway& gateway);

private:
    faults::Answer authorizeDevice(Call& call);
    faults::Answer token(Call& call);
    faults::Answer showForm(Call& call);
    faults::Answer takeForm(Call& call);
    faults::Answer form(Call& call, const QString& userCode, const QString& problem) const;

    oauth2::Authority& m_authority;
    oauth2::ApprovalPage m_page;
    std::function<QString()> m_verificationUri;
};

} // namespace emulator
