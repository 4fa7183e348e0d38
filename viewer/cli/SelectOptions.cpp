#include <viewer/cli/SelectOptions.h>

#include <viewer/cli/CommandParser.h>
#include <viewer/cli/FenceOption.h>
#include <viewer/cli/OptionValue.h>
#include <viewer/cli/PointSizeOption.h>
#include <viewer/cli/UsageError.h>

#include <cmath>

namespace {

constexpr double farthest = 1e6; // pixels, as far as a picture can be large

std::vector<double> readPixels(const QString& option, const QString& text)
{
    std::vector<double> numbers = OptionValue::numbers(text);
    for (const double number : numbers)
        if (std::abs(number) > farthest)
            throw UsageError(QStringLiteral("--%1 %2: pixels go to 1000000 at most").arg(option, text));
    return numbers;
}

QPolygonF readPolygon(const QString& text)
{
    const std::vector<double> numbers = readPixels(QStringLiteral("polygon"), text);
    if (numbers.size() < 6 || numbers.size() % 2 != 0)
        throw UsageError(QStringLiteral("--polygon %1: x and y in pixels of three or more points are wanted, "
                                        "for example 10,10,300,20,150,200")
                             .arg(text));
    QPolygonF polygon;
    for (std::size_t i = 0; i < numbers.size(); i += 2)
        polygon.append(QPointF(numbers[i], numbers[i + 1]));
    return polygon;
}

QPolygonF readRectangle(const QString& text)
{
    const std::vector<double> numbers = readPixels(QStringLiteral("rect"), text);
    if (numbers.size() != 4)
        throw UsageError(
            QStringLiteral("--rect %1: x,y,w,h in pixels is wanted, for example 100,50,300,200").arg(text));
    if (numbers[2] <= 0.0 || numbers[3] <= 0.0)
        throw UsageError(QStringLiteral("--rect %1: width and height must be more than 0").arg(text));
    const QRectF rectangle(numbers[0], numbers[1], numbers[2], numbers[3]);
    return QPolygonF(
        {rectangle.topLeft(), rectangle.topRight(), rectangle.bottomRight(), rectangle.bottomLeft()});
}

QPolygonF readArea(const CommandParser& parser)
{
    if (parser.isSet("rect") && parser.isSet("polygon"))
        throw UsageError(QStringLiteral("--rect and --polygon exclude each other; give one of them"));
    if (parser.isSet("rect")) return readRectangle(parser.value("rect"));
    if (parser.isSet("polygon")) return readPolygon(parser.value("polygon"));
    throw UsageError(QStringLiteral("select: no area; add --rect x,y,w,h or --polygon x,y,x,y,..."));
}

} // namespace

const char* const SelectOptions::synopsis = "select FILES... --rect x,y,w,h|--polygon x,y,x,y,... [OPTIONS]";
const char* const SelectOptions::description =
    "Lists the elements in an area of a picture, an identifier a line. The area is given in pixels of the "
    "picture,\norigin top left.";

void SelectOptions::declare(CommandParser& parser)
{
    parser.add({"rect"}, "a rectangle: its upper left corner, width and height", "x,y,w,h");
    parser.add({"polygon"}, "a polygon; what it winds round twice is outside", "x,y,x,y,...");
    parser.add({"mode"}, "through|visible: all elements there, or what is seen; through at first", "NAME");
    parser.add({"rule"}, "touching|inside: with a part there, or with all parts; touching at first", "NAME");
    parser.add({"json"}, "as JSON with types and names, for programs");
    CameraOptions::declare(parser);
    PointSizeOption::declare(parser);
    FenceOption::declare(parser);
}

SelectOptions SelectOptions::read(const CommandParser& parser)
{
    SelectOptions options;
    options.files = parser.positionalArguments();
    if (options.files.isEmpty())
        throw UsageError(QStringLiteral("select: no files; usage: viewer3d select FILES... --rect x,y,w,h"));
    options.area = readArea(parser);
    if (parser.isSet("mode") && OptionValue::word("mode", parser.value("mode"), {"through", "visible"}) == 1)
        options.mode = SelectionMode::Visible;
    if (parser.isSet("rule") && OptionValue::word("rule", parser.value("rule"), {"touching", "inside"}) == 1)
        options.rule = SelectionRule::Inside;
    options.camera = CameraOptions::read(parser);
    options.pointSize = PointSizeOption::read(parser);
    options.fence = FenceOption::read(parser);
    options.json = parser.isSet("json");
    return options;
}
