#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <QtGui/QColor>
#include <glm/glm.hpp>

class QOpenGLShaderProgram;

/// Setting a uniform of the program in use, by location and by the exact type of the uniform. A location of
/// -1 (the program has no such uniform) is skipped. A context must be current.
namespace uniforms {

VIEWER3DMODULE_EXPORT void set(OpenGLFunctions& gl, int location, int value);
VIEWER3DMODULE_EXPORT void set(OpenGLFunctions& gl, int location, unsigned int value);
VIEWER3DMODULE_EXPORT void set(OpenGLFunctions& gl, int location, float value);
VIEWER3DMODULE_EXPORT void set(OpenGLFunctions& gl, int location, bool value);
VIEWER3DMODULE_EXPORT void set(OpenGLFunctions& gl, int location, const glm::uvec2& value);
VIEWER3DMODULE_EXPORT void set(OpenGLFunctions& gl, int location, const glm::vec2& value);
VIEWER3DMODULE_EXPORT void set(OpenGLFunctions& gl, int location, const glm::vec3& value);
VIEWER3DMODULE_EXPORT void set(OpenGLFunctions& gl, int location, const glm::vec4& value);
VIEWER3DMODULE_EXPORT void set(OpenGLFunctions& gl, int location, const glm::mat3& value);
VIEWER3DMODULE_EXPORT void set(OpenGLFunctions& gl, int location, const glm::mat4& value);
/// A colour as four floats 0 to 1, red, green, blue, alpha, not premultiplied.
VIEWER3DMODULE_EXPORT glm::vec4 vectorOf(const QColor& color);
/// The same as the uniform's value.
VIEWER3DMODULE_EXPORT void set(OpenGLFunctions& gl, int location, const QColor& value);

} // namespace uniforms

/// Locations of the uniforms that items and their primitives set, found once per program and pass so that the
/// path run per item looks nothing up by name. -1 where the program lacks the uniform.
///
/// Every item sets item_color, and pen_width where it draws points or lines. The others it may count on, and
/// leaves, at their first values: uColorMode and u_dashSize 0. filled_texture_back, uMaterialMode and
/// uTexture0 are set by every item whose look depends on them.
struct VIEWER3DMODULE_EXPORT ItemUniforms
{
    int itemColor = -1;
    int penWidth = -1;
    int dashSize = -1;
    int gapSize = -1;
    int resolution = -1;
    int colorMode = -1;
    int texture0 = -1; ///< "uTexture0"
    int filledTextureBack = -1;
    int materialMode = -1;
    int offset = -1;  ///< of captions and icons, as the three that follow
    int texture = -1; ///< "uTexture"
    int textureTop = -1;
    int textureBottom = -1;
    int wireMode = -1; ///< of shapes that the program makes
    /// Whether the program's vertex stage asks for the number of a vertex, counted from the first one of its
    /// buffer: so it is for all programs of which buildShaderProgram does not know better.
    bool numbersVertices = true;

    /// Asks the program, which must be linked; its context must be current.
    static ItemUniforms of(QOpenGLShaderProgram& program);
};

/// Locations of the uniforms that drawers set at the beginning of a pass or for its items, and those that the
/// items set, and what else drawers ask of a program. -1 where the program lacks the uniform.
struct VIEWER3DMODULE_EXPORT PassUniforms
{
    int drawMode = -1;
    int projection = -1;
    int view = -1;
    int viewport = -1;
    int viewportInverted = -1;
    int model = -1;
    int normalMatrix = -1;
    int lightDirection = -1;
    int lightMode = -1;
    int selectionColor = -1;
    int interactionColor = -1;
    int itemId = -1;
    int itemFlags = -1;
    int itemIndex = -1;
    int glueMask = -1;
    int firstItem = -1; ///< of a draw call of records, see ItemRecords
    int selectionRect = -1;
    int fenceToUse = -1; ///< of the project's fence, as those that follow
    int fenceGrayPreview = -1;
    int fenceFromScene = -1;
    int fenceInnerBox = -1;
    int fenceOuterBox = -1;
    int fenceEnds = -1;
    int fenceCount = -1;
    int sphereFenceCenter = -1;
    int sphereFenceRadius = -1;
    ItemUniforms items;
    /// Whether the program takes models and normal matrices from records.
    bool readsModels = false;
    bool readsNormalMatrices = false;
    /// Whether the program shows alphas as items and vertices have them, none of which is 0: a variant for
    /// such items (ProgramColors::VisibleItems, VisibleVertices), and no colours by height.
    bool showsOwnAlphas = false;
    /// Whether the program is known to draw what draw calls say: it has no stage that makes triangles of
    /// lines.
    bool drawsAsTold = false;

    /// Asks the program, which must be linked; its context must be current. One that buildShaderProgram or a
    /// variant made is asked once in its life: nobody links it again.
    static PassUniforms of(QOpenGLShaderProgram& program);
};
