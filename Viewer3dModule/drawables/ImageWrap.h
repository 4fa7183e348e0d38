#pragma once

#include <QtGui/QColor>

/// How an image goes on beyond its borders, where texture coordinates leave 0 to 1.
struct ImageWrap
{
    enum Mode {
        Repeat, ///< again and again
        Mirror, ///< again, every other time mirrored
        Clamp,  ///< as its outermost pixels
        Border  ///< in the colour of border, which the outermost pixels are mixed with
    };
    Mode mode = Repeat;
    QColor border = QColor(0, 0, 0, 0);
};
