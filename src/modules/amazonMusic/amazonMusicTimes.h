#pragma once

/// Every interval of the plug-in, in milliseconds.
namespace amazonMusicTimes {

/// So long requests wait for an access token before the session counts as invalid.
constexpr int invalidSession = 30000;
/// So long one request to the service may take.
constexpr int requestTimeout = 30000;
/// So long the answer to a rating stays on the screen.
constexpr int ratingDialog = 5000;
/// So long the words with which the service refused to go on playing stay on the screen.
constexpr int refusalDialog = 300000;
/// So long after a play, a seek or an unpause a drop of the buffer is no underrun.
constexpr int waitForPlaying = 1000;

} // namespace amazonMusicTimes
