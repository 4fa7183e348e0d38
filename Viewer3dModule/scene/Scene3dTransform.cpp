// The scene's bounds and its model-to-scene transform.

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/CurrentContextGuard.h>
#include <Viewer3dModule/scene/ItemIndex.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/ksp/Log.h>

#include <glm/gtc/matrix_inverse.hpp>
#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

const gmx::BoundingBox unitBoxAroundOrigin(glm::dvec3(-0.5), glm::dvec3(0.5));

// The test looks at the first element only, as the hosts that hand over matrices expect.
bool isAcceptable(const glm::dmat4& matrix)
{
    const double first = matrix[0][0];
    return first >= static_cast<double>(std::numeric_limits<float>::min()) &&
           first <= static_cast<double>(std::numeric_limits<float>::max());
}

// The inverse of an affine matrix takes fewer roundings than that of a general one, which shows at geodetic
// coordinates.
bool isAffine(const glm::dmat4& matrix)
{
    return matrix[0][3] == 0.0 && matrix[1][3] == 0.0 && matrix[2][3] == 0.0 && matrix[3][3] == 1.0;
}

bool isBeyondLimit(const glm::dvec3& corner)
{
    const glm::dvec3 size = glm::abs(corner);
    return std::max({size.x, size.y, size.z}) > Scene3d::maxCoordsLimit();
}

} // namespace

glm::dmat4 Scene3d::sceneToModelTransform() const
{
    return isAffine(m_modelToScene) ? glm::affineInverse(m_modelToScene) : glm::inverse(m_modelToScene);
}

glm::dvec3 Scene3d::mapFromModel(const glm::dvec3& point) const
{
    return glm::dvec3(m_modelToScene * glm::dvec4(point, 1.0));
}

glm::dvec3 Scene3d::mapToModel(const glm::dvec3& point) const
{
    return glm::dvec3(sceneToModelTransform() * glm::dvec4(point, 1.0));
}

void Scene3d::setModelToSceneTransform(const glm::dmat4& matrix)
{
    if (!isAcceptable(matrix)) {
        ksp::Log::message(ksp::Log::Error, QStringLiteral("Invalid world to scene transformation"));
        return;
    }
    m_modelToScene = matrix;
    updateGraphicsItems();
    Q_EMIT updateView();
}

void Scene3d::setBounds(const gmx::BoundingBox& bounds)
{
    m_bounds.unite(bounds);
    correctTransform();
}

void Scene3d::setBoundsDirty()
{
    for (const auto& entry : m_items)
        entry.second->boundsChanged();
    m_boundsDirty = true;
}

void Scene3d::resetBounds()
{
    setBoundsDirty();
    takeBounds();
}

gmx::BoundingBox Scene3d::visibleBounds()
{
    return m_itemIndex->visibleBounds();
}

void Scene3d::takeBounds()
{
    gmx::BoundingBox bounds = visibleBounds();
    m_boundsDirty = false;
    if (!bounds.isValid()) bounds = unitBoxAroundOrigin;
    const glm::dvec3 center = bounds.getCenter();
    bounds.unite(gmx::BoundingBox(center - 0.5, center + 0.5));
    m_bounds = bounds;
    correctTransform();
}

void Scene3d::flushBounds()
{
    // Inside a group the boxes of items do not belong to the transform: their updates are yet to come.
    if (!m_boundsDirty || isInGroupOperation()) return;
    const CurrentContextGuard callers;
    takeBounds();
    // A correction updates the items, which makes the bounds dirty again. Once more, so that nobody finds
    // them dirty between a view's matrices and its frame.
    if (m_boundsDirty) takeBounds();
    m_boundsDirty = false;
}

void Scene3d::correctTransform()
{
    if (m_bounds.isNull()) {
        m_bounds = unitBoxAroundOrigin;
        return;
    }
    if (!m_bounds.isValid()) {
        m_bounds = gmx::BoundingBox(glm::dvec3(0.0), glm::dvec3(1.0));
        return;
    }
    const glm::dvec3 size = m_bounds.getSize();
    const double largest = std::max({size.x, size.y, size.z});
    // A single point has no extent to scale by; it counts as one unit.
    const double extent = largest > 0.0 ? largest : 1.0;
    const glm::dvec3 center = m_bounds.getCenter();
    const bool needed =
        isBeyondLimit(m_bounds.getMin()) || isBeyondLimit(m_bounds.getMax()) || glm::length(center) > extent;
    if (!needed) return;
    const glm::dmat4 scaling = glm::scale(glm::dmat4(1.0), glm::dvec3(maxCoordsLimit() / extent));
    applyCorrection(scaling * glm::translate(glm::dmat4(1.0), -center));
}

void Scene3d::applyCorrection(const glm::dmat4& correction)
{
    const glm::dmat4 corrected = correction * m_modelToScene;
    if (!isAcceptable(corrected)) {
        setModelToSceneTransform(corrected); // logs
        return;
    }
    m_bounds = m_bounds.transformed(correction);
    setModelToSceneTransform(corrected);
    for (const auto& item : m_localItems)
        item->setTransform(glm::mat4(correction), true);
    Q_EMIT modelToSceneTransformChanged(correction);
}

gmx::BoundingBox Scene3d::getBoundingBoxByPlane(const glm::dmat4& planeTransform, double tolerance) const
{
    gmx::BoundingBox result;
    for (const auto& entry : m_items) {
        if (!entry.second->isVisible()) continue;
        const gmx::BoundingBox box = entry.second->sceneBoundingBox();
        const gmx::BoundingBox inPlane = box.transformed(planeTransform);
        if (inPlane.getMin().z <= tolerance && inPlane.getMax().z >= -tolerance) result.unite(box);
    }
    return result;
}

double Scene3d::depthValueToFrustumZ(float depth)
{
    const auto d = static_cast<double>(depth);
    const double split = getForegroundItemsZRange();
    const double share = d < split ? d / split : (d - split) / (1.0 - split);
    return 2.0 * share - 1.0;
}
