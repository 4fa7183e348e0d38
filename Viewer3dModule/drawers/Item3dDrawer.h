#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/drawables/ItemPass.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/shaders/Uniforms.h>
#include <framework/ksp/CGuardedObject.h>

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtGui/QColor>
#include <QtGui/QOpenGLShaderProgram>
#include <glm/glm.hpp>

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

class ContextualItem3dDrawer;
class Drawable3dItem;
enum class ProgramColors;
class IItem3dSelectionProvider;
class Scene3dViewLightingSettings;

/// A render strategy: draws all items of its registry, which it does not own, with one program.
///
/// All operations that draw or set uniforms run on the thread of the scene's context with a context of the
/// scene's share group current. None throws; without a current 4.3 core function table they keep
/// their books (model matrices) and draw nothing.
class VIEWER3DMODULE_EXPORT Item3dDrawer : public QObject, public ksp::CGuardedObject
{
public:
    using Filter = std::function<bool(Drawable3dItem*)>;

    /// scene is not owned; it may be null in tests (there is then no lighting and no program building).
    explicit Item3dDrawer(Scene3d* scene);
    /// Items that are still registered become unregistered.
    ~Item3dDrawer() override;

    /// Draws the visible items that pass the filter (empty: all), which holds for as long as the call.
    virtual void draw(const PaintContext& context, Filter filter) = 0;
    /// A new drawer of the same kind and settings on the same scene, with an empty registry.
    virtual std::unique_ptr<Item3dDrawer> clone() const = 0;
    /// The item at the index was added, removed or changed. The base does nothing.
    virtual void updateItem(int index);
    /// Sets the current model matrix, or multiplies it by the matrix from the right (which then applies to
    /// vertices first), and uploads it to the context's program, if there is one.
    virtual void setTransform(const PaintContext& context, const glm::mat4& matrix, bool multiply);
    /// The current model matrix.
    virtual glm::mat4 getTransform();

    /// Whether the project's fence limits what is drawn; true at first. The scene sets it and the next one
    /// for drawers of its own, see Scene3d::setObeysFence and Scene3d::setForeground. Stages of a composite
    /// drawer are as it is; a clone starts anew.
    bool obeysFence() const { return root()->m_obeysFence; }
    void setObeysFence(bool obeys) { m_obeysFence = obeys; }
    /// Whether what is drawn lies before everything else; false at first.
    bool isForeground() const { return root()->m_isForeground; }
    void setForeground(bool foreground) { m_isForeground = foreground; }

    Scene3d* scene() const { return m_scene; }
    /// The registry, in no particular order: that of the topmost ancestor.
    const std::vector<Drawable3dItem*>& getItems() const;
    /// Another number whenever the registry has changed, of all drawers on all threads.
    std::uint64_t registryRevision() const { return root()->m_registryRevision; }
    /// updateItem of the item's index.
    void updateItem(Drawable3dItem* item);
    /// This drawer and the context as one value; the context must outlive it.
    ContextualItem3dDrawer asContextual(const PaintContext& context);

    /// Per-item uniforms: flags (highlight), identifier, glue mask; in a pass for the selection buffer the
    /// item's index, 0 for an item that stands for no element.
    void setItemParameters(const Drawable3dItem* item, const PaintContext& context);
    /// Sets "pen_width" (pixels).
    void setPenWidth(float width);
    /// Sets "uLightMode" to whether the view's light is on and the caller wants it. It holds until the next
    /// model matrix is set, which switches it back to the view's.
    void setShaderLightMode(bool on);

    /// What uniform normalMatrix is for a matrix from model to eye coordinates.
    static glm::mat3 normalMatrix(const glm::mat4& modelView);

    void saveTransformState();
    /// Puts the last saved matrix back; nothing when none is saved.
    void restoreTransformState(const PaintContext& context);
    void translate(const PaintContext& context, const glm::vec3& offset);
    void scale(const PaintContext& context, const glm::vec3& factors);
    /// angle in radians, axis in model coordinates.
    void rotate(const PaintContext& context, float angle, const glm::vec3& axis);

    /// Fills the uniforms of colouring by height: one colour and one height (scene units) a level, in the
    /// order given, at most 256; levelStep > 0 states that heights are equidistant; discrete: no
    /// interpolation. Binds the program.
    static void setColorLevels(QOpenGLShaderProgram* program,
                               const std::vector<std::pair<double, QColor>>& levels, float levelStep,
                               bool discrete);
    /// Fills them with a built-in ramp of colours, blue through green and yellow to red, from the lower to
    /// the upper height.
    static void setColorLevels(QOpenGLShaderProgram* program, float lower, float upper);

