#pragma once

#include <QtGui/QColor>
#include <QtGui/QPen>

#include <optional>

class CModelElement;

/// How a feature is drawn, by its properties: "stroke" (colour), "stroke-width" (pixels), "stroke-dasharray"
/// (anything but empty and "none") or "dash": true, "marker-color" and "marker-size" (pixels) of its points,
/// "fill" (colour) and "fill-opacity" (0 to 1) of its areas.
struct FeatureStyle
{
    QPen pen;
    QColor pointColor;
    float pointSize = 6.0f; ///< pixels
    /// Of areas, and of the roofs of those that are raised: opaque there, otherwise six tenths, and without
    /// "fill" three tenths of the stroke's colour.
    QColor fill;
    QColor wall; ///< of raised areas

    /// pointSize (pixels): that of points without "marker-size"; 6 without it.
    static FeatureStyle of(const CModelElement& element, std::optional<float> pointSize = {});
    /// The type of drawer that draws lines with the pen.
    int lineDrawerType() const;

private:
    void setFill(const CModelElement& element);
};
