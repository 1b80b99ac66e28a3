#pragma once

#include <QByteArray>
#include <QString>

namespace emulator::samples {

/// Draws a square cover picture of `size` pixels a side, as PNG. The same name gives the same
/// picture; different names differ in colours and figure.
QByteArray drawCover(const QString& name, int size);

} // namespace emulator::samples
