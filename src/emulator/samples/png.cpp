#include "png.h"

#include <QtEndian>

#include <array>

namespace emulator::samples {

namespace {

std::array<quint32, 256> makeCrcTable()
{
    std::array<quint32, 256> table{};
    for (quint32 n = 0; n < table.size(); ++n) {
        quint32 value = n;
        for (int bit = 0; bit < 8; ++bit)
            value = value & 1 ? 0xedb88320U ^ (value >> 1) : value >> 1;
        table[n] = value;
    }
    return table;
}

quint32 crc(const QByteArray& bytes)
{
    static const std::array<quint32, 256> table = makeCrcTable();
    quint32 value = 0xffffffffU;
    for (const char byte : bytes)
        value = table[(value ^ static_cast<unsigned char>(byte)) & 0xffU] ^ (value >> 8);
    return ~value;
}

QByteArray bigEndian(quint32 number)
{
    QByteArray bytes(4, Qt::Uninitialized);
    qToBigEndian(number, bytes.data());
    return bytes;
}

QByteArray chunk(const QByteArray& type, const QByteArray& data)
{
    return bigEndian(static_cast<quint32>(data.size())) + type + data + bigEndian(crc(type + data));
}

} // namespace

QByteArray encodePng(const QByteArray& rgb, int width, int height)
{
    const QByteArray header = bigEndian(static_cast<quint32>(width))
        + bigEndian(static_cast<quint32>(height)) + QByteArray("\x08\x02\x00\x00\x00", 5);
    // Each row begins with its filter: 2 stores the difference to the row above, which makes
    // pictures of smooth colours small.
    QByteArray rows;
    rows.reserve((3 * width + 1) * height);
    const int stride = 3 * width;
    for (int y = 0; y < height; ++y) {
        rows += '\x02';
        for (int i = 0; i < stride; ++i) {
            const char above = y > 0 ? rgb.at((y - 1) * stride + i) : '\0';
            rows += static_cast<char>(rgb.at(y * stride + i) - above);
        }
    }
    // qCompress() puts the length before the zlib stream.
    const QByteArray compressed = qCompress(rows, 9).mid(4);
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + chunk("IHDR", header) + chunk("IDAT", compressed)
        + chunk("IEND", {});
}

} // namespace emulator::samples
