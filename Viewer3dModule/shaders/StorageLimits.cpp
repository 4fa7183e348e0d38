#include <Viewer3dModule/shaders/StorageLimits.h>

#include <algorithm>

StorageLimits storageOffered(OpenGLFunctions& gl)
{
    StorageLimits offered;
    gl.glGetIntegerv(GL_MAX_SHADER_STORAGE_BUFFER_BINDINGS, &offered.bindings);
    gl.glGetIntegerv(GL_MAX_FRAGMENT_SHADER_STORAGE_BLOCKS, &offered.fragmentBlocks);
    gl.glGetIntegerv(GL_MAX_GEOMETRY_SHADER_STORAGE_BLOCKS, &offered.geometryBlocks);
    return offered;
}

StorageLimits storageUsed(OpenGLFunctions& gl, unsigned int program)
{
    StorageLimits used;
    GLint count = 0;
    gl.glGetProgramInterfaceiv(program, GL_SHADER_STORAGE_BLOCK, GL_ACTIVE_RESOURCES, &count);
    for (GLint block = 0; block < count; ++block) {
        const GLenum properties[] = {GL_BUFFER_BINDING, GL_REFERENCED_BY_FRAGMENT_SHADER,
                                     GL_REFERENCED_BY_GEOMETRY_SHADER};
        GLint values[] = {0, 0, 0};
        gl.glGetProgramResourceiv(program, GL_SHADER_STORAGE_BLOCK, static_cast<GLuint>(block), 3, properties,
                                  3, nullptr, values);
        used.bindings = std::max(used.bindings, values[0] + 1);
        used.fragmentBlocks += values[1] != 0;
        used.geometryBlocks += values[2] != 0;
    }
    return used;
}

QString missingStorage(const StorageLimits& used, const StorageLimits& offered)
{
    const struct
    {
        const char* name;
        int needed;
        int there;
    } limits[] = {
        {"GL_MAX_SHADER_STORAGE_BUFFER_BINDINGS", used.bindings, offered.bindings},
        {"GL_MAX_FRAGMENT_SHADER_STORAGE_BLOCKS", used.fragmentBlocks, offered.fragmentBlocks},
        {"GL_MAX_GEOMETRY_SHADER_STORAGE_BLOCKS", used.geometryBlocks, offered.geometryBlocks},
    };
    for (const auto& limit : limits)
        if (limit.needed > limit.there)
            return QStringLiteral("the driver's %1 is %2, the program needs %3")
                .arg(QLatin1String(limit.name))
                .arg(limit.there)
                .arg(limit.needed);
    return {};
}
