#pragma once

#include <Viewer3dModule/drawables/GlBuffer.h>

#include <array>
#include <cstdint>
#include <vector>

/// Draw commands for glMultiDraw*Indirect on the graphics processor. Those of the last few passes are kept,
/// as the passes of a frame differ in what they draw: one that draws the same as before uploads nothing.
/// Destroyed while a context of the share group is current.
class DrawCommands
{
public:
    /// The name of a buffer with these words, which are taken over; the vector then has old ones.
    unsigned int bufferOf(OpenGLFunctions& gl, std::vector<std::uint32_t>& words);

private:
    struct List
    {
        std::vector<std::uint32_t> words;
        GlBuffer buffer;
        std::uint64_t lastUse = 0;
    };
    std::array<List, 4> m_lists;
    std::uint64_t m_uses = 0;
};
