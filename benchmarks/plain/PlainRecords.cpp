#include <benchmarks/plain/PlainRecords.h>

#include <cstddef>

namespace {

const void* at(std::size_t offset)
{
    return reinterpret_cast<const void*>(offset);
}

} // namespace

PlainRecords::PlainRecords(PlainContext& context, const std::vector<PlainItem>& items)
    : m_context(context)
{
    PlainContext::Functions& gl = context.gl();
    context.buffer(GL_ARRAY_BUFFER, items);
    constexpr GLsizei stride = sizeof(PlainItem);
    for (GLuint column = 0; column < 4; ++column)
        gl.glVertexAttribPointer(2 + column, 4, GL_FLOAT, GL_FALSE, stride,
                                 at(offsetof(PlainItem, matrix) + column * sizeof(glm::vec4)));
    gl.glVertexAttribPointer(6, 4, GL_FLOAT, GL_FALSE, stride, at(offsetof(PlainItem, color)));
    gl.glVertexAttribIPointer(7, 2, GL_UNSIGNED_INT, stride, at(offsetof(PlainItem, id)));
    gl.glVertexAttribIPointer(8, 1, GL_INT, stride, at(offsetof(PlainItem, flags)));
    gl.glVertexAttribPointer(9, 1, GL_FLOAT, GL_FALSE, stride, at(offsetof(PlainItem, width)));
    for (GLuint location = 2; location <= 9; ++location) {
        gl.glEnableVertexAttribArray(location);
        gl.glVertexAttribDivisor(location, 1);
    }
}

void PlainRecords::drawArrays(GLenum mode)
{
    PlainContext::Functions& gl = m_context.gl();
    gl.glBindBuffer(GL_DRAW_INDIRECT_BUFFER, m_commands);
    gl.glMultiDrawArraysIndirect(mode, nullptr, m_count, 0);
}

void PlainRecords::drawElements(GLenum mode)
{
    PlainContext::Functions& gl = m_context.gl();
    gl.glBindBuffer(GL_DRAW_INDIRECT_BUFFER, m_commands);
    gl.glMultiDrawElementsIndirect(mode, GL_UNSIGNED_INT, nullptr, m_count, 0);
}
