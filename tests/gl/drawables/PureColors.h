#pragma once

#include <QtGui/QColor>

inline const QColor black(0, 0, 0);
inline const QColor red(255, 0, 0);
inline const QColor green(0, 255, 0);
inline const QColor blue(0, 0, 255);
