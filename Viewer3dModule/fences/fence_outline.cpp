#include <Viewer3dModule/fences/fence_outline.h>

#include <Viewer3dModule/fences/Frustum3D.h>
#include <Viewer3dModule/fences/PrismFence.h>
#include <Viewer3dModule/fences/SphereFence.h>
#include <Viewer3dModule/fences/fence_polygon.h>

#include <framework/gmx/math_utils.h>

#include <algorithm>

namespace {

using fence_outline::Strip;
using fence_polygon::isFinite;

constexpr std::size_t mostEdges = 48;
constexpr int circlePoints = 96;

bool isFiniteAll(const std::vector<Strip>& strips)
{
    return std::all_of(strips.begin(), strips.end(), [](const Strip& strip) {
        return std::all_of(strip.begin(), strip.end(), [](const glm::dvec3& p) { return isFinite(p); });
    });
}

/// The outlines, the far one where the fence has an end, and edges between them.
std::vector<Strip> joined(const Strip& nearOutline, const Strip& farOutline, bool hasEnd)
{
    std::vector<Strip> strips = {nearOutline};
    if (hasEnd) strips.push_back(farOutline);
    const std::size_t corners = nearOutline.size() - 1; // the last repeats the first
    const std::size_t step = (corners + mostEdges - 1) / mostEdges;
    for (std::size_t i = 0; i < corners; i += step)
        strips.push_back({nearOutline[i], farOutline[i]});
    return strips;
}

bool hasEnd(const Frustum3D& fence)
{
    return fence.zFar() > fence.zNear();
}

bool hasEnd(const PrismFence& fence)
{
    return fence.prism().zFar() > 0.0;
}

std::vector<Strip> stripsOf(const Frustum3D& fence, double endlessLength)
{
    if (hasEnd(fence)) return joined(fence.getNearFence(), fence.getFarFence(), true);
    const glm::dmat4 toWorld = glm::inverse(fence.fromWorldMatrix());
    const double depth = fence.zNear() + endlessLength;
    Strip ends;
    for (const glm::dvec2 point : fence.fence())
        ends.emplace_back(toWorld * glm::dvec4(point * depth * fence.tanHalfFovy(), depth, 1.0));
    return joined(fence.getNearFence(), ends, false);
}

std::vector<Strip> stripsOf(const PrismFence& fence, double endlessLength)
{
    const Prism3D& prism = fence.prism();
    if (hasEnd(fence)) return joined(prism.getNearFence(), prism.getFarFence(), true);
    const glm::dvec3 axis(glm::inverse(prism.matrix())[2]);
    Strip ends = prism.getNearFence();
    for (glm::dvec3& end : ends)
        end += endlessLength * axis;
    return joined(prism.getNearFence(), ends, false);
}

std::vector<Strip> stripsOf(const SphereFence& fence, double)
{
    std::vector<Strip> strips;
    for (int axis = 0; axis < 3; ++axis) {
        Strip circle;
        for (int i = 0; i <= circlePoints; ++i) {
            const double angle = 2.0 * math_utils::pi * (i % circlePoints) / circlePoints;
            glm::dvec3 point(0.0);
            point[(axis + 1) % 3] = std::cos(angle);
            point[(axis + 2) % 3] = std::sin(angle);
            circle.push_back(fence.getCenter() + fence.getRadius() * point);
        }
        strips.push_back(std::move(circle));
    }
    return strips;
}

template <typename Swept>
std::vector<glm::dvec3> planeNodes(const Swept& swept, bool end)
{
    std::vector<glm::dvec3> nodes = swept.getNodes();
    if (!end && nodes.size() > 1) nodes.pop_back();
    return nodes;
}

std::vector<glm::dvec3> nodesOf(const Frustum3D& fence)
{
    return planeNodes(fence, hasEnd(fence));
}

std::vector<glm::dvec3> nodesOf(const PrismFence& fence)
{
    return planeNodes(fence.prism(), hasEnd(fence));
}

std::vector<glm::dvec3> nodesOf(const SphereFence& fence)
{
    return {fence.getCenter(), fence.getCenter() + glm::dvec3(fence.getRadius(), 0.0, 0.0)};
}

/// Calls use with the fence as what it is.
template <typename Fence, typename Use>
auto withKind(Fence& fence, Use use)
{
    constexpr bool isConst = std::is_const_v<Fence>;
    using Frustum = std::conditional_t<isConst, const Frustum3D, Frustum3D>;
    using Prism = std::conditional_t<isConst, const PrismFence, PrismFence>;
    using Sphere = std::conditional_t<isConst, const SphereFence, SphereFence>;
    switch (fence.getType()) {
    case Fence3DObject::Frustum3D:
        return use(static_cast<Frustum&>(fence));
    case Fence3DObject::PrismFence:
        return use(static_cast<Prism&>(fence));
    default:
        return use(static_cast<Sphere&>(fence));
    }
}

std::size_t nearest(const std::vector<glm::dvec3>& nodes, const glm::dvec3& point)
{
    const auto distance = [&](const glm::dvec3& node) { return glm::distance(node, point); };
    const auto found = std::min_element(
        nodes.begin(), nodes.end(), [&](const auto& a, const auto& b) { return distance(a) < distance(b); });
    return static_cast<std::size_t>(found - nodes.begin());
}

struct Move
{
    std::size_t node;
    glm::dvec3 point; // on the node's line

