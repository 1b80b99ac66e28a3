#pragma once

#include "apicontext.h"
#include "httprouter.h"

namespace control {

/// Login and logout, with the code as a picture. The context must outlive the router.
void addLoginRoutes(http::Router& router, const ApiContext& api);

} // namespace control
