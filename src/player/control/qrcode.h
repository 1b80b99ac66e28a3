#pragma once

#include <QByteArray>
#include <QString>

namespace control {

/// The text as a QR code (ISO/IEC 18004, error correction level M) with its quiet zone: an SVG
/// document, dark on white. Empty for a text that is empty or too long for a code.
QByteArray qrSvg(const QString& text);

} // namespace control