    std::size_t operator()(SphereFence& sphere) const
    {
        const double radius = glm::distance(point, sphere.getCenter());
        if (node == 0)
            sphere.setFence(point, sphere.getRadius());
        else if (radius > 0.0)
            sphere.setFence(sphere.getCenter(), radius);
        return node;
    }
    std::size_t operator()(Frustum3D& frustum) const
    {
        frustum.movePlane(point, node == 0);
        return nearest(nodesOf(frustum), point);
    }
    std::size_t operator()(PrismFence& prism) const
    {
        prism.prism().movePlane(point, node == 0);
        return nearest(nodesOf(prism), point);
    }
};

} // namespace

std::vector<fence_outline::Strip> fence_outline::strips(const Fence3DObject& fence, double endlessLength)
{
    if (fence.empty()) return {};
    std::vector<Strip> strips =
        withKind(fence, [&](const auto& own) { return stripsOf(own, endlessLength); });
    return isFiniteAll(strips) ? strips : std::vector<Strip>();
}

std::vector<glm::dvec3> fence_outline::nodes(const Fence3DObject& fence)
{
    if (fence.empty()) return {};
    std::vector<glm::dvec3> nodes = withKind(fence, [](const auto& own) { return nodesOf(own); });
    return isFiniteAll({nodes}) ? nodes : std::vector<glm::dvec3>();
}

std::optional<std::pair<glm::dvec3, glm::dvec3>> fence_outline::lineOf(const Fence3DObject& fence,
                                                                       std::size_t node)
{
    std::vector<glm::dvec3> ray;
    if (node >= nodes(fence).size()) return std::nullopt;
    if (const auto* frustum = dynamic_cast<const Frustum3D*>(&fence)) ray = frustum->getRay();
    if (const auto* prism = dynamic_cast<const PrismFence*>(&fence)) ray = prism->prism().getRay();
    if (ray.size() != 2 || ray[0] == ray[1] || !isFiniteAll({ray})) return std::nullopt;
    return std::pair(ray[0], ray[1]);
}

std::size_t fence_outline::moveNode(Fence3DObject& fence, std::size_t node, const glm::dvec3& point)
{
    if (node >= nodes(fence).size() || !isFinite(point)) return node;
    glm::dvec3 target = point;
    if (const auto line = lineOf(fence, node)) {
        const glm::dvec3 axis = glm::normalize(line->second - line->first);
        target = line->first + glm::dot(point - line->first, axis) * axis;
    }
    return withKind(fence, Move{node, target});
}
