#pragma once

#include "tavuexport.h"

#include <QObject>

/// Connects by signature strings as Qt's own macros write them: a signal's prefixed with the digit
/// 2, a slot's with the digit 1. A signature that either object lacks is a fault of the caller.
TAVU_EXPORT QMetaObject::Connection tavuConnect(const QObject* sender, const char* signal,
    const QObject* receiver, const char* slot, Qt::ConnectionType type);

/// Registers the types that travel in queued calls. Called by CMRoot(); a second call is harmless.
TAVU_EXPORT void tavuRegisterMetaTypes();
