#include <Viewer3dModule/shaders/UniformCopy.h>

#include <Viewer3dModule/shaders/ProgramVariants.h>

#include <QtGui/QOpenGLShaderProgram>

#include <map>
#include <set>
#include <string>
#include <utility>

namespace {

using Types = std::map<std::string, GLenum>;

/// The uniforms outside of blocks, those in arrays one by one.
Types activeUniforms(OpenGLFunctions& gl, GLuint program)
{
    Types all;
    GLint count = 0, longest = 0;
    gl.glGetProgramiv(program, GL_ACTIVE_UNIFORMS, &count);
    gl.glGetProgramiv(program, GL_ACTIVE_UNIFORM_MAX_LENGTH, &longest);
    std::vector<char> buffer(static_cast<std::size_t>(longest) + 1);
    for (GLint i = 0; i < count; ++i) {
        GLint size = 0;
        GLenum type = 0;
        gl.glGetActiveUniform(program, static_cast<GLuint>(i), longest, nullptr, &size, &type, buffer.data());
        const std::string name = buffer.data();
        if (gl.glGetUniformLocation(program, name.c_str()) < 0) continue;
        all.emplace(name, type);
        const std::size_t bracket = name.rfind("[0]");
        if (bracket == std::string::npos || bracket + 3 != name.size()) continue;
        for (GLint k = 1; k < size; ++k)
            all.emplace(name.substr(0, bracket) + '[' + std::to_string(k) + ']', type);
    }
    return all;
}

/// How uniforms of one type are set; the kind is that of the function that reads them.
struct Setter
{
    enum Kind { Float, Int, Uint } kind;
    void (*set)(OpenGLFunctions& gl, GLint location, const void* value);
};

template <typename T>
const T* as(const void* value)
{
    return static_cast<const T*>(value);
}

#define V3D_VECTOR(kind, type, function)                                                                     \
    Setter                                                                                                   \
    {                                                                                                        \
        Setter::kind,                                                                                        \
            [](OpenGLFunctions& gl, GLint at, const void* value) { gl.function(at, 1, as<type>(value)); }    \
    }
#define V3D_MATRIX(function)                                                                                 \
    Setter                                                                                                   \
    {                                                                                                        \
        Setter::Float, [](OpenGLFunctions& gl, GLint at, const void* value) {                                \
            gl.function(at, 1, GL_FALSE, as<GLfloat>(value));                                                \
        }                                                                                                    \
    }

/// Booleans and samplers are set as integers.
Setter setterOf(GLenum type)
{
    switch (type) {
    case GL_FLOAT:
        return V3D_VECTOR(Float, GLfloat, glUniform1fv);
    case GL_FLOAT_VEC2:
        return V3D_VECTOR(Float, GLfloat, glUniform2fv);
    case GL_FLOAT_VEC3:
        return V3D_VECTOR(Float, GLfloat, glUniform3fv);
    case GL_FLOAT_VEC4:
        return V3D_VECTOR(Float, GLfloat, glUniform4fv);
    case GL_FLOAT_MAT2:
        return V3D_MATRIX(glUniformMatrix2fv);
    case GL_FLOAT_MAT3:
        return V3D_MATRIX(glUniformMatrix3fv);
    case GL_FLOAT_MAT4:
        return V3D_MATRIX(glUniformMatrix4fv);
    case GL_INT_VEC2:
    case GL_BOOL_VEC2:
        return V3D_VECTOR(Int, GLint, glUniform2iv);
    case GL_INT_VEC3:
    case GL_BOOL_VEC3:
        return V3D_VECTOR(Int, GLint, glUniform3iv);
    case GL_INT_VEC4:
    case GL_BOOL_VEC4:
        return V3D_VECTOR(Int, GLint, glUniform4iv);
    case GL_UNSIGNED_INT:
        return V3D_VECTOR(Uint, GLuint, glUniform1uiv);
    case GL_UNSIGNED_INT_VEC2:
        return V3D_VECTOR(Uint, GLuint, glUniform2uiv);
    case GL_UNSIGNED_INT_VEC3:
        return V3D_VECTOR(Uint, GLuint, glUniform3uiv);
    case GL_UNSIGNED_INT_VEC4:
        return V3D_VECTOR(Uint, GLuint, glUniform4uiv);
    default:
        return V3D_VECTOR(Int, GLint, glUniform1iv);
    }
}

#undef V3D_VECTOR
#undef V3D_MATRIX

void read(OpenGLFunctions& gl, GLuint program, GLint location, Setter::Kind kind, void* bytes)
{
    switch (kind) {
    case Setter::Float:
        gl.glGetUniformfv(program, location, static_cast<GLfloat*>(bytes));
        break;
    case Setter::Int:
        gl.glGetUniformiv(program, location, static_cast<GLint*>(bytes));
        break;
    case Setter::Uint:
        gl.glGetUniformuiv(program, location, static_cast<GLuint*>(bytes));
        break;
    }
}

} // namespace

