#pragma once

/// Every interval of the plug-in, in milliseconds.
namespace amazonMusicTimes {

/// So long requests wait for an access token before the session counts as invalid.
constexpr int invalidSession = 30000;
/// So long one request to the service may take.
constexpr int requestTimeout = 30000;
/// So long the answer to a rating stays on the screen.
constexpr int ratingDialog = 5000;

} // namespace amazonMusicTimes
