#include "qrcode.h"

#include <qrencode.h>

#include <memory>

namespace control {

namespace {

constexpr int quietZone = 4;

/// Each run of dark modules in a line becomes one rectangle.
QByteArray darkModules(const QRcode& code)
{
    QByteArray path;
    const auto isDark = [&](int x, int y) { return (code.data[y * code.width + x] & 1) != 0; };
    for (int y = 0; y < code.width; ++y) {
        for (int x = 0; x < code.width; ++x) {
            const int start = x;
            while (x < code.width && isDark(x, y))
                ++x;
            if (x == start)
                continue;
            const QByteArray length = QByteArray::number(x - start);
            path += 'M' + QByteArray::number(start + quietZone) + ' '
                + QByteArray::number(y + quietZone) + 'h' + length + "v1h-" + length + 'z';
        }
    }
    return path;
}

} // namespace

QByteArray qrSvg(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    if (bytes.isEmpty())
        return {};
    const std::unique_ptr<QRcode, decltype(&QRcode_free)> code(
        QRcode_encodeData(bytes.size(), reinterpret_cast<const unsigned char*>(bytes.constData()),
            0, QR_ECLEVEL_M),
        QRcode_free);
    if (!code)
        return {};
    const QByteArray size = QByteArray::number(code->width + 2 * quietZone);
    return R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 )" + size + ' ' + size
        + R"(" shape-rendering="crispEdges"><path fill="#fff" d="M0 0h)" + size + 'v' + size
        + R"(H0z"/><path d=")" + darkModules(*code) + "\"/></svg>\n";
}

} // namespace control
