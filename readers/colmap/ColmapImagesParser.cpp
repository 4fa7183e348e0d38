#include <readers/colmap/ColmapImagesParser.h>

#include <limits>

namespace readers {

ColmapImagesParser::ColmapImagesParser(QIODevice& device, const ColmapCamerasParser::Cameras& cameras,
                                       ksp::StagedProgress progress)
    : m_cameras(cameras)
    , m_budget(static_cast<std::size_t>(device.size()))
    , m_lines(device, std::move(progress))
{
}

ColmapImagesParser::Stations ColmapImagesParser::parse()
{
    Stations stations;
    while (m_lines.next()) {
        stations.push_back(takeStation());
        checkPoints();
    }
    return stations;
}

std::unique_ptr<StationElement> ColmapImagesParser::takeStation()
{
    const std::int64_t id = m_lines.takeIdentifier("the picture's identifier");
    if (!m_ids.insert(id).second) m_lines.fail(QStringLiteral("there is a picture %1 already").arg(id));
    const StationElement::Pose pose = takePose();
    const std::int64_t cameraId = m_lines.takeIdentifier("the camera's identifier");
    const auto camera = m_cameras.find(cameraId);
    if (camera == m_cameras.end()) m_lines.fail(QStringLiteral("there is no camera %1").arg(cameraId));
    const std::string_view name = m_lines.takeRest();
    if (name.empty()) m_lines.fail(QStringLiteral("the picture's name is missing"));

    constexpr std::size_t books = 8 * sizeof(void*); // of the lists that it is on
    m_budget.charge(sizeof(StationElement) + books + MemoryBudget::ofText(name.size()));
    auto station = std::make_unique<StationElement>();
    station->setName(QString::fromUtf8(name.data(), static_cast<int>(name.size())));
    station->setSourceId(QString::number(id));
    station->setPose(pose);
    station->setCamera(camera->second);
    return station;
}

StationElement::Pose ColmapImagesParser::takePose()
{
    StationElement::Pose pose;
    for (double* number : {&pose.rotation.w, &pose.rotation.x, &pose.rotation.y, &pose.rotation.z})
        *number = m_lines.takeNumber("the rotation");
    for (int i = 0; i < 3; ++i)
        pose.translation[i] = m_lines.takeNumber("the translation");
    const double length = glm::length(pose.rotation);
    if (!(length > std::numeric_limits<float>::min()))
        m_lines.fail(QStringLiteral("the rotation is a quaternion of length 0"));
    pose.rotation /= length;
    return pose;
}

// What is seen in a picture is not shown; a wrong line must not pass for a picture's all the same.
void ColmapImagesParser::checkPoints()
{
    if (!m_lines.nextBelow()) return;
    while (!m_lines.isAtEnd()) {
        m_lines.takeNumber("the x of a point in the picture");
        m_lines.takeNumber("the y of a point in the picture");
        m_lines.takeInteger("the point's identifier", -1, std::numeric_limits<std::int64_t>::max());
    }
}

} // namespace readers
