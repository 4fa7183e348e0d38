#include <viewer/cli/CameraOptions.h>

#include <viewer/cli/CommandParser.h>
#include <viewer/cli/OptionValue.h>
#include <viewer/cli/UsageError.h>

#include <Viewer3dModule/scene/Scene3d.h>

namespace {

constexpr double smallestAngle = 1e-7; // radians between the line of sight and the up vector

bool isAlong(const glm::dvec3& a, const glm::dvec3& b)
{
    return glm::length(glm::cross(glm::normalize(a), glm::normalize(b))) < smallestAngle;
}

CameraOptions::Position readPosition(const CommandParser& parser)
{
    if (!parser.isSet("eye") || !parser.isSet("target"))
        throw UsageError(QStringLiteral("--eye and --target belong together, and --up to both"));
    if (parser.isSet("view"))
        throw UsageError(QStringLiteral("--view and --eye exclude each other; give one of them"));
    CameraOptions::Position position;
    position.eye = OptionValue::point("eye", parser.value("eye"));
    position.target = OptionValue::point("target", parser.value("target"));
    const glm::dvec3 direction = position.target - position.eye;
    if (glm::length(direction) == 0.0)
        throw UsageError(QStringLiteral("--eye and --target are the same point; they must differ"));
    position.up = glm::dvec3(0.0, 0.0, 1.0);
    if (parser.isSet("up")) {
        position.up = OptionValue::point("up", parser.value("up"));
        if (glm::length(position.up) == 0.0)
            throw UsageError(QStringLiteral("--up has no direction; 0,0,1 is upright"));
        if (isAlong(direction, position.up))
            throw UsageError(
                QStringLiteral("--up lies along the line from --eye to --target; it must point elsewhere"));
    } else if (isAlong(direction, position.up)) {
        position.up = glm::dvec3(0.0, 1.0, 0.0);
    }
    return position;
}

} // namespace

void CameraOptions::declare(CommandParser& parser)
{
    parser.add({"size"}, "size of the picture in pixels; 1280x720 at first", "WxH");
    parser.add({"view"}, standardViewNames().join('|') + ": look from there at everything; iso at first",
               "NAME");
    parser.add({"projection"}, "central|parallel; central at first", "NAME");
    parser.add({"eye"}, "look from this point, in model coordinates ...", "x,y,z");
    parser.add({"target"}, "... to this one", "x,y,z");
    parser.add({"up"}, "what is up with --eye; 0,0,1 at first", "x,y,z");
}

CameraOptions CameraOptions::read(const CommandParser& parser)
{
    CameraOptions camera;
    if (parser.isSet("size")) camera.size = OptionValue::size("size", parser.value("size"));
    if (parser.isSet("view"))
        camera.view =
            static_cast<StandardView>(OptionValue::word("view", parser.value("view"), standardViewNames()));
    if (parser.isSet("projection")) {
        const int number =
            OptionValue::word("projection", parser.value("projection"), {"central", "parallel"});
        camera.projection = number == 0 ? IProjection::Central : IProjection::Parallel;
    }
    if (parser.isSet("eye") || parser.isSet("target") || parser.isSet("up"))
        camera.position = readPosition(parser);
    return camera;
}

Viewpoint CameraOptions::viewpoint(const Scene3d& scene, const gmx::BoundingBox& visible) const
{
    if (!position) return Viewpoint::fitting(visible, standardViewDirection(view), projection, size);
    const glm::dmat4 toScene = scene.modelToSceneTransform();
    const glm::dvec3 eye = scene.mapFromModel(position->eye);
    const glm::dvec3 forward(toScene * glm::dvec4(position->target - position->eye, 0.0));
    const glm::dvec3 up = glm::normalize(glm::dvec3(toScene * glm::dvec4(position->up, 0.0)));
    return Viewpoint::looking(eye, eye + forward, up, projection, size);
}
