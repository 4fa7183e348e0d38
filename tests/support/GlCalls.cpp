#include "GlCalls.h"

#include <gtest/gtest.h>

namespace {

// Qt's lists of pointers to functions, one for each version of OpenGL, which all tables of a context share.
// The members that lead to them are private; an explicit instantiation may name them all the same.
template <class Backend>
Backend* OpenGLFunctions::*memberOfTable = nullptr;

template <class Backend, Backend* OpenGLFunctions::*member>
struct NamedMember
{
    static inline const bool known = (memberOfTable<Backend> = member) != nullptr;
};
template struct NamedMember<QOpenGLFunctions_1_0_CoreBackend, &OpenGLFunctions::d_1_0_Core>;
template struct NamedMember<QOpenGLFunctions_1_1_CoreBackend, &OpenGLFunctions::d_1_1_Core>;
template struct NamedMember<QOpenGLFunctions_1_5_CoreBackend, &OpenGLFunctions::d_1_5_Core>;
template struct NamedMember<QOpenGLFunctions_3_1_CoreBackend, &OpenGLFunctions::d_3_1_Core>;

template <class Backend>
auto& functionsOf(OpenGLFunctions& gl)
{
    return (gl.*memberOfTable<Backend>)->f;
}

GlCalls* counter = nullptr;

} // namespace

/// The functions that are counted: the driver's own, and the lists that they are taken from.
struct GlCalls::Table
{
    QOpenGLFunctions_1_0_CoreBackend::Functions& list10;
    QOpenGLFunctions_1_1_CoreBackend::Functions& list11;
    QOpenGLFunctions_1_5_CoreBackend::Functions& list15;
    QOpenGLFunctions_3_1_CoreBackend::Functions& list31;
    decltype(list10.GetIntegerv) getIntegerv = list10.GetIntegerv;
    decltype(list10.TexImage2D) texImage2D = list10.TexImage2D;
    decltype(list11.DrawArrays) drawArrays = list11.DrawArrays;
    decltype(list11.DrawElements) drawElements = list11.DrawElements;
    decltype(list15.BufferData) bufferData = list15.BufferData;
    decltype(list15.BufferSubData) bufferSubData = list15.BufferSubData;
    decltype(list31.DrawArraysInstanced) drawArraysInstanced = list31.DrawArraysInstanced;

    explicit Table(OpenGLFunctions& functions)
        : list10(functionsOf<QOpenGLFunctions_1_0_CoreBackend>(functions))
        , list11(functionsOf<QOpenGLFunctions_1_1_CoreBackend>(functions))
        , list15(functionsOf<QOpenGLFunctions_1_5_CoreBackend>(functions))
        , list31(functionsOf<QOpenGLFunctions_3_1_CoreBackend>(functions))
    {
        list10.GetIntegerv = countGetIntegerv;
        list10.TexImage2D = countTexImage2D;
        list11.DrawArrays = countDrawArrays;
        list11.DrawElements = countDrawElements;
        list15.BufferData = countBufferData;
        list15.BufferSubData = countBufferSubData;
        list31.DrawArraysInstanced = countDrawArraysInstanced;
    }
    ~Table()
    {
        list10.GetIntegerv = getIntegerv;
        list10.TexImage2D = texImage2D;
        list11.DrawArrays = drawArrays;
        list11.DrawElements = drawElements;
        list15.BufferData = bufferData;
        list15.BufferSubData = bufferSubData;
        list31.DrawArraysInstanced = drawArraysInstanced;
    }

    static Table& active() { return *counter->m_table; }
    static void noteUpload(GLenum target, GLsizeiptr bytes)
    {
        GLint bound = 0;
        if (target == GL_ARRAY_BUFFER) active().getIntegerv(GL_ARRAY_BUFFER_BINDING, &bound);
        counter->uploads.push_back({static_cast<unsigned int>(bound), static_cast<std::size_t>(bytes)});
    }
    static void QOPENGLF_APIENTRY countGetIntegerv(GLenum what, GLint* values)
    {
        counter->polygonModeQuestions += what == GL_POLYGON_MODE;
        active().getIntegerv(what, values);
    }
    static void QOPENGLF_APIENTRY countTexImage2D(GLenum target, GLint level, GLint inside, GLsizei width,
                                                  GLsizei height, GLint border, GLenum format, GLenum type,
                                                  const GLvoid* pixels)
    {
        ++counter->textureUploads;
        active().texImage2D(target, level, inside, width, height, border, format, type, pixels);
    }
    static void QOPENGLF_APIENTRY countDrawArrays(GLenum mode, GLint first, GLsizei count)
    {
        counter->draws.push_back({mode, count, 1});
        active().drawArrays(mode, first, count);
    }
    static void QOPENGLF_APIENTRY countDrawElements(GLenum mode, GLsizei count, GLenum type,
                                                    const GLvoid* indices)
    {
        counter->draws.push_back({mode, count, 1});
        active().drawElements(mode, count, type, indices);
    }
    static void QOPENGLF_APIENTRY countBufferData(GLenum target, GLsizeiptr size, const GLvoid* data,
                                                  GLenum usage)
    {
        noteUpload(target, size);
        active().bufferData(target, size, data, usage);
    }
    static void QOPENGLF_APIENTRY countBufferSubData(GLenum target, GLintptr offset, GLsizeiptr size,
                                                     const GLvoid* data)
    {
        noteUpload(target, size);
        active().bufferSubData(target, offset, size, data);
    }
    static void QOPENGLF_APIENTRY countDrawArraysInstanced(GLenum mode, GLint first, GLsizei count,
                                                           GLsizei instances)
    {
        counter->draws.push_back({mode, count, instances});
        active().drawArraysInstanced(mode, first, count, instances);
    }
};

GlCalls::GlCalls(OpenGLFunctions& gl)
{
    EXPECT_EQ(counter, nullptr) << "calls are counted already";
    counter = this;
    m_table = std::make_unique<Table>(gl);
}

GlCalls::~GlCalls()
{
    m_table.reset();
    counter = nullptr;
}

void GlCalls::reset()
{
    uploads.clear();
    draws.clear();
    textureUploads = 0;
    polygonModeQuestions = 0;
}

std::size_t GlCalls::uploadedBytes() const
{
    std::size_t sum = 0;
    for (const Upload& upload : uploads)
        sum += upload.bytes;
    return sum;
}
