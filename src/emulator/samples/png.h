#pragma once

#include <QByteArray>

namespace emulator::samples {

/// A PNG file of `width` x `height` pixels. `rgb` holds three bytes a pixel, row after row from the
/// top.
QByteArray encodePng(const QByteArray& rgb, int width, int height);

} // namespace emulator::samples
