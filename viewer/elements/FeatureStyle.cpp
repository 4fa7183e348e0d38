#include <viewer/elements/FeatureStyle.h>

#include <viewer/elements/CityColors.h>
#include <viewer/elements/FeatureAreas.h>

#include <Viewer3dModule/drawers/DrawerType.h>
#include <framework/model/FeatureElement.h>

#include <algorithm>
#include <cmath>

namespace {

const QColor defaultStroke(40, 60, 160);
constexpr double widest = 100.0; // pixels

QColor readColor(const CModelElement& element, const char* name, const QColor& otherwise)
{
    const QString text = element.getProperty(QLatin1String(name)).toString();
    const QColor color = text.isEmpty() ? QColor() : QColor(text);
    return color.isValid() ? color : otherwise;
}

double readPixels(const CModelElement& element, const char* name, double otherwise)
{
    bool isNumber = false;
    const double value = element.getProperty(QLatin1String(name)).toDouble(&isNumber);
    return isNumber && std::isfinite(value) && value > 0.0 ? std::min(value, widest) : otherwise;
}

bool isDashed(const CModelElement& element)
{
    const QString dashes = element.getProperty(QStringLiteral("stroke-dasharray")).toString().trimmed();
    return (!dashes.isEmpty() && dashes != QLatin1String("none")) ||
           element.getProperty(QStringLiteral("dash")).toBool();
}

} // namespace

FeatureStyle FeatureStyle::of(const CModelElement& element, std::optional<float> pointSize)
{
    FeatureStyle style;
    style.pen.setColor(readColor(element, "stroke", defaultStroke));
    style.pen.setWidthF(readPixels(element, "stroke-width", 1.0));
    style.pen.setStyle(isDashed(element) ? Qt::DashLine : Qt::SolidLine);
    style.pointColor = readColor(element, "marker-color", style.pen.color());
    const auto otherwise = static_cast<double>(pointSize.value_or(style.pointSize));
    style.pointSize = static_cast<float>(readPixels(element, "marker-size", otherwise));
    style.setFill(element);
    return style;
}

void FeatureStyle::setFill(const CModelElement& element)
{
    constexpr double filled = 0.6, tinted = 0.3; // opacities
    const auto* feature = dynamic_cast<const FeatureElement*>(&element);
    const bool isRaised = feature && FeatureAreas::heightOf(*feature) > 0.0;
    const QColor own = readColor(element, "fill", QColor());
    const double usual = isRaised ? 1.0 : own.isValid() ? filled : tinted;
    const QColor roof = CityColors::of(QStringLiteral("RoofSurface"), QString());
    fill = own.isValid() ? own : isRaised ? roof : pen.color();
    wall = own.isValid() ? own : CityColors::of(QStringLiteral("WallSurface"), QString());
    bool isNumber = false;
    const double opacity = element.getProperty(QStringLiteral("fill-opacity")).toDouble(&isNumber);
    const double alpha = isNumber && opacity >= 0.0 && opacity <= 1.0 ? opacity : usual;
    fill.setAlphaF(fill.alphaF() * alpha);
    wall.setAlphaF(wall.alphaF() * alpha);
}

int FeatureStyle::lineDrawerType() const
{
    if (pen.style() != Qt::SolidLine) return DrawerType::DashedLines;
    return pen.widthF() > 1.0 ? DrawerType::WideLines : DrawerType::Mono;
}
