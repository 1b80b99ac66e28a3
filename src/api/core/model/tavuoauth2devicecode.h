#pragma once

#include "tavuhash.h"

/// Where a device-code login stands, as the OAuth 2 service publishes it.
class TavuOAuth2DeviceCode : public TavuHash
{
    TAVU_RECORD(TavuOAuth2DeviceCode)
    /// "idle", "starting", "waiting" (for the user), "failed" or "loggedIn".
    TAVU_FIELD(QString, state, State)
    /// The service's name for people.
    TAVU_FIELD(QString, displayName, DisplayName)
    TAVU_FIELD(QString, userCode, UserCode)
    TAVU_FIELD(QString, verificationUri, VerificationUri)
    /// With the code in it; empty when the server sends none.
    TAVU_FIELD(QString, verificationUriComplete, VerificationUriComplete)
    /// Milliseconds since the epoch at which the code ends.
    TAVU_FIELD(qint64, expiresAt, ExpiresAt)
    /// For people: why a login failed, ended or cannot be renewed, and what to do.
    TAVU_FIELD(QString, message, Message)
};
