#pragma once

#include <vector>

namespace emulator::samples {

enum class Instrument { Pluck, Pad, Bell, Bass };

/// One note. Times are in beats from the piece's start, the pitch is a MIDI note number.
struct Note
{
    Instrument instrument = Instrument::Pluck;
    double start = 0;
    double length = 1;
    int pitch = 60;
    double level = 0.5; ///< 0 to 1
    double pan = 0; ///< -1 left to 1 right
};

/// A piece of music, ready to be sounded.
struct Score
{
    double beatsPerMinute = 90;
    double beats = 0;
    std::vector<Note> notes;
};

/// How a piece is made from chords. Each bar has four beats and one chord.
struct Sketch
{
    double beatsPerMinute = 90;
    int key = 57; ///< MIDI note of the tonic
    bool minor = true;
    std::vector<int> degrees; ///< the chord of each bar, 1 to 7; repeated to the piece's length
    int bars = 4;
    unsigned seed = 1; ///< chooses the melody
    bool bells = false; ///< the melody on bells, else plucked
    bool pads = true;
    int stepsPerBeat = 2; ///< speed of the arpeggio
};

/// Writes the piece out: bass, chords, arpeggio and a melody that keeps to the chords on the beats.
Score compose(const Sketch& sketch);

} // namespace emulator::samples
