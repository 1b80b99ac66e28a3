#pragma once

#include <string>

/// Takes out of log texts what must not be read there: access and refresh tokens, codes, client
/// secrets, key headers, and the signed part of stream URLs. The texts around stay as they are.
/// Callable on any thread.
namespace player {

/// From now on `secret` is replaced wherever it stands. Texts shorter than 6 characters are passed
/// over: they would take out innocent words. The last 64 are remembered, which is enough for
/// secrets that others come to replace; one that stays good for longer is to be added again.
void addSecret(const std::string& secret);
/// The same for one that stays good for as long as the player runs: it is never forgotten.
void addLastingSecret(const std::string& secret);

std::string redacted(const std::string& text);

} // namespace player
