#pragma once

#include <Viewer3dModule/drawables/GlBuffer.h>
#include <Viewer3dModule/drawables/GlSampler.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <framework/ksp/LONGID.h>

#include <QtGui/QColor>
#include <glm/glm.hpp>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

class Graphics3dItem;
class IconTexture;

/// Draws the labels of items as glyphs that face the viewer: every glyph of every item is a point in one
/// buffer, and all glyphs that share a texture are one draw call. A subclass tells an item's anchor, the
/// height of its label, and its glyphs.
///
/// The labels of one item lie together, from first on; what grows moves to the end and leaves a gap, and when
/// more than a quarter of all records are gaps they are closed. Labels take part in passes that ask for
/// points, except for glue masks and geometry capture.
///
/// Destroyed while a context of the scene's share group is current.
class VIEWER3DMODULE_EXPORT MultiGlyphItem3dDrawer : public Item3dDrawer
{
public:
    /// Offset of the lower left corner of a glyph's image from the anchor, pixels, y up, and its texture.
    using GlyphList = std::vector<std::pair<glm::vec2, std::shared_ptr<IconTexture>>>;
    /// A glyph as the vertex stage reads it.
    struct Glyph
    {
        glm::vec3 position = glm::vec3(0.0f); ///< the item's anchor, scene coordinates
        float height = 0.0f;                  ///< of the label; see getGlyphHeight
        glm::vec2 offset = glm::vec2(0.0f);
        std::int32_t item = 0; ///< slot of the registry
    };
    static_assert(sizeof(Glyph) == 28, "a stride that the vertex stage's attributes rely on");
    /// An item's records: first to first + count - 1.
    struct Range
    {
        std::int32_t first = 0;
        std::int32_t count = 0;
    };

    /// Builds its program in the scene's context, which is current afterwards. A null scene draws nothing.
    explicit MultiGlyphItem3dDrawer(Scene3d* scene);
    ~MultiGlyphItem3dDrawer() override;

    QOpenGLShaderProgram* getProgram() const { return m_program; }
    /// Of all labels; black at first.
    QColor getColor() const { return m_color; }
    void setColor(QColor color) { m_color = std::move(color); }

    void draw(const PaintContext& context, Filter filter) override;
    using Item3dDrawer::updateItem;
    void updateItem(int index) override;
    /// Sets the flags (ItemFlag) of all glyphs of an item until a pass finds others; an index out of range is
    /// ignored.
    void setItemFlag(int index, int flag);

    /// The point that the item's label is laid out around, scene coordinates.
    virtual glm::vec3 getAnchor(Graphics3dItem* item) = 0;
    /// Pixels that the images of the label's glyphs, which are then equally high, are scaled to; 0: one texel
    /// a pixel.
    virtual float getGlyphHeight(Graphics3dItem* item) = 0;
    /// The size of getGlyphs(item).
    virtual int getGlyphCount(Graphics3dItem* item) = 0;
    /// The glyphs in the order of the label. Asked again when gaps are closed, so a subclass keeps what it
    /// laid out.
    virtual GlyphList getGlyphs(Graphics3dItem* item) = 0;

    /// Attaches the records to the vertex array: at locations 0 to 3 the glyph's position, height, offset and
    /// item, at 5 the flags and at 6 the identifier, a record a vertex.
    void bind(unsigned int vertexArray);
    void unbind(unsigned int vertexArray);

    // The books, for who wants to look.
    const std::vector<Glyph>& getGlyphs() const { return m_glyphs; }
    const std::vector<Range>& getRanges() const { return m_ranges; }
    const std::vector<std::int32_t>& getFlags() const { return m_flags; }
    const std::vector<LONGID>& getIds() const { return m_ids; }
    /// Records that no item uses any more.
    int getStaleGlyphs() const { return m_staleGlyphs; }

protected:
    /// With the program of another drawer of this kind, as clones may have it; null draws nothing.
    MultiGlyphItem3dDrawer(Scene3d* scene, QOpenGLShaderProgram* program);

private:
    /// A stretch of the ordered indices with one texture.
    struct Run
    {
        std::int32_t texture; ///< the record whose texture it is
        std::int32_t count;
    };

    Graphics3dItem* graphicsItem(int index) const;
    void growRecords(std::int32_t count);
    void place(int index, std::int32_t count);
    void updateGlyphs(int index);
    template <class Use>
    void forEachLiveRecord(const Use& use) const;
    void findFlags(const Filter& filter);
    void update(OpenGLFunctions& gl);
    void updateFlags(OpenGLFunctions& gl);
    void updateOrderedBuffer(OpenGLFunctions& gl);
    void compressBuffers();
    void drawRuns(OpenGLFunctions& gl, const PaintContext& context);
    void reportIds(const PaintContext& context);

    QOpenGLShaderProgram* m_program;
    QColor m_color = Qt::black;
    GlBuffer m_glyphBuffer;
    GlBuffer m_flagBuffer;
    GlBuffer m_idBuffer;
    std::int32_t m_staleGlyphs = 0;
    std::vector<Range> m_ranges; // one a slot of the registry
    std::vector<Glyph> m_glyphs;
    std::vector<LONGID> m_ids;
    std::vector<std::int32_t> m_flags;
    std::vector<std::shared_ptr<IconTexture>> m_textures;
    GlBuffer m_indexBuffer;
    std::vector<Run> m_runs;
    GlSampler m_sampler;
    bool m_isTexelAPixel = false; // every glyph, as of the last upload
    bool m_needsUpdate = true;
    bool m_flagsChanged = true;
    bool m_orderChanged = true;
};
