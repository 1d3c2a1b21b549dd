#pragma once

#include <QColor>
#include <QImage>
#include <QList>

namespace kelvane {

// Colours taken from a picture to colour the effects drawn on the notch's black.
namespace Palette {
// The picture's most present colourful hue, made light enough to read on black; a picture
// without colour gives a light grey.
QColor accent(const QImage& picture);
// Up to `count` distinct colours, the most present first, as they are in the picture.
QList<QColor> dominant(const QImage& picture, int count);
} // namespace Palette

} // namespace kelvane