    /// Locations of the uniforms that items set, good for the program of the pass that prepareProgram began.
    const ItemUniforms& itemUniforms() const { return m_uniforms.items; }
    /// The locations for the context's program: the drawer's where the context names a drawer that prepared
    /// it, else asked of the program (slow); all -1 without a program.
    static ItemUniforms itemUniforms(const PaintContext& context);
    /// See ItemUniforms.
    static bool numbersVertices(const PaintContext& context);
    /// What the items of the pass have bound and set so far, where it is kept for the item that is drawn now
    /// and the context is that of the pass; else null. See ItemPass::of.
    ItemPass* activePass(const PaintContext& context);

protected:
    friend class Drawable3dItem;

    /// Registers an item that is not registered yet; calls updateItem in either case. Returns its index.
    int addItem(Drawable3dItem* item);
    /// Removes the item at the index by moving the last one into its slot; an index out of range is ignored.
    void removeItem(int index);
    void removeItem(Drawable3dItem* item);
    /// The registered item has moved in memory.
    void replaceItem(int index, Drawable3dItem* item);
    void addChildDrawer(Item3dDrawer* child);
    void setParentDrawer(Item3dDrawer* parent);

    /// Of a registered item, among getItems().
    static int indexOf(const Drawable3dItem& item);
    /// What uniform item_id says of an item.
    static glm::uvec2 itemId(const Drawable3dItem& item);

    /// Whether the project's fence is to leave out anything of what is drawn now.
    bool isFenced() const;
    /// Says of the items that are drawn next that they lie inside of the fence as a whole.
    void setInsideFence(bool inside) { m_insideFence = inside; }
    /// Whether prepareProgram takes the variant of programs that reads items from records. See
    /// ProgramVariant.
    void setReadsRecords(bool reads) { m_readsRecords = reads; }
    /// Likewise which colours the variant is to show.
    void setProgramColors(ProgramColors colors) { m_programColors = colors; }
    /// Likewise whether nothing is lit.
    void setUnlit(bool unlit) { m_isUnlit = unlit; }
    /// Likewise whether there are large surfaces only.
    void setLargeSurfaces(bool large) { m_areLargeSurfaces = large; }

    /// Says whether what prepareProgram's variants draw sets the uniforms of items, or counts on their first
    /// values: they are not taken over from the program then. False at first.
    void setOwnsItemUniforms(bool owns) { m_ownsItemUniforms = owns; }
    /// Takes them over for what is drawn next, once a pass.
    void takeItemUniforms(const PaintContext& context);

    /// Whether the settings of the project say that the light of the pass's view is on; false without
    /// settings, where hosts tell by uniforms.
    bool isLit(const PaintContext& context) const;

    ItemPass& itemPass() { return m_itemPass; }
    /// saveTransformState, and what only makes that matrix the current one again: it is not set in the
    /// program, where whoever draws next sets one of its own.
    std::size_t beginTransform();
    void endTransform(std::size_t depth);

    /// Locations in the program of the pass that prepareProgram began.
    const PassUniforms& passUniforms() const { return m_uniforms; }
    /// Binds the context's program and sets what holds for the whole pass; false when it cannot be drawn
    /// with.
    bool prepareProgram(const PaintContext& context);
    /// The same with the variant of the program that the pass needs, which the context has afterwards: the
    /// one that obeys the project's fence, or marks items in the selection buffer. See beginProgramVariant.
    bool prepareProgram(PaintContext& context);

private:
    const Item3dDrawer* root() const;
    const Scene3dViewLightingSettings* lightSettings() const;
    void findLight(const PaintContext& context);
    void bindFence(OpenGLFunctions& gl, const PaintContext& context);
    void joinSelection(const PaintContext& context);
    void setSelectionIndex(OpenGLFunctions& gl, const Drawable3dItem& item);
    void registryChanged();

    Scene3d* m_scene;
    QPointer<Item3dDrawer> m_parent;
    std::vector<Drawable3dItem*> m_items;
    std::uint64_t m_registryRevision = 0;
    glm::mat4 m_transform = glm::mat4(1.0f);
    std::vector<glm::mat4> m_transformStack;
    bool m_lightMode = true;
    bool m_obeysFence = true;
    bool m_insideFence = false;
    bool m_readsRecords = false;
    ProgramColors m_programColors = ProgramColors(); // all
    bool m_isUnlit = false;
    bool m_areLargeSurfaces = false;
    bool m_isForeground = false;
    bool m_ownsItemUniforms = false;
    bool m_lacksItemUniforms = false; ///< in this pass, so far

    bool m_lightModeChanged = false;
    int m_itemIndexLocation = -1;
    IItem3dSelectionProvider* m_selection = nullptr; // only in a pass for the selection buffer
    PassUniforms m_uniforms;                         ///< of the prepared program
    QPointer<QOpenGLShaderProgram> m_preparedProgram;
    ItemPass m_itemPass;
};
