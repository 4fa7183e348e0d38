#include <readers/colmap/ColmapCamerasParser.h>

#include <readers/common/reading.h>

#include <algorithm>
#include <iterator>

namespace readers {

namespace {

struct Model
{
    const char* name;
    int parameters;
};

constexpr Model models[] = {
    {"SIMPLE_PINHOLE", 3},
    {"PINHOLE", 4},
    {"SIMPLE_RADIAL", 4},
    {"RADIAL", 5},
    {"OPENCV", 8},
    {"OPENCV_FISHEYE", 8},
    {"FULL_OPENCV", 12},
    {"FOV", 5},
    {"SIMPLE_RADIAL_FISHEYE", 4},
    {"RADIAL_FISHEYE", 5},
    {"THIN_PRISM_FISHEYE", 12},
    {"RAD_TAN_THIN_PRISM_FISHEYE", 16},
    {"SIMPLE_DIVISION", 4},
    {"DIVISION", 5},
};

} // namespace

ColmapCamerasParser::ColmapCamerasParser(QIODevice& device, ksp::StagedProgress progress)
    : m_budget(static_cast<std::size_t>(device.size()))
    , m_lines(device, std::move(progress))
{
}

ColmapCamerasParser::Cameras ColmapCamerasParser::parse()
{
    Cameras cameras;
    while (m_lines.next()) {
        const std::int64_t id = m_lines.takeIdentifier("the camera's identifier");
        StationElement::Camera camera = takeCamera();
        constexpr std::size_t node = 64; // bytes of the map and of the list of numbers
        m_budget.charge(sizeof camera + node + 8 * static_cast<std::size_t>(camera.parameters.size()));
        if (!cameras.emplace(id, std::move(camera)).second)
            m_lines.fail(QStringLiteral("there is a camera %1 already").arg(id));
    }
    return cameras;
}

StationElement::Camera ColmapCamerasParser::takeCamera()
{
    constexpr std::int64_t longestSide = 1'000'000; // pixels
    StationElement::Camera camera;
    const std::string_view name = m_lines.takeWord("the camera's model");
    const auto* model =
        std::find_if(std::begin(models), std::end(models), [&](const Model& m) { return name == m.name; });
    if (model == std::end(models))
        m_lines.fail(QStringLiteral("unknown camera model %1").arg(inQuotes(name)));
    camera.model = QLatin1String(model->name);
    camera.width = static_cast<int>(m_lines.takeInteger("the width of its pictures", 1, longestSide));
    camera.height = static_cast<int>(m_lines.takeInteger("the height of its pictures", 1, longestSide));
    while (!m_lines.isAtEnd() && camera.parameters.size() <= model->parameters)
        camera.parameters.append(m_lines.takeNumber("a parameter"));
    if (camera.parameters.size() != model->parameters)
        m_lines.fail(
            QStringLiteral("a camera of model %1 has %2 parameters, and not %3")
                .arg(camera.model)
                .arg(model->parameters)
                .arg(m_lines.isAtEnd() ? QString::number(camera.parameters.size()) : QStringLiteral("more")));
    return camera;
}

} // namespace readers
