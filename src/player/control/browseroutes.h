#pragma once

#include "apicontext.h"
#include "httprouter.h"

namespace control {

/// 404 for a name of a row that has been forgotten, or never was one.
http::Response unknownRow();

/// Rows, activations and searches. The context must outlive the router.
void addBrowseRoutes(http::Router& router, const ApiContext& api);

} // namespace control