UniformCopy::Owner UniformCopy::ownerOf(const std::string& name, bool hasLight)
{
    static const std::set<std::string> ofPasses = {
        "draw_mode",        "projection",          "view",
        "viewport",         "viewport_inverted",   "model",
        "normalMatrix",     "selection_color",     "interaction_color",
        "fence_to_use",     "fence_gray_preview",  "fence_inner_box",
        "fence_outer_box",  "fence_ends",          "fence_count",
        "fence_from_scene", "item_index",          "selection_rect",
        "first_item",       "sphere_fence_center", "sphere_fence_radius"};
    static const std::set<std::string> ofEachItem = {"item_flags",      "item_id",   "uTessLevelOuter",
                                                     "uTessLevelInner", "uTextureK", "uTextureB"};
    static const std::set<std::string> ofItems = {
        "glue_mask",  "item_color", "pen_width",     "u_dashSize",          "u_gapSize", "u_resolution",
        "uColorMode", "uTexture0",  "uMaterialMode", "filled_texture_back", "offset",    "uTexture",
        "uTexTop",    "uTexBottom", "uTexLeft",      "uTexRight",           "tex",       "uWireMode"};
    if (ofPasses.count(name) != 0) return Owner::Pass;
    if (ofEachItem.count(name) != 0) return Owner::EachItem;
    // Without a direction no pass sets whether there is light at all, see Item3dDrawer.
    const bool isOfLight = name == "uLightDirection" || name == "uLightMode";
    if (isOfLight && hasLight) return Owner::Light;
    return isOfLight || ofItems.count(name) != 0 ? Owner::Item : Owner::Host;
}

UniformCopy::UniformCopy(QOpenGLShaderProgram& variant)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) return;
    const GLuint program = variant.programId();
    const Types types = activeUniforms(*gl, program);
    const bool hasLight = types.count("uLightDirection") != 0;
    for (const auto& [name, type] : types) {
        Uniform uniform{
            name, type, ownerOf(name, hasLight), -1, gl->glGetUniformLocation(program, name.c_str()), {}};
        read(*gl, program, uniform.to, setterOf(type).kind, uniform.first.data());
        m_uniforms.push_back(std::move(uniform));
    }
}

void UniformCopy::connect(OpenGLFunctions& gl, QOpenGLShaderProgram* program)
{
    if (m_isConnected || !program) return;
    m_isConnected = true;
    const Types types = activeUniforms(gl, program->programId());
    for (Uniform& uniform : m_uniforms) {
        const auto same = types.find(uniform.name);
        if (same == types.end() || same->second != uniform.type) continue;
        uniform.from = gl.glGetUniformLocation(program->programId(), uniform.name.c_str());
    }
}

void UniformCopy::setFirst(OpenGLFunctions& gl, const Uniform& uniform)
{
    setterOf(uniform.type).set(gl, uniform.to, uniform.first.data());
}

void UniformCopy::take(OpenGLFunctions& gl, const Uniform& uniform, QOpenGLShaderProgram* program)
{
    if (!program) {
        setFirst(gl, uniform);
        return;
    }
    if (uniform.from < 0) return;
    const Setter setter = setterOf(uniform.type);
    UniformBytes value;
    read(gl, program->programId(), uniform.from, setter.kind, value.data());
    setter.set(gl, uniform.to, value.data());
}

void UniformCopy::begin(OpenGLFunctions& gl, QOpenGLShaderProgram* program, const OwnUniforms& own)
{
    connect(gl, program);
    for (const Uniform& uniform : m_uniforms) {
        if (uniform.owner == Owner::Pass && own.pass) continue;
        if (uniform.owner == Owner::Light && own.light) continue;
        const bool isOfItem = uniform.owner == Owner::Item || uniform.owner == Owner::EachItem;
        if (isOfItem && own.items)
            setFirst(gl, uniform);
        else
            take(gl, uniform, program);
    }
}

void UniformCopy::takeItems(OpenGLFunctions& gl, QOpenGLShaderProgram* program)
{
    connect(gl, program);
    for (const Uniform& uniform : m_uniforms)
        if (uniform.owner == Owner::Item) take(gl, uniform, program);
}
