#pragma once

#include "apicontext.h"
#include "httprouter.h"

namespace control {

/// Play commands, play mode, volume and outputs. The context must outlive the router.
void addPlayRoutes(http::Router& router, const ApiContext& api);

} // namespace control
