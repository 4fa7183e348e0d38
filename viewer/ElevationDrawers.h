#pragma once

#include <QtCore/QPointer>
#include <QtGui/QOpenGLShaderProgram>

#include <map>
#include <memory>
#include <vector>

class ElevationColors;
class Item3dDrawer;
class Scene3d;

/// Lets a scene draw its elements in colours by height instead of their own: surfaces, lines and points,
/// whichever drawer of the default ones they ask for, and pipes. Light, transparency and highlights stay;
/// captions and items of further drawers that elements bring along keep their colours.
class ElevationDrawers
{
public:
    /// Registers drawers of its own with the scene, which owns them, for all types of elements that the scene
    /// knows by now; before the first element is there, which would get another one.
    explicit ElevationDrawers(Scene3d& scene);

    /// The colours from now on. The model's heights are those that the scene's transform maps, so the scene's
    /// bounds must be up to date, and it is to be called again when the transform changes. Leaves the
    /// caller's context current.
    void setColors(const ElevationColors& colors);

private:
    std::unique_ptr<Item3dDrawer> makeDrawer(int type) const;
    void addFeatureDrawers() const;

    Scene3d& m_scene;
    std::map<int, QPointer<QOpenGLShaderProgram>> m_programs; // by drawer type; the scene's
};
