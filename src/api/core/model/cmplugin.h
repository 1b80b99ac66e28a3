#pragma once

#include <QVariant>

class CMAbstractWorker;

/// The one symbol that a plug-in exports. The player loads the library by its path, never unloads
/// it, and calls the entry once, on the thread that is to be the worker's. The call may block on
/// services of other threads; it returns a new worker, which the caller owns, mounts under its
/// prefix and destroys on the same thread. `reserved` is null and ignored; `settings` may name the
/// worker's "prefix".
extern "C" {
using CMWorkerCreate = CMAbstractWorker*(void* reserved, const QVariantHash& settings);
}

/// The name to look the entry up by.
constexpr const char* CMWorkerCreateName = "worker_create";
