#include "cover.h"

#include "../catalogue/catalogue.h"
#include "png.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace emulator::samples {

namespace {

struct Colour
{
    double red = 0;
    double green = 0;
    double blue = 0;
};

Colour mix(const Colour& a, const Colour& b, double share)
{
    return { a.red + (b.red - a.red) * share, a.green + (b.green - a.green) * share,
        a.blue + (b.blue - a.blue) * share };
}

struct Palette
{
    Colour sky;
    Colour ground;
    Colour light;
};

constexpr std::array<Palette, 6> palettes{ {
    { { 18, 32, 64 }, { 226, 122, 92 }, { 255, 222, 158 } },
    { { 10, 61, 74 }, { 98, 176, 162 }, { 245, 239, 214 } },
    { { 52, 22, 70 }, { 206, 84, 120 }, { 255, 196, 140 } },
    { { 24, 54, 38 }, { 142, 176, 92 }, { 250, 236, 170 } },
    { { 38, 40, 52 }, { 120, 132, 160 }, { 238, 120, 84 } },
    { { 74, 30, 30 }, { 216, 150, 84 }, { 252, 230, 198 } },
} };

double smooth(double edge, double width, double value)
{
    return std::clamp((value - edge) / width + 0.5, 0.0, 1.0);
}

class Painter
{
public:
    explicit Painter(catalogue::Id seed)
        : m_palette(palettes[seed % palettes.size()])
        , m_figure(static_cast<int>(seed / 7 % 3))
        , m_across(0.3 + 0.4 * static_cast<double>(seed / 31 % 100) / 100)
        , m_up(0.28 + 0.3 * static_cast<double>(seed / 3001 % 100) / 100)
    {
    }

    // x and y run from 0 to 1, y downwards.
    Colour at(double x, double y) const
    {
        Colour colour = mix(m_palette.sky, m_palette.ground, y * y);
        colour = mix(colour, m_palette.light, 0.95 * figure(x, y));
        return mix(colour, m_palette.sky, 0.85 * hills(x, y));
    }

private:
    double figure(double x, double y) const
    {
        const double distance = std::hypot(x - m_across, y - m_up);
        if (m_figure == 0)
            return 1 - smooth(0.19, 0.005, distance);
        if (m_figure == 1)
            return (1 - smooth(0.24, 0.005, distance)) * smooth(0.0, 0.2, std::sin(distance * 110));
        return (1 - smooth(0.23, 0.005, distance))
            * (y < m_up ? 1.0 : smooth(0.0, 0.2, std::sin((y - m_up) * 120)));
    }

    double hills(double x, double y) const
    {
        const double far = 0.74 + 0.05 * std::sin(5 * x + 9 * m_across);
        const double near = 0.86 + 0.06 * std::sin(7 * x + 20 * m_up);
        return 0.55 * smooth(far, 0.004, y) + 0.45 * smooth(near, 0.004, y);
    }

    Palette m_palette;
    int m_figure;
    double m_across;
    double m_up;
};

} // namespace

QByteArray drawCover(const QString& name, int size)
{
    const Painter painter(catalogue::makeId(QStringLiteral("cover"), name));
    QByteArray pixels;
    pixels.reserve(3 * size * size);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const Colour colour = painter.at((x + 0.5) / size, (y + 0.5) / size);
            pixels += static_cast<char>(colour.red);
            pixels += static_cast<char>(colour.green);
            pixels += static_cast<char>(colour.blue);
        }
    }
    return encodePng(pixels, size, size);
}

} // namespace emulator::samples
