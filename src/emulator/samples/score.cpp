#include "score.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace emulator::samples {

namespace {

constexpr int beatsPerBar = 4;
constexpr std::array<int, 7> majorScale{ 0, 2, 4, 5, 7, 9, 11 };
constexpr std::array<int, 7> minorScale{ 0, 2, 3, 5, 7, 8, 10 };

// A small generator of our own: the same seed gives the same music with every standard library.
class Dice
{
public:
    explicit Dice(unsigned seed)
        : m_state(seed * 2654435761U + 1)
    {
    }

    int roll(int sides)
    {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 17;
        m_state ^= m_state << 5;
        return static_cast<int>(m_state % static_cast<unsigned>(sides));
    }

private:
    unsigned m_state;
};

class Composer
{
public:
    explicit Composer(const Sketch& sketch)
        : m_sketch(sketch)
        , m_dice(sketch.seed)
    {
        m_score.beatsPerMinute = sketch.beatsPerMinute;
        m_score.beats = sketch.bars * beatsPerBar;
    }

    Score write()
    {
        for (int bar = 0; bar < m_sketch.bars; ++bar)
            writeBar(bar);
        return m_score;
    }

private:
    // Pitch of a scale step; steps count from 0 and may leave the octave.
    int pitch(int step) const
    {
        const auto& scale = m_sketch.minor ? minorScale : majorScale;
        const int octave = step >= 0 ? step / 7 : (step - 6) / 7;
        return m_sketch.key + 12 * octave + scale[static_cast<size_t>(step - 7 * octave)];
    }

    void add(
        Instrument instrument, double start, double length, int pitch, double level, double pan)
    {
        m_score.notes.push_back({ instrument, start, length, pitch, level, pan });
    }

    void writeBar(int bar)
    {
        const auto& degrees = m_sketch.degrees;
        const int root = degrees[static_cast<size_t>(bar) % degrees.size()] - 1;
        const double start = bar * beatsPerBar;
        writeBass(root, start);
        if (m_sketch.pads)
            writePad(root, start);
        writeArpeggio(root, start);
        writeMelody(root, start);
    }

    void writeBass(int root, double start)
    {
        add(Instrument::Bass, start, 2.5, pitch(root) - 24, 0.55, 0);
        add(Instrument::Bass, start + 2.5, 1.5, pitch(root) - 24, 0.4, 0);
    }

    void writePad(int root, double start)
    {
        for (int voice = 0; voice < 3; ++voice)
            add(Instrument::Pad, start, beatsPerBar + 0.5, pitch(root + 2 * voice) - 12, 0.17,
                0.5 * (voice - 1));
    }

    void writeArpeggio(int root, double start)
    {
        static constexpr std::array<int, 8> pattern{ 0, 2, 4, 7, 4, 2, 4, 2 };
        const int steps = beatsPerBar * m_sketch.stepsPerBeat;
        for (int step = 0; step < steps; ++step) {
            const int interval = pattern[static_cast<size_t>(step) % pattern.size()];
            const double accent = step % m_sketch.stepsPerBeat == 0 ? 0.34 : 0.24;
            add(Instrument::Pluck, start + step / double(m_sketch.stepsPerBeat), 1.5,
                pitch(root + interval), accent, step % 2 ? 0.45 : -0.45);
        }
    }

    // On the beat a tone of the chord near the last one, between the beats a passing step.
    void writeMelody(int root, double start)
    {
        static constexpr std::array<std::array<double, 4>, 4> rhythms{ { { 0, 1.5, 2, 3 },
            { 0, 1, 2.5, 3.5 }, { 0.5, 1.5, 2, 3.5 }, { 0, 2, 2.5, 3 } } };
        const auto& rhythm = rhythms[static_cast<size_t>(m_dice.roll(4))];
        for (size_t i = 0; i < rhythm.size(); ++i) {
            if (m_dice.roll(6) == 0)
                continue;
            const double next = i + 1 < rhythm.size() ? rhythm[i + 1] : beatsPerBar;
            m_step = nextStep(root, rhythm[i] == static_cast<int>(rhythm[i]));
            add(m_sketch.bells ? Instrument::Bell : Instrument::Pluck, start + rhythm[i],
                next - rhythm[i] + 0.5, pitch(m_step), 0.5, 0.1);
        }
    }

    int nextStep(int root, bool onBeat)
    {
        if (!onBeat)
            return std::clamp(m_step + m_dice.roll(3) - 1, 6, 15);
        int best = m_step;
        int bestDistance = 100;
        const int wish = m_step + m_dice.roll(5) - 2;
        for (int step = 7; step <= 14; ++step) {
            const int interval = ((step - root) % 7 + 7) % 7;
            const bool chordTone = interval == 0 || interval == 2 || interval == 4;
            if (chordTone && std::abs(step - wish) < bestDistance) {
                best = step;
                bestDistance = std::abs(step - wish);
            }
        }
        return best;
    }

    const Sketch& m_sketch;
    Dice m_dice;
    Score m_score;
    int m_step = 9;
};

} // namespace

Score compose(const Sketch& sketch)
{
    return Composer(sketch).write();
}

} // namespace emulator::samples
