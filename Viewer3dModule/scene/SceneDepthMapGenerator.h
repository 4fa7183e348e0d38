#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <glm/glm.hpp>

#include <memory>
#include <vector>

class Drawable3dItem;
class QImage;
class QSize;

/// Makes depth maps: rasters of the distances from a camera to the nearest surface of chosen items.
///
/// Draws in an OpenGL context of its own, which shares objects with the application's global share context,
/// into a frame buffer whose size is fixed at construction; so one generator serves any number of maps and of
/// scenes. Every operation runs on the thread that made the generator, needs no current context and leaves
/// the caller's current, or none where none was. The application object outlives the generator.
class VIEWER3DMODULE_EXPORT SceneDepthMapGenerator
{
public:
    /// @param size  of the maps, pixels. A generator of an empty size makes null maps.
    /// Throws ksp::CommonError, with a text for the user, when there is no OpenGL context that shares with
    /// the scenes', when it cannot be made current, and when it offers no 4.3 core profile or no frame buffer
    /// of this size.
    explicit SceneDepthMapGenerator(const QSize& size);
    ~SceneDepthMapGenerator();
    SceneDepthMapGenerator(const SceneDepthMapGenerator&) = delete;
    SceneDepthMapGenerator& operator=(const SceneDepthMapGenerator&) = delete;

    /// The depth map of the items: a QImage of the generator's size, top row first, whose every 32-bit pixel
    /// holds one float (read QImage::constScanLine as const float*; the image's format,
    /// ARGB32_Premultiplied, is a container only). A value is the distance from the eye to the surface at the
    /// pixel's centre, along the camera's axis and not along the ray, in the unit of eye space: scene units,
    /// where modelView is a rotation and a translation. NaN where nothing was drawn.
    ///
    /// Visible items are drawn as an ordinary pass of their scene draws them, but without polygon offset, so
    /// that distances are the geometry's own.
    ///
    /// @param items       in any order; what stands there twice counts once; null pointers and items without
    ///                    a scene are passed over. All are items of one scene; those of another than the
    ///                    first one's are not drawn. They are not owned, and a first draw uploads.
    /// @param modelView   scene to eye coordinates, looking along -z. Scene3d::flushBounds comes before the
    ///                    matrices are computed, because it may change the scene's transform.
    /// @param projection  eye to clip coordinates
    /// @return            a null image when no item is left, when the generator's size is empty, when its
    ///                    context cannot be made current and when there is no memory for it
    QImage generate(const std::vector<Drawable3dItem*>& items, const glm::dmat4& modelView,
                    const glm::dmat4& projection);

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
