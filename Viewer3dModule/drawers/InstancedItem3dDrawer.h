#pragma once

#include <Viewer3dModule/drawables/GlBuffer.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <framework/ksp/LONGID.h>

#include <cstdint>
#include <vector>

/// Draws all items of its registry, which are like one another, in one instanced draw call. T is what an item
/// has of its own: a place (glm::vec3) or a matrix (glm::mat4), in scene coordinates. Beside it lie the
/// item's flags and identifier, a record each for every slot of the registry.
///
/// A subclass tells an item's record and issues the draw call. Its program takes the records as instance
/// attributes, see bind(). A pass uploads what changed since the last one: the flags where an item was
/// hidden, shown, highlighted or filtered, and everything where an item was added, removed or changed.
/// Geometry capture leaves instances out; their items tell no counts.
///
/// Destroyed while a context of the scene's share group is current.
template <class T>
class VIEWER3DMODULE_EXPORT InstancedItem3dDrawer : public Item3dDrawer
{
public:
    /// @param program         draws where the context names none; not owned, may be null
    /// @param firstAttribute  location of the record in the vertex stage
    InstancedItem3dDrawer(Scene3d* scene, QOpenGLShaderProgram* program, int firstAttribute);
    ~InstancedItem3dDrawer() override;

    QOpenGLShaderProgram* getProgram() const { return m_program; }
    /// The records, one a slot of the registry.
    const std::vector<T>& getItemParams() const { return m_params; }
    /// The number of records.
    int getBuffersSize() const { return static_cast<int>(m_params.size()); }
    /// Sets an item's flags (ItemFlag) until the next pass finds them out anew; an index out of range is
    /// ignored.
    void setItemFlag(int index, int flag);

    void draw(const PaintContext& context, Filter filter) override;
    using Item3dDrawer::updateItem;
    void updateItem(int index) override;

    /// The record of the item at this index of the registry, which is valid.
    virtual T getItemParams(int index) = 0;
    /// Issues the draw call for as many instances as there are items. The program is in use and the
    /// context's vertex array bound, with the records attached.
    virtual void drawItems(const PaintContext& context) = 0;
    /// Attaches the records to the vertex array, each attribute with this divisor:
    ///
    ///     glm::vec3  first location            3 floats
    ///     glm::mat4  the first four locations  4 floats each, at the bytes 0, 4, 8 and 12 of the record
    ///     both       the next location         1 integer: the flags
    ///     both       the one after it          2 unsigned integers: the identifier, low word first
    ///
    /// The four attributes of a matrix overlap; a subclass with columns in them lays them out itself.
    virtual void bind(unsigned int vertexArray, int divisor);
    /// Detaches them.
    virtual void unbind(unsigned int vertexArray);

protected:
    /// What draw does after the program was prepared, for subclasses that prepare it in a way of their own.
    void drawImpl(const PaintContext& context, const Filter& filter = {});
    /// Called by draw when the program is prepared and in use, for uniforms that hold for all instances; does
    /// nothing.
    virtual void programPrepared() {}

private:
    void findFlags(const Filter& filter);
    void update(OpenGLFunctions& gl);
    void updateFlags(OpenGLFunctions& gl);

    QOpenGLShaderProgram* m_program;
    GlBuffer m_paramBuffer;
    GlBuffer m_flagBuffer;
    GlBuffer m_idBuffer;
    int m_firstAttribute;
    std::vector<T> m_params;
    std::vector<LONGID> m_ids;
    std::vector<std::int32_t> m_flags;
    bool m_needsUpdate = true;
    bool m_flagsChanged = true;
};

// Exported once more: the types of glm are hidden, and what is made of them would be too.
extern template class VIEWER3DMODULE_EXPORT InstancedItem3dDrawer<glm::vec3>;
extern template class VIEWER3DMODULE_EXPORT InstancedItem3dDrawer<glm::mat4>;
