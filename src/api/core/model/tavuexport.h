#pragma once

#include <QtGlobal>

/// Marks what a host library offers to plug-ins. Everything else stays hidden in its library.
#define TAVU_EXPORT Q_DECL_EXPORT
