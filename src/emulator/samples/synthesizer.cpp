#include "synthesizer.h"

#include <algorithm>
#include <cmath>

namespace emulator::samples {

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double loudest = 0.8; ///< of full scale, so that lossy encoding does not clip

double frequency(int pitch)
{
    return 440.0 * std::pow(2.0, (pitch - 69) / 12.0);
}

// A sine as a turning vector: four multiplications a sample in place of a call to sin().
class Sine
{
public:
    Sine(double hertz, int rate, double level)
        : m_x(level)
        , m_turnX(std::cos(2 * pi * hertz / rate))
        , m_turnY(std::sin(2 * pi * hertz / rate))
    {
    }

    double next()
    {
        const double x = m_x * m_turnX - m_y * m_turnY;
        m_y = m_x * m_turnY + m_y * m_turnX;
        m_x = x;
        return m_y;
    }

private:
    double m_x;
    double m_y = 0;
    double m_turnX;
    double m_turnY;
};

// A plucked string: noise that runs round a delay line and is smoothed at each turn.
class String
{
public:
    String(double hertz, int rate)
        : m_line(std::max<size_t>(2, static_cast<size_t>(rate / hertz)))
        , m_loss(std::pow(0.001, 1.0 / (hertz * 2.2)))
    {
        unsigned noise = 22222;
        double smooth = 0;
        for (double& cell : m_line) {
            noise = noise * 196314165U + 907633515U;
            smooth += 0.5 * (noise / 2147483648.0 - 1.0 - smooth);
            cell = smooth;
        }
    }

    double next()
    {
        const size_t after = m_place + 1 < m_line.size() ? m_place + 1 : 0;
        const double out = m_line[m_place];
        m_line[m_place] = m_loss * 0.5 * (out + m_line[after]);
        m_place = after;
        return out;
    }

private:
    std::vector<double> m_line;
    size_t m_place = 0;
    double m_loss;
};

class Mixer
{
public:
    Mixer(const Score& score, int rate)
        : m_score(score)
        , m_rate(rate)
        , m_frames(frameOfBeat(score, rate, score.beats))
        , m_mix(m_frames * 2)
    {
    }

    std::vector<float> mix()
    {
        for (const Note& note : m_score.notes)
            sound(note);
        return std::move(m_mix);
    }

private:
    double seconds(double beats) const { return beats * 60.0 / m_score.beatsPerMinute; }

    template <typename Source>
    void add(const Note& note, double ringSeconds, double attack, double release, Source source)
    {
        const size_t begin = frameOfBeat(m_score, m_rate, note.start);
        const auto length = static_cast<size_t>(ringSeconds * m_rate);
        const size_t end = std::min(m_frames, begin + length);
        const double left = note.level * std::sqrt(0.5 * (1 - note.pan));
        const double right = note.level * std::sqrt(0.5 * (1 + note.pan));
        for (size_t frame = begin; frame < end; ++frame) {
            const double at = double(frame - begin) / m_rate;
            const double envelope = std::min({ 1.0, at / attack, (ringSeconds - at) / release });
            const double value = envelope * source();
            m_mix[2 * frame] += static_cast<float>(left * value);
            m_mix[2 * frame + 1] += static_cast<float>(right * value);
        }
    }

    void sound(const Note& note)
    {
        const double hertz = frequency(note.pitch);
        const double length = seconds(note.length);
        switch (note.instrument) {
        case Instrument::Pluck:
            return pluck(note, hertz, length);
        case Instrument::Pad:
            return pad(note, hertz, length);
        case Instrument::Bell:
            return bell(note, hertz, length);
        case Instrument::Bass:
            return bass(note, hertz, length);
        }
    }

    void pluck(const Note& note, double hertz, double length)
    {
        String string(hertz, m_rate);
        add(note, length + 0.6, 0.001, 0.5, [&] { return 2.2 * string.next(); });
    }

    void pad(const Note& note, double hertz, double length)
    {
        Sine low(hertz * 0.997, m_rate, 0.5);
        Sine high(hertz * 1.003, m_rate, 0.5);
        Sine octave(hertz * 2.001, m_rate, 0.15);
        add(note, length + 0.8, 0.5, 0.9, [&] { return low.next() + high.next() + octave.next(); });
    }

    void bell(const Note& note, double hertz, double length)
    {
        Sine body(hertz, m_rate, 0.7);
        Sine shimmer(hertz * 2.756, m_rate, 0.25);
        double decay = 1;
        const double loss = std::pow(0.01, 1.0 / (1.8 * m_rate));
        add(note, length + 1.2, 0.002, 0.8, [&] {
            decay *= loss;
            return decay * (body.next() + decay * shimmer.next());
        });
    }

    void bass(const Note& note, double hertz, double length)
    {
        Sine root(hertz, m_rate, 0.7);
        Sine second(hertz * 2, m_rate, 0.3);
        add(note, length + 0.1, 0.01, 0.15, [&] { return root.next() + second.next(); });
    }

    const Score& m_score;
    int m_rate;
    size_t m_frames;
    std::vector<float> m_mix;
};

void fadeOut(std::vector<float>& mix, size_t fadeFrames)
{
    const size_t frames = mix.size() / 2;
    const size_t begin = frames - std::min(frames, fadeFrames);
    for (size_t frame = begin; frame < frames; ++frame) {
        const auto gain = static_cast<float>(frames - frame) / static_cast<float>(fadeFrames);
        mix[2 * frame] *= gain;
        mix[2 * frame + 1] *= gain;
    }
}

std::vector<int16_t> quantize(const std::vector<float>& mix)
{
    float peak = 1e-6F;
    for (const float value : mix)
        peak = std::max(peak, std::abs(value));
    const double gain = loudest * 32767 / peak;
    std::vector<int16_t> samples(mix.size());
    std::transform(mix.begin(), mix.end(), samples.begin(),
        [gain](float value) { return static_cast<int16_t>(std::lround(gain * value)); });
    return samples;
}

} // namespace

Sound synthesize(const Score& score, int rate, double fadeSeconds)
{
    std::vector<float> mix = Mixer(score, rate).mix();
    fadeOut(mix, static_cast<size_t>(fadeSeconds * rate));
    return { rate, quantize(mix) };
}

Sound cut(const Sound& sound, size_t begin, size_t end)
{
    const auto first = sound.samples.begin();
    return { sound.rate,
        { first + static_cast<std::ptrdiff_t>(2 * begin),
            first + static_cast<std::ptrdiff_t>(2 * end) } };
}

size_t frameOfBeat(const Score& score, int rate, double beat)
{
    return static_cast<size_t>(std::llround(beat * 60.0 / score.beatsPerMinute * rate));
}

} // namespace emulator::samples
