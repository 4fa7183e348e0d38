#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

class QOpenGLShaderProgram;

/// What a program can leave out; see the shader sources Viewer3dFences/*.glsl.
enum class ProgramFence {
    None,
    Sphere, ///< compiled with RX_USE_SPHERE_FENCE
    Swept   ///< a polygon swept into depth, compiled with RX_USE_SWEPT_FENCE
};

/// Which colours a program has to be able to show.
enum class ProgramColors {
    All,            ///< those of vertices, textures and materials, too
    OfItems,        ///< one an item, compiled with RX_ITEM_COLORS_ONLY
    VisibleItems,   ///< and none of them has an alpha of 0, compiled with RX_VISIBLE_ITEMS_ONLY besides
    VisibleVertices ///< those of vertices, too, none of alpha 0, but no textures and no materials: compiled
                    ///< with RX_VISIBLE_ITEMS_ONLY and RX_NO_MATERIALS, without RX_USE_PER_VERTEX_TEX_COORDS
};

/// What a pass needs of a program beyond what it is by itself.
struct ProgramVariant
{
    ProgramFence fence = ProgramFence::None;
    /// Whether the pass is for something else than colours: compiled without RX_COLORS_ONLY.
    bool drawsMasks = false;
    /// Whether items are marked in the selection buffer: compiled without RX_NO_SELECTION_BUFFER.
    bool marksItems = false;
    /// Whether what an item has of its own is read from records instead of uniforms: compiled with
    /// RX_USE_ITEM_RECORDS. See ItemRecords.
    bool readsRecords = false;
    ProgramColors colors = ProgramColors::All;
    /// Whether nothing is lit, as lines and points are: compiled without RX_USE_PER_VERTEX_NORMAL.
    bool isUnlit = false;
    /// Whether there are only triangles, thousands for each look: compiled with RX_LARGE_SURFACES. Not with
    /// records.
    bool drawsLargeSurfaces = false;
};

/// Which uniforms of a variant whoever draws with it sets in each of its passes, so that they are not taken
/// over from the program: asking the driver for their values takes its time.
struct OwnUniforms
{
    /// What Item3dDrawer sets when it prepares a program: matrices, the kind of the pass, colours of what is
    /// chosen, the fence, the area of a selection.
    bool pass = false;
    /// The light of the view: uLightDirection and uLightMode.
    bool light = false;
    /// Those of items (ItemUniforms, what captions take, item_flags, item_id, glue_mask), which have their
    /// first values when the pass begins. For an item that counts on what a host has set in the program see
    /// takeItemUniforms.
    bool items = false;
};

/// The program that draws as this one does, and what the variant says as well: the program itself where it
/// does so already, or where its stages know nothing of it. Another one is built when it is first asked for,
/// belongs to the program and has its primitives.
///
/// There are variants because drivers that run both sides of a condition make every fragment pay for what its
/// pass does not need: writing to the selection buffer costs a frame of markers half its time, asking what
/// the pass draws costs one of lines a tenth.
///
/// The program must be linked, or a DeferredProgram, which is not built for it, and its context current. A
/// variant that cannot be built is logged, once; the pass is drawn with what can be: item by item, without
/// the fence, or without marking anything.
VIEWER3DMODULE_EXPORT QOpenGLShaderProgram& findProgramVariant(QOpenGLShaderProgram& program,
                                                               ProgramVariant variant);
/// Whether there may be a variant that reads records; told by the sources, and nothing is built.
VIEWER3DMODULE_EXPORT bool mayReadRecords(QOpenGLShaderProgram& program);
/// The same at the beginning of a pass: where it is another program, that one is in use and has the values of
/// the program's uniforms, but for those that are set by whoever draws. What a pass sets in it afterwards
/// does not stay for the next one, but for these, which he sets anew.
VIEWER3DMODULE_EXPORT QOpenGLShaderProgram&
beginProgramVariant(QOpenGLShaderProgram& program, ProgramVariant variant, const OwnUniforms& own = {});
/// Gives the uniforms that items set (not what is set for every one of them) in a variant that was begun
/// without them the values that they have in its program. The variant is in use; a program that is no variant
/// has its own.
VIEWER3DMODULE_EXPORT void takeItemUniforms(QOpenGLShaderProgram& variant);

/// Whether a variant shows alphas as items and vertices have them, none of which is 0.
VIEWER3DMODULE_EXPORT bool showsOwnAlphas(const QOpenGLShaderProgram& variant);
/// Whether it draws large surfaces, and writes no size of points.
VIEWER3DMODULE_EXPORT bool isForLargeSurfaces(const QOpenGLShaderProgram& variant);
