#include <viewer/cli/CameraOptions.h>

#include <viewer/cli/CameraFields.h>
#include <viewer/cli/CommandParser.h>

#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/gmx/math_utils.h>

namespace {

constexpr double smallestAngle = 1e-7;             // radians between the line of sight and the up vector
constexpr double largestPixel = 1e12;              // model units
constexpr double narrowest = 0.01, widest = 170.0; // degrees of view

bool isAlong(const glm::dvec3& a, const glm::dvec3& b)
{
    return glm::length(glm::cross(glm::normalize(a), glm::normalize(b))) < smallestAngle;
}

CameraOptions::Position readPosition(const CameraFields& fields)
{
    const QString eye = fields.shown("eye"), target = fields.shown("target"), up = fields.shown("up");
    if (!fields.has("eye") || !fields.has("target"))
        fields.refuse(QStringLiteral("%1 and %2 belong together, and %3 to both").arg(eye, target, up));
    if (fields.has("view"))
        fields.refuse(
            QStringLiteral("%1 and %2 exclude each other; give one of them").arg(fields.shown("view"), eye));
    CameraOptions::Position position;
    position.eye = fields.point("eye");
    position.target = fields.point("target");
    const glm::dvec3 direction = position.target - position.eye;
    if (glm::length(direction) == 0.0)
        fields.refuse(QStringLiteral("%1 and %2 are the same point; they must differ").arg(eye, target));
    position.up = glm::dvec3(0.0, 0.0, 1.0);
    if (fields.has("up")) {
        position.up = fields.point("up");
        if (glm::length(position.up) == 0.0)
            fields.refuse(QStringLiteral("%1 has no direction; 0,0,1 is upright").arg(up));
        if (isAlong(direction, position.up))
            fields.refuse(QStringLiteral("%1 lies along the line from %2 to %3; it must point elsewhere")
                              .arg(up, eye, target));
    } else if (isAlong(direction, position.up)) {
        position.up = glm::dvec3(0.0, 1.0, 0.0);
    }
    return position;
}

double readFov(const CameraFields& fields, const CameraOptions& camera)
{
    if (camera.projection != IProjection::Central)
        fields.refuse(QStringLiteral("%1 belongs to the central projection").arg(fields.shown("fov")));
    const double degrees = fields.number("fov");
    if (!(degrees >= narrowest && degrees <= widest))
        fields.refuse(QStringLiteral("%1 %2: degrees are wanted, at least %3 and at most %4")
                          .arg(fields.shown("fov"))
                          .arg(degrees)
                          .arg(narrowest)
                          .arg(widest));
    return math_utils::toRadian(degrees);
}

double readGsd(const CameraFields& fields, const CameraOptions& camera)
{
    const QString gsd = fields.shown("gsd");
    if (!fields.has("view") || camera.view != StandardView::Top || camera.projection != IProjection::Parallel)
        fields.refuse(QStringLiteral("%1 belongs to a picture from above: %2 top and %3 parallel")
                          .arg(gsd, fields.shown("view"), fields.shown("projection")));
    const double pixel = fields.number("gsd");
    if (!(pixel > 0.0 && pixel <= largestPixel))
        fields.refuse(QStringLiteral("%1 %2: the length of a pixel is wanted, more than 0 and at most 1e12")
                          .arg(gsd)
                          .arg(pixel));
    return pixel;
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
    parser.add({"fov"}, "vertical field of view of a central projection; 45 at first", "DEGREES");
    parser.add({"gsd"}, "length of a pixel in the model, with --view top --projection parallel", "METRES");
}

CameraOptions CameraOptions::read(const CommandParser& parser)
{
    return read(OptionFields(parser));
}

CameraOptions CameraOptions::read(const CameraFields& fields)
{
    CameraOptions camera;
    if (fields.has("size")) camera.size = fields.size("size");
    if (fields.has("view")) camera.view = static_cast<StandardView>(fields.word("view", standardViewNames()));
    if (fields.has("projection"))
        camera.projection = fields.word("projection", {"central", "parallel"}) == 0 ? IProjection::Central
                                                                                    : IProjection::Parallel;
    if (fields.has("eye") || fields.has("target") || fields.has("up")) camera.position = readPosition(fields);
    if (fields.has("fov")) camera.fov = readFov(fields, camera);
    if (fields.has("gsd")) camera.gsd = readGsd(fields, camera);
    return camera;
}

CameraOptions::View CameraOptions::see(const Scene3d& scene, const gmx::BoundingBox& visible) const
{
    const glm::dmat4 toScene = scene.modelToSceneTransform();
    if (gsd) {
        const gmx::BoundingBox box = visible.transformed(scene.sceneToModelTransform());
        const OrthoFrame frame = OrthoFrame::of(box, *gsd, size);
        return {frame.viewpoint(box).transformed(toScene), frame.size, frame};
    }
    const QSize pixels = size.value_or(usualSize);
    const double angle = fov.value_or(Viewpoint::usualFov);
    if (!position)
        return {
            Viewpoint::fitting(visible, standardViewDirection(view), projection, pixels, angle), pixels, {}};
    const glm::dvec3 eye = scene.mapFromModel(position->eye);
    const glm::dvec3 forward(toScene * glm::dvec4(position->target - position->eye, 0.0));
    const glm::dvec3 up = glm::normalize(glm::dvec3(toScene * glm::dvec4(position->up, 0.0)));
    return {Viewpoint::looking(eye, eye + forward, up, projection, pixels, angle), pixels, {}};
}
