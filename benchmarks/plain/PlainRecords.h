#pragma once

#include <benchmarks/plain/ItemUniforms.h>

#include <vector>

// What a vertex stage reads instead of the uniforms of items, under the same names.
#define PLAIN_ITEM_RECORDS                                                                                   \
    "uniform mat4 viewProjection;\n"                                                                         \
    "uniform vec4 chosenColor;\n"                                                                            \
    "layout(location = 2) in mat4 model;\n"                                                                  \
    "layout(location = 6) in vec4 color;\n"                                                                  \
    "layout(location = 7) in uvec2 id;\n"                                                                    \
    "layout(location = 8) in int flags;\n"                                                                   \
    "layout(location = 9) in float width;\n"

/// Items as records in a buffer, and draw commands that lead to them by their base instances: all items by
/// one call.
class PlainRecords
{
public:
    struct ArraysCommand
    {
        GLuint count, instances, first, record;
    };
    struct ElementsCommand
    {
        GLuint count, instances, firstIndex;
        GLint baseVertex;
        GLuint record;
    };

    /// Attaches the records to the bound vertex array.
    PlainRecords(PlainContext& context, const std::vector<PlainItem>& items);
    template <class Command>
    void setCommands(const std::vector<Command>& commands)
    {
        m_commands = m_context.buffer(GL_DRAW_INDIRECT_BUFFER, commands);
        m_count = static_cast<GLsizei>(commands.size());
    }
    /// With program and vertex array bound.
    void drawArrays(GLenum mode);
    void drawElements(GLenum mode);

private:
    PlainContext& m_context;
    GLuint m_commands = 0;
    GLsizei m_count = 0;
};
