#pragma once

#include <tests/support/GlTest.h>
#include <tests/support/ProgramList.h>
#include <tests/support/RenderTarget.h>

#include <Viewer3dModule/shaders/Uniforms.h>

#include <QtGui/QOpenGLShaderProgram>
#include <glm/glm.hpp>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

/// Draws with the default programs and nothing else of the renderer: buffers, uniforms and draw calls of the
/// test's own into a target of four colour attachments, without blending. Pixels are counted from the top
/// left, y down.
class ShaderDrawing : public GlTest
{
protected:
    /// Values of "draw_mode".
    enum Mode { Ordinal, SelectionMask, GlueMask, SelectionBuffer };

    static constexpr int Size = 64;
    /// What the attachments hold before anything is drawn: something else than zero, so that a written zero
    /// shows.
    static constexpr std::array<int, 4> Untouched = {10, 20, 30, 40};

    void SetUp() final;
    void TearDown() final;
    /// What a fixture does before each test, the context being current.
    virtual void prepare() {}

    /// Builds and binds the program of this name in ProgramList.h and sets "viewport" and
    /// "viewport_inverted".
    void use(const std::string& name);
    /// Binds a program of the test's own.
    void use(const ProgramRecipe& wanted, const std::vector<std::string>& varyings = {});

    /// Sets a uniform that the program must have.
    template <typename T>
    void set(const char* name, const T& value)
    {
        const int location = program->uniformLocation(name);
        EXPECT_GE(location, 0) << "no uniform " << name;
        uniforms::set(*gl, location, value);
    }
    /// The colour of items, highlighted ones included.
    void setColors(const glm::vec4& item, const glm::vec4& selection = {0.0f, 1.0f, 0.0f, 1.0f});

    /// Feeds an attribute with floats.
    void attribute(unsigned location, int components, const std::vector<float>& values);
    /// Feeds a matrix at this location and the three after it, one an instance.
    void instanceMatrices(unsigned location, const std::vector<glm::mat4>& values);
    /// Feeds an attribute with floats, one value an instance.
    void instanceFloats(unsigned location, int components, const std::vector<float>& values);
    /// Feeds an attribute with integers of this type (GL_INT, GL_UNSIGNED_INT), one value an instance.
    void instanceIntegers(unsigned location, int components, unsigned type,
                          const std::vector<std::uint32_t>& values);
    /// Positions of a rectangle in normalised device coordinates, for a strip of four vertices.
    void rectangle(float left, float bottom, float right, float top, float z = 0.0f);
    /// Two positions for a line.
    void line(const glm::vec3& from, const glm::vec3& to);
    /// A texture at unit 0; rows top-down, four bytes a pixel, nearest filtering.
    void texture(int width, int height, const std::vector<std::uint32_t>& pixels);

    /// Clears the target and draws.
    void draw(unsigned mode, int count, int instances = 1);

    /// Calls draws with nothing rasterised and returns what transform feedback takes of each vertex, one
    /// after the other. The program must have been built with varyings of `components` floats in all.
    /// @param primitive  what the last stage before the fragments puts out: GL_POINTS, GL_LINES or
    ///                   GL_TRIANGLES
    /// @param room       the most vertices there may be; the test fails when there are more
    std::vector<float> capture(unsigned primitive, int components, std::size_t room,
                               const std::function<void()>& draws);
    /// The same of one draw call.
    std::vector<float> capture(unsigned mode, int count, unsigned primitive, int components, std::size_t room,
                               int instances = 1);

    QColor pixel(int x, int y, int attachment = 0) const;
    /// The 32-bit word whose bytes an attachment holds at the pixel.
    std::uint32_t word(int x, int y, int attachment) const;
    /// The bits of the depth buffer's value at the pixel.
    std::uint32_t depthBits(int x, int y) const;
    bool isUntouched(int x, int y) const;
    /// Pixels of the colour attachment that were written.
    int touchedCount() const;

    /// Fills the storage buffer for selection with zeros and sets the mask; an empty mask is none.
    void beginSelection(const std::vector<std::int32_t>& mask = {0});
    /// The words of the storage buffer for selection.
    std::vector<std::uint32_t> selectedWords();

    std::unique_ptr<QOpenGLShaderProgram> program;
    std::vector<std::string> furtherDefines; ///< of what `use` builds, besides its recipe's
    std::unique_ptr<RenderTarget> target;
    std::vector<QImage> images; ///< the attachments after draw
    std::vector<float> depths;  ///< the depth buffer after draw, top row first
    static constexpr int SelectionWords = 8;

private:
    /// Puts the bytes into a buffer of their own, which stays bound.
    void upload(const void* bytes, std::size_t size);

    std::vector<unsigned> m_buffers;
    std::vector<unsigned> m_textures;
    unsigned m_selection[2] = {0, 0};
};
