#pragma once

#include <viewer/Viewpoint.h>

#include <framework/gmx/BoundingBox.h>

#include <QtCore/QSize>

#include <optional>

/// What an ortho picture shows: a rectangle of the model seen straight from above, north up, with pixels of a
/// given length. Its borders are multiples of that length, so that the pixels of several pictures coincide.
/// Model coordinates.
struct OrthoFrame
{
    double pixel = 1.0; ///< length
    QSize size;         ///< pixels
    double left = 0.0;  ///< x of the left border
    double top = 0.0;   ///< y of the upper border

    /// Of a picture of the size about the middle of the box, or of one that just holds the box and what
    /// stands on its border. A side that is longer than an int can say counts as the longest that one can.
    static OrthoFrame of(const gmx::BoundingBox& box, double pixel, const std::optional<QSize>& size);

    /// Looks down on the box, whose extent in z is what is seen. Model coordinates.
    Viewpoint viewpoint(const gmx::BoundingBox& box) const;
};
