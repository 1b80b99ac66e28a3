#pragma once

#include "tavuenums.h"
#include "tavuhash.h"

/// What the host's OAuth 2 service needs to sign a user in to a service (RFC 6749, RFC 8628).
class TavuOAuth2ServiceInfo : public TavuHash
{
    TAVU_RECORD(TavuOAuth2ServiceInfo)
    TAVU_FIELD(QString, serviceName, ServiceName)
    TAVU_FIELD(QString, displayName, DisplayName)
    TAVU_FIELD(QString, authorizationUrl, AuthorizationUrl)
    TAVU_FIELD(QString, clientId, ClientId)
    TAVU_FIELD(QString, clientSecret, ClientSecret)
    TAVU_FIELD(QString, tokenUrl, TokenUrl)
    TAVU_FIELD(QString, scope, Scope)
    /// Further parameters of the authorization request.
    TAVU_FIELD(QVariant, scopeData, ScopeData)
    /// Proof Key for Code Exchange (RFC 7636).
    TAVU_FIELD(bool, usePkce, UsePkce)
    TAVU_FIELD(TavuOAuth2AuthMethod::Enum, authMethod, AuthMethod)
    TAVU_FIELD(QString, deviceCodeUrl, DeviceCodeUrl)
    TAVU_FIELD(QString, deviceCodeGrantType, DeviceCodeGrantType)
};
