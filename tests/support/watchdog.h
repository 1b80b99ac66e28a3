#pragma once

#include <functional>

/// Turns the event loop of the calling thread until `state` holds. Returns whether it came to hold
/// within `watchdogMs` milliseconds. A test waits on states with it and never sleeps.
bool waitUntil(const std::function<bool()>& state, int watchdogMs = 10000);

/// Handles every event that is due now, those that handling them posts included.
void settle();
