#pragma once

#include <benchmarks/harness/Work.h>

#include <QtCore/QRect>

/// A rectangle in the middle of the view, of a twentieth of its area.
inline QRect selectedRect()
{
    return QRect(497, 279, 286, 161);
}

/// What lies in that rectangle.
std::vector<Work> selectWorks();
