#include <viewer/DepthRenderer.h>

#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/ksp/CommonError.h>

#include <QtGui/QImage>
#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <limits>

namespace {

/// Of far and near distance; a depth buffer within them is nowhere coarser than the coordinates are.
constexpr double sharpRange = 10.0;
constexpr double roomBeforeNearest = 0.8; // share of the distance

std::vector<Drawable3dItem*> visibleItems(const Scene3d& scene)
{
    std::vector<Drawable3dItem*> items;
    const auto add = [&items](Drawable3dItem* item) {
        if (item && item->isVisible()) items.push_back(item);
    };
    for (const auto& entry : scene.getItems()) {
        add(entry.second);
        for (Drawable3dItem* child : entry.second->getDrawableChildren())
            add(child);
    }
    return items;
}

glm::dmat4 scaling(double factor)
{
    return glm::scale(glm::dmat4(1.0), glm::dvec3(factor));
}

} // namespace

DepthRenderer::DepthRenderer(Scene3d& scene, const DepthCamera& camera)
    : m_modelToScene(glm::length(glm::dvec3(scene.modelToSceneTransform()[0])))
    , m_sceneToModel(scene.sceneToModelTransform())
    , m_items(visibleItems(scene))
    , m_camera(camera)
    , m_grid(camera.size())
{
    setCamera(camera);
}

void DepthRenderer::setCamera(const DepthCamera& camera)
{
    m_camera = camera;
    m_grid = TileGrid(camera.size());
    const QSize window = m_grid.largest(&Tile::frustum);
    if (m_generator && window == m_window) return;
    m_generator = std::make_unique<SceneDepthMapGenerator>(window);
    m_window = window;
}

bool DepthRenderer::wantsNearest() const
{
    return !m_camera.isParallel() && m_camera.farDistance() > sharpRange * m_camera.nearDistance();
}

// What lies between the old plane and the new one covers no pixel: its distance would be the nearest.
void DepthRenderer::setNearest(float distance)
{
    const double wanted = roomBeforeNearest * static_cast<double>(distance);
    if (wanted > m_camera.nearDistance()) m_camera = m_camera.withNear(wanted);
}

// Of the one size that the generator has: where the picture ends, the window lies further inside.
QRect DepthRenderer::windowOf(const Tile& tile) const
{
    return QRect(QPoint(std::min(tile.frustum.left(), m_grid.size().width() - m_window.width()),
                        std::min(tile.frustum.top(), m_grid.size().height() - m_window.height())),
                 m_window);
}

// The eye of the drawing measures in scene units, for which all items are made; the distances are mapped
// back.
void DepthRenderer::draw(const Tile& tile, float* band)
{
    const QRect window = windowOf(tile);
    const glm::dmat4 view = scaling(m_modelToScene) * m_camera.view() * m_sceneToModel;
    const glm::dmat4 projection = m_camera.projection() * scaling(1.0 / m_modelToScene);
    const QImage map =
        m_generator->generate(m_items, view, croppedProjection(projection, m_grid.size(), window));
    if (map.isNull() && !m_items.empty())
        throw ksp::CommonError(QStringLiteral("there is no memory for the depth map"));
    const QRect& pixels = tile.pixels;
    for (int row = 0; row < pixels.height(); ++row, band += m_grid.size().width()) {
        float* const target = band + pixels.left();
        if (map.isNull()) {
            std::fill_n(target, pixels.width(), std::numeric_limits<float>::quiet_NaN());
            continue;
        }
        const float* const source =
            reinterpret_cast<const float*>(map.constScanLine(pixels.top() - window.top() + row)) +
            (pixels.left() - window.left());
        std::transform(source, source + pixels.width(), target, [this](float distance) {
            return static_cast<float>(static_cast<double>(distance) / m_modelToScene);
        });
    }
}
