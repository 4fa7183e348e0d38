#include <Viewer3dModule/drawables/Polyline3dClipper.h>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace {

// Pieces whose ends are not farther apart than this go on as one; in the polyline's own coordinates.
constexpr double joiningTolerance = 0.001;

// 1 at the index that the number truncates to, 0 elsewhere; all 0 when it is no index.
glm::dvec3 unitVector(double index)
{
    const double whole = std::trunc(index);
    return {whole == 0.0 ? 1.0 : 0.0, whole == 1.0 ? 1.0 : 0.0, whole == 2.0 ? 1.0 : 0.0};
}

bool isLexicographicallyGreater(const glm::dvec3& a, const glm::dvec3& b)
{
    return std::tie(a.x, a.y, a.z) > std::tie(b.x, b.y, b.z);
}

// An end of the inside part of a segment: its parameter, and the coordinate that is known exactly.
struct Cut
{
    double parameter;
    int axis;
    double bound;
};

glm::dvec3 pointAt(const glm::dvec3& from, const glm::dvec3& direction, const Cut& cut)
{
    glm::dvec3 point = from + direction * cut.parameter;
    point[cut.axis] = cut.bound;
    return point;
}

} // namespace

void Polyline3dClipper::setBox(const glm::dvec3& min, const glm::dvec3& max)
{
    m_boxMin = min;
    m_boxMax = max;
}

void Polyline3dClipper::clip(const std::vector<glm::dvec3>& polyline,
                             std::function<void(const std::vector<glm::dvec3>&)> output)
{
    std::vector<glm::dvec3> run;
    const auto finishRun = [&run, &output] {
        if (run.size() > 1) output(run);
        run.clear();
    };
    for (std::size_t i = 1; i < polyline.size(); ++i) {
        glm::dvec3 from = polyline[i - 1];
        glm::dvec3 to = polyline[i];
        if (!(isInside(from) && isInside(to)) && !clipSegment(from, to)) continue;
        if (!run.empty() && glm::distance(from, run.back()) > joiningTolerance) finishRun();
        if (run.empty()) run.push_back(from);
        run.push_back(to);
    }
    finishRun();
}

// The maximum side is one order of whole points rather than a bound an axis: callers depend on these answers.
bool Polyline3dClipper::isInside(const glm::dvec3& point) const
{
    for (int axis = 0; axis < 3; ++axis) {
        if (!(m_boxMin[axis] <= point[axis])) return false;
        if (isLexicographicallyGreater(point, unitVector(m_boxMax[axis]))) return false;
    }
    return true;
}

// Shortens the segment to the part within the box; false when that is nothing or a single point.
bool Polyline3dClipper::clipSegment(glm::dvec3& from, glm::dvec3& to) const
{
    const glm::dvec3 direction = to - from;
    Cut enter = {0.0, 0, from.x};
    Cut leave = {1.0, 0, to.x};
    for (int axis = 0; axis < 3; ++axis) {
        const double step = direction[axis];
        if (!std::isfinite(step)) return false;
        if (step == 0.0) {
            if (!(m_boxMin[axis] <= from[axis] && from[axis] <= m_boxMax[axis])) return false;
            continue;
        }
        Cut low = {(m_boxMin[axis] - from[axis]) / step, axis, m_boxMin[axis]};
        Cut high = {(m_boxMax[axis] - from[axis]) / step, axis, m_boxMax[axis]};
        if (step < 0.0) std::swap(low, high);
        if (low.parameter > enter.parameter) enter = low;
        if (high.parameter < leave.parameter) leave = high;
    }
    if (!(enter.parameter < leave.parameter)) return false;
    const glm::dvec3 start = from;
    if (enter.parameter > 0.0) from = pointAt(start, direction, enter);
    if (leave.parameter < 1.0) to = pointAt(start, direction, leave);
    return from != to;
}

std::shared_ptr<IPolyline3dClipper> makePolyline3dClipper()
{
    return std::make_shared<Polyline3dClipper>();
}
