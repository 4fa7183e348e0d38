#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <ostream>

/// Numbers of live OpenGL objects that are shared between contexts. A context of the share group must be
/// current. Names are looked for up to a bound that tests stay below.
struct GlObjects
{
    int buffers = 0;
    int textures = 0;
    int programs = 0;
    int shaders = 0;

    static GlObjects count(OpenGLFunctions& gl)
    {
        GlObjects objects;
        for (GLuint name = 1; name < 20000; ++name) {
            objects.buffers += gl.glIsBuffer(name) != 0;
            objects.textures += gl.glIsTexture(name) != 0;
            objects.programs += gl.glIsProgram(name) != 0;
            objects.shaders += gl.glIsShader(name) != 0;
        }
        return objects;
    }
    bool operator==(const GlObjects& other) const
    {
        return buffers == other.buffers && textures == other.textures && programs == other.programs &&
               shaders == other.shaders;
    }
};

inline std::ostream& operator<<(std::ostream& out, const GlObjects& objects)
{
    return out << objects.buffers << " buffers, " << objects.textures << " textures, " << objects.programs
               << " programs, " << objects.shaders << " shaders";
}
