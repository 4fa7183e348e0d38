#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <Viewer3dModule/drawables/VertexArraySetup.h>

#include <glm/glm.hpp>

#include <cstdint>

struct PaintContext;

/// What items have bound and set so far in a pass, so that the next one binds and sets only what differs.
/// That is so between items which promise that nobody else has done it (Drawable3dItem::drawsByPrimitives);
/// before any other item all is put back and forgotten. Belongs to the drawer of the pass.
class VIEWER3DMODULE_EXPORT ItemPass
{
public:
    /// A value that a uniform is known to have, or none.
    template <class T>
    class Known
    {
    public:
        /// Whether it has to be set to have this value, which is known from then on.
        bool change(const T& value)
        {
            if (m_isKnown && m_value == value) return false;
            m_value = value;
            m_isKnown = true;
            return true;
        }

    private:
        T m_value{};
        bool m_isKnown = false;
    };
    /// Uniforms of the program of the pass.
    struct Uniforms
    {
        Known<glm::vec4> itemColor;
        Known<float> penWidth;
        Known<float> dashSize;
        Known<std::int32_t> itemFlags;
        Known<std::int32_t> colorMode;
        Known<std::int32_t> materialMode;
        Known<std::int32_t> texture0;
        Known<std::int32_t> filledTextureBack;
        Known<bool> lightMode;
    };

    ItemPass() = default;

    /// A pass begins. Where its items are not to keep anything all do as they would alone.
    /// @param offsetsFills  whether polygon offset may be off while lines and points are drawn, see
    ///                      PaintContext::offsetsFills
    void begin(bool keeps, bool offsetsFills = false)
    {
        m_keeps = keeps;
        m_vertexArray.setOffsetsFills(offsetsFills);
    }
    /// The next item begins; whether it promises to draw by the module's primitives alone.
    void beginItem(bool drawsByPrimitives);
    /// No vertex array is bound afterwards.
    void end();

    /// Whether something is kept for the item that is drawn now.
    bool isActive() const { return m_isActive; }
    VertexArraySetup& vertexArray() { return m_vertexArray; }
    Uniforms& uniforms() { return m_uniforms; }

    /// That of the drawer that prepared the context's program, while something is kept; else null.
    static ItemPass* of(const PaintContext& context);

private:
    void forget();

    bool m_keeps = false;
    bool m_isActive = false;
    VertexArraySetup m_vertexArray;
    Uniforms m_uniforms;
};
