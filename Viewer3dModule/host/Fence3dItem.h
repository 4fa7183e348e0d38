#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/fences/Fence3DObject.h>
#include <Viewer3dModule/fences/FenceSides.h>
#include <Viewer3dModule/fences/fence_inner_box.h>
#include <Viewer3dModule/shaders/ShaderStorageBufferObject.h>

#include <framework/model/CModelElement.h>

#include <vector>

class CProjectModel;
struct PaintContext;
struct PassUniforms;

/// The fence of the 3D view as an element of the project, and what hands it to the shaders.
///
/// The fence lives in the model's coordinates; what the shaders get is in the scene's. Whoever changes the
/// fence itself calls notifyObservers() after it.
///
/// A project has one, among its settings and stored with it, and every scene of its model obeys that one:
/// see Scene3d::getFence.
class VIEWER3DMODULE_EXPORT Fence3dItem : public CModelElement
{
public:
    /// No fence. Makes no OpenGL call. owner is not owned and may be null.
    explicit Fence3dItem(CModelElement* owner = nullptr);
    Fence3dItem(const Fence3dItem&) = delete;
    Fence3dItem& operator=(const Fence3dItem&) = delete;
    /// Deletes its storage buffer when a context of the share group is current.
    ~Fence3dItem() override;

    /// The element of the model's project; null where there is none, and without project.
    static Fence3dItem* find(const CProjectModel* model);

    int getType() const override;

    /// The fence; null when there is none.
    const std::shared_ptr<Fence3DObject>& getFence() const { return m_fence; }
    /// The fence's Fence3DObject::Type, or 0 without one.
    int getFenceType() const;
    /// Whether nothing limits the view: no fence, or an empty one.
    bool empty() const;
    /// The fence, when it is of this type; otherwise a new one, empty, that takes its place. Null, and
    /// nothing changes, for a number that is no type.
    std::shared_ptr<Fence3DObject> getCreateFence(Fence3DObject::Type type);
    /// Removes the fence and notifies, when there is one. Who still holds it keeps it.
    void reset();
    /// A copy of the fence for points of the frame that modelToScene leads to; null when nothing limits the
    /// view. See Fence3DObject::getIFence3D.
    std::shared_ptr<gmx::IFence3D> getIFence3D(const glm::dmat4& modelToScene) const;

    /// What tells of boxes on which side of the fence they lie, as it is now; no value when nothing limits
    /// the view.
    std::optional<FenceSides> getSides(const glm::dmat4& sceneToModel);

    /// While the user is at work on the fence, what lies outside is shown in grey and not cut away; passes
    /// for depths alone leave it out all the same. False at first; not stored. Notifies when it changes.
    void setInteractionMode(bool on);
    bool isInteractionMode() const { return m_interactionMode; }

    /// Tells the context's program, which must be in use, the kind of fence ("fence_to_use": 0 none, 1
    /// frustum, 2 sphere, 3 prism), the interaction mode ("fence_gray_preview") and the fence's data. Whether
    /// the program limits what it draws: false without an OpenGL context or program, without the uniform (the
    /// program is left as it is), for no fence or an empty one, and when the data cannot be handed over.
    bool bind(const PaintContext& context);
    /// The same where it is known where the program has its uniforms, see PassUniforms::of.
    bool bind(const PaintContext& context, const PassUniforms& locations);
    /// The data of a frustum or a prism: fills the storage block "prism_fence_buffer", binding point 10, with
    /// 144 + 8 * n bytes for n points, and binds it. A record that is there already is not written again.
    /// Little-endian, 32 bits a number:
    ///
    ///     0    4 floats   least corner of the box of the near and far outlines in the scene, then 1
    ///     16   4 floats   greatest corner, then 1
    ///     32   16 floats  scene to fence frame, column by column
    ///     96   3 floats   zNear, zFar, tanHalfFovy
    ///     108  uint       n
    ///     112  n * 2 floats  the polygon, closed, in normalised screen units
    ///
    /// That of a prism is the same in its own frame: zNear is 0, zFar the height, tanHalfFovy 0, and the
    /// polygon lies in x and y of the frame.
    ///
    /// The bytes after the points are 0. Where zFar is not above zNear the fence has no end: then the box
    /// says nothing, and nothing may be left out by it. False for a fence of another kind and without scene.
    /// Shaders multiply what they read: of a polygon with numbers beyond 1e18 they may leave out all.
    bool bindFrustumPrism(const PaintContext& context);
    /// The data of a sphere: "sphere_fence_center" and "sphere_fence_radius", in the scene. False for a fence
    /// of another kind and without context or scene.
    ///
    /// Both set "fence_from_scene" too, which takes places in the scene to where the fence is looked at: for
    /// a sphere the identity, else the matrix of the record, for a frustum with x and y divided by
    /// tanHalfFovy. A polygon comes with "fence_inner_box" and "fence_outer_box", see fence_inner_box.h, and,
    /// as in the record, "fence_ends" (zNear and zFar) and "fence_count" (n).
    bool bindSphere(const PaintContext& context);

    /// Reads or writes the element with its fence; a read one is new, and the fence that was there stays as
    /// it is for who holds it. A kind that is not known is refused with ksp::CFileException (Damaged).
    void serialize(CQtArchive& archive) override;

private:
    void serializeFields(CQtArchive& archive);
    std::vector<char> makeRecord(const glm::dmat4& modelToScene) const;
    void updateBoxes(const std::vector<glm::vec2>& polygon);
    bool bindFrustumPrism(const PaintContext& context, const PassUniforms& locations);
    bool bindSphere(const PaintContext& context, const PassUniforms& locations);
    void setSweptUniforms(OpenGLFunctions& gl, const PassUniforms& locations, const SweptFence& swept,
                          const glm::dmat4& sceneToModel);

    std::shared_ptr<Fence3DObject> m_fence;
    ShaderStorageBufferObject m_buffer;
    std::vector<char> m_written;    // what the buffer holds; empty when that is not known
    std::vector<glm::vec2> m_boxed; // the polygon that the boxes are of
    FenceBox m_innerBox;
    FenceBox m_outerBox;
    bool m_interactionMode = false;
};
