#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <QtCore/QRect>
#include <glm/glm.hpp>

#include <cstdint>
#include <string>

class Item3dDrawer;
class QOpenGLShaderProgram;
class Scene3d;

/// The record of one drawing pass. Every draw call receives one by const reference; drawers adjust copies.
/// Nothing in it is owned.
struct VIEWER3DMODULE_EXPORT PaintContext
{
    /// Number of the stage that a composite drawer is running.
    std::int32_t stage = 0;
    /// Kind of pass, see DrawMode.h: 0 ordinary, 1 selection mask, 2 glue mask, 3 selection buffer, 4
    /// geometry capture.
    std::int32_t drawMode = 0;
    /// Kinds of primitives to draw: 1 points, 2 lines, 4 triangles; 8 asks for lines with adjacency.
    std::int32_t primitives = 7;
    /// Passed through unchanged by drawers.
    std::int32_t passFlags = 0;
    /// Scene to eye coordinates.
    glm::mat4 view = glm::mat4(1.0f);
    /// Eye to clip coordinates.
    glm::mat4 projection = glm::mat4(1.0f);
    /// Normalised device coordinates to pixels, origin top left, y down; see viewportMatrix.
    glm::mat4 viewport = glm::mat4(1.0f);
    /// Pixel rectangle of the target.
    QRect viewportRect;
    /// Vertex array object of the context that is current; drawers and primitives bind it. 0 means none.
    std::uint32_t vertexArray = 0;
    /// The scene that runs the pass.
    Scene3d* scene = nullptr;
    /// Program to draw with; null means the drawer's own.
    QOpenGLShaderProgram* program = nullptr;
    /// The drawer that is drawing; drawers set it to themselves in their copy.
    Item3dDrawer* drawer = nullptr;
    /// Name of the view: the key of its lighting.
    std::string viewName;
    /// Passed through unchanged by drawers.
    void* extra1 = nullptr;
    void* extra2 = nullptr;
    /// Whether the pass is for its depths and nobody looks at colours: drawers may then take simpler programs
    /// that leave the same depths.
    bool depthOnly = false;
    /// Whether blending is switched on for the first draw buffer, and a drawer may switch it off for as long
    /// as all that it draws is opaque (Drawable3dItem::isOpaque): pictures are the same, and cost less.
    /// False: drawers leave it as it is.
    bool blends = false;
    /// Whether polygon offset is switched on for fills, and a drawer may switch it off for as long as it
    /// draws lines and points by the module's primitives (Drawable3dItem::drawsByPrimitives): likewise.
    bool offsetsFills = false;

    /// Sets viewportRect and, from it, viewport. Everybody who fills a context uses this.
    void setViewport(const QRect& rect);
};

/// The matrix that maps normalised device coordinates to the pixels of the rectangle, origin top left, y
/// down: x_px = left + width * (x + 1) / 2, y_px = top + height * (1 - y) / 2; z and w stay.
VIEWER3DMODULE_EXPORT glm::mat4 viewportMatrix(const QRect& rect);
