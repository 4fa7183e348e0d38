#pragma once

#include <viewer/DepthCamera.h>
#include <viewer/TileGrid.h>

#include <Viewer3dModule/scene/SceneDepthMapGenerator.h>

#include <memory>
#include <vector>

class Scene3d;

/// Draws depth maps of a scene: of all its visible elements, and of nothing that only guides the eye, such as
/// local items and what shines through everything. Tile by tile, for maps of any size.
class DepthRenderer
{
public:
    /// Begins with the map of a camera. The scene is not owned; its bounds are up to date and stay so. Throws
    /// ksp::CommonError, as setCamera does, where no depth map can be drawn. Leaves the caller's context
    /// current, as all do.
    DepthRenderer(Scene3d& scene, const DepthCamera& camera);
    /// Goes on with the map of another camera.
    void setCamera(const DepthCamera& camera);

    const DepthCamera& camera() const { return m_camera; }
    const TileGrid& grid() const { return m_grid; }

    /// Whether the distances get sharper when the nearest of them is known: an eye amid the scene, as far as
    /// its box tells, has a near plane close by, and single precision is spent on where nothing is.
    bool wantsNearest() const;
    /// Moves the near plane towards the nearest distance that any pixel of the map has.
    void setNearest(float distance);

    /// Writes the distances of a tile's pixels along the camera's axis, model units, NaN where nothing is.
    /// Throws ksp::CommonError when there is no memory for them.
    /// @param band  the rows of the tile's band, the width of the map each
    void draw(const Tile& tile, float* band);

private:
    QRect windowOf(const Tile& tile) const;

    double m_modelToScene; // scene units a model unit
    glm::dmat4 m_sceneToModel;
    std::vector<Drawable3dItem*> m_items;
    DepthCamera m_camera;
    TileGrid m_grid;
    QSize m_window; // what the generator draws at a time, pixels
    std::unique_ptr<SceneDepthMapGenerator> m_generator;
};
