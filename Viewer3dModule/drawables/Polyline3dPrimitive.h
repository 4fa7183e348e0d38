#pragma once

#include <Viewer3dModule/drawables/Drawable3dPrimitive.h>
#include <Viewer3dModule/drawables/GlBuffer.h>
#include <Viewer3dModule/drawables/VertexPool.h>

#include <QtGui/QPen>

#include <memory>

class VertexArrayBinding;
struct ItemDrawing;

/// A pen as programs see it: made of a QPen once and not for every draw.
struct VIEWER3DMODULE_EXPORT LinePen
{
    glm::vec4 color = glm::vec4(0.0f, 0.0f, 0.0f, 1.0f); ///< red, green, blue, alpha, 0 to 1
    float width = 1.0f;                                  ///< pixels
    bool isDashed = false;                               ///< 10 by 10 pixels; any style but a solid line

    LinePen() = default;
    explicit LinePen(const QPen& pen);
};

/// One vertex buffer of positions, or a slice of one, of which any range is drawn as a strip.
class VIEWER3DMODULE_EXPORT Polyline3dPrimitive : public Drawable3dPrimitive
{
public:
    /// Where the vertices lie.
    enum class Storage : std::uint8_t {
        Own,   ///< in a buffer of the primitive's own, which getVBO names
        Shared ///< with those of others, see VertexPool: best for many small ones. getVBO is 0
    };
    explicit Polyline3dPrimitive(Storage storage = Storage::Own);
    /// The source is left without vertices.
    Polyline3dPrimitive(Polyline3dPrimitive&& other) noexcept;
    Polyline3dPrimitive& operator=(Polyline3dPrimitive&& other) noexcept;
    Polyline3dPrimitive(const Polyline3dPrimitive&) = delete;
    Polyline3dPrimitive& operator=(const Polyline3dPrimitive&) = delete;
    /// Deletes the buffers; a context of the share group must be current.
    ~Polyline3dPrimitive() override;

    /// Uploads the positions; a buffer of the same length is kept. A context of the share group must be
    /// current, in the other setters too: without one nothing changes.
    void setVertices(const std::vector<glm::vec3>& vertices);
    /// Changes one position; an index that is not there is ignored.
    void setVertex(int index, const glm::vec3& vertex);
    /// Sets colour and width (pixels) of the pen, and dashes of 10 by 10 pixels for any pen style but a solid
    /// one, in the context's program, which must be in use.
    void setPen(const PaintContext& context, const QPen& pen);
    void setPen(const PaintContext& context, const LinePen& pen);
    /// Ends the pen's dashes, as items that set none count on; after the draw of every pen that may have
    /// them.
    void resetPen(const PaintContext& context);

    /// drawRange over the whole buffer.
    void draw(const PaintContext& context, int instances) override;
    /// Draws vertices first to first + count - 1, as far as they are there, as a strip (a single one as a
    /// point).
    void drawRange(const PaintContext& context, int first, int count, int instances);
    /// drawRange for strips that follow one another in the buffer, the first at its start; counts are their
    /// lengths.
    void drawStrips(const PaintContext& context, const std::vector<int>& counts);

    /// What draw draws with this pen, for Drawable3dItem::describeDrawing.
    void describe(ItemDrawing& drawing, const QPen& pen) const;
    /// What drawStrips draws.
    void describeStrips(ItemDrawing& drawing, const QPen& pen, const std::vector<int>& counts) const;

    std::vector<glm::vec3> getVertices() override;
    glm::vec3 getVertex(int index) override;
    /// One point, or the segments of the strip.
    GeometryInfo getGeometryInfo() override;

    /// For items that answer for the buffer of theirs.
    int getVertexCount() const override { return m_vertexCount; }
    unsigned int getVBO() const override { return m_buffers ? m_buffers->vertices.name() : 0; }

private:
    /// Vertices of the buffer; none when the count is 0.
    struct Range
    {
        int start;
        int count;
    };
    Range clamped(std::int64_t first, std::int64_t count) const;
    unsigned int buffer() const;
    int bind(VertexArrayBinding& binding, const PaintContext& context) const;
    void drawStrip(VertexArrayBinding& binding, std::int32_t primitives, Range range, int instances);
    void drawWithAdjacency(VertexArrayBinding& binding, Range range, int instances);

    /// What a primitive of shared vertices mostly does without.
    struct Buffers
    {
        GlBuffer vertices;   // its own
        GlBuffer endIndices; // made when a program first asks for adjacency
    };
    Buffers& buffers();

    std::unique_ptr<Buffers> m_buffers; // null before one of them is made
    vertex_pool::Slice m_slice;         // of shared vertices
    int m_vertexCount = 0;
    Storage m_storage;
};
