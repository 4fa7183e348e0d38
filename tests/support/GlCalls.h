#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <cstddef>
#include <memory>
#include <vector>

/// Counts what is asked of OpenGL through the function tables of one context, for as long as it lives; the
/// calls go on to the driver. One at a time, and the context outlives it.
class GlCalls
{
public:
    /// Bytes given to a buffer by glBufferData or glBufferSubData.
    struct Upload
    {
        unsigned int buffer = 0; ///< what was bound for vertex data; 0 for other targets
        std::size_t bytes = 0;
    };
    struct Draw
    {
        unsigned int mode = 0;
        int vertices = 0;
        int instances = 1;
    };

    /// @param gl  a table of the context, which is current
    explicit GlCalls(OpenGLFunctions& gl);
    ~GlCalls();
    GlCalls(const GlCalls&) = delete;
    GlCalls& operator=(const GlCalls&) = delete;

    /// Forgets what was counted.
    void reset();
    /// The sum over all uploads to buffers.
    std::size_t uploadedBytes() const;

    std::vector<Upload> uploads; ///< to buffers, in the order of the calls
    std::vector<Draw> draws; ///< glDrawArrays, glDrawArraysInstanced, glDrawElements; no others are noticed
    int textureUploads = 0;  ///< glTexImage2D
    int polygonModeQuestions = 0; ///< glGetIntegerv of GL_POLYGON_MODE

private:
    struct Table;
    std::unique_ptr<Table> m_table;
};
