#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <array>
#include <cstddef>
#include <string>
#include <vector>

class QOpenGLShaderProgram;
struct OwnUniforms;

/// A value of any uniform; a 4 x 4 matrix is the largest.
struct UniformBytes
{
    std::byte* data() { return bytes.data(); }
    const std::byte* data() const { return bytes.data(); }
    alignas(GLfloat) std::array<std::byte, 16 * sizeof(GLfloat)> bytes{};
};

/// Keeps the uniforms of a variant as those of its program are: of all that both have by the same name and
/// type. Locations and first values are found once, both programs stay as they are when they are linked.
class UniformCopy
{
public:
    /// The variant must be linked, its context current.
    explicit UniformCopy(QOpenGLShaderProgram& variant);

    /// At the beginning of a pass: sets in the variant, which must be in use, what the program has, but for
    /// what is set by whoever draws. Of a null program, one that is still to be built, all uniforms have
    /// their first values.
    void begin(OpenGLFunctions& gl, QOpenGLShaderProgram* program, const OwnUniforms& own);
    /// Likewise those that items set, alone.
    void takeItems(OpenGLFunctions& gl, QOpenGLShaderProgram* program);

private:
    /// Who sets a uniform; EachItem: the drawer or the shape, for every item.
    enum class Owner { Pass, Light, EachItem, Item, Host };
    struct Uniform
    {
        std::string name; ///< needed until the program is known
        GLenum type;
        Owner owner;
        GLint from; ///< location in the program; -1 where it has none
        GLint to;
        UniformBytes first;
    };
    static Owner ownerOf(const std::string& name, bool hasLight);
    void connect(OpenGLFunctions& gl, QOpenGLShaderProgram* program);
    static void setFirst(OpenGLFunctions& gl, const Uniform& uniform);
    static void take(OpenGLFunctions& gl, const Uniform& uniform, QOpenGLShaderProgram* program);

    std::vector<Uniform> m_uniforms;
    bool m_isConnected = false;
};
