#pragma once

#include "cmpath.h"
#include "tavuoauth2devicecode.h"
#include "tavuroles.h"

#include <QList>

/// What a login by device code looks like as rows. Pure: a record in, rows out.
namespace loginscreens {

/// The container: "Sign in to …".
TavuRoles container(const TavuOAuth2DeviceCode& login);

/// The rows for where the login stands. `newCode` is what the row "Get a new code" activates;
/// `notice`, unless empty, tells why the login is needed again.
QList<TavuRoles> rows(
    const TavuOAuth2DeviceCode& login, const CMPath& newCode, const QString& notice);

} // namespace loginscreens
