#include <viewer/cli/PointSizeOption.h>

#include <viewer/cli/CommandParser.h>
#include <viewer/cli/UsageError.h>

namespace {

constexpr double largestPoint = 255.0; // pixels; OpenGL drivers draw larger points no larger

} // namespace

void PointSizeOption::declare(CommandParser& parser)
{
    parser.add({"point-size"}, "size of points without one of their own; 2 at first, in features 6",
               "PIXELS");
}

std::optional<float> PointSizeOption::read(const CommandParser& parser)
{
    if (!parser.isSet("point-size")) return {};
    const QString text = parser.value("point-size");
    bool isNumber = false;
    const double size = text.trimmed().toDouble(&isNumber);
    if (!isNumber || !(size > 0.0 && size <= largestPoint))
        throw UsageError(
            QStringLiteral("--point-size %1: a number of pixels is wanted, more than 0 and at most %2")
                .arg(text, QString::number(largestPoint)));
    return static_cast<float>(size);
}
