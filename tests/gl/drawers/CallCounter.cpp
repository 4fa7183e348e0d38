#include "CallCounter.h"

namespace {

int callCount = 0;
int queryCount = 0;

// Qt's lists of pointers to functions, one for each version of OpenGL, which all tables of a context share.
// The members that lead to them are private; an explicit instantiation may name them all the same.
template <class Backend>
Backend* OpenGLFunctions::*listOfTable = nullptr;

template <class Backend, Backend* OpenGLFunctions::*member>
struct NamedList
{
    static inline const bool known = (listOfTable<Backend> = member) != nullptr;
};
template struct NamedList<QOpenGLFunctions_1_0_CoreBackend, &OpenGLFunctions::d_1_0_Core>;
template struct NamedList<QOpenGLFunctions_1_1_CoreBackend, &OpenGLFunctions::d_1_1_Core>;
template struct NamedList<QOpenGLFunctions_1_3_CoreBackend, &OpenGLFunctions::d_1_3_Core>;
template struct NamedList<QOpenGLFunctions_1_5_CoreBackend, &OpenGLFunctions::d_1_5_Core>;
template struct NamedList<QOpenGLFunctions_2_0_CoreBackend, &OpenGLFunctions::d_2_0_Core>;
template struct NamedList<QOpenGLFunctions_3_0_CoreBackend, &OpenGLFunctions::d_3_0_Core>;
template struct NamedList<QOpenGLFunctions_3_1_CoreBackend, &OpenGLFunctions::d_3_1_Core>;
template struct NamedList<QOpenGLFunctions_3_2_CoreBackend, &OpenGLFunctions::d_3_2_Core>;
template struct NamedList<QOpenGLFunctions_3_3_CoreBackend, &OpenGLFunctions::d_3_3_Core>;

/// Stands in for one of the functions.
template <class Backend, auto function>
struct Counted;
template <class Backend, class Functions, class Result, class... Arguments,
          Result (QOPENGLF_APIENTRYP Functions::*function)(Arguments...)>
struct Counted<Backend, function>
{
    static inline Result(QOPENGLF_APIENTRYP original)(Arguments...) = nullptr;
    static inline bool isQuery = false;

    static Result QOPENGLF_APIENTRY call(Arguments... arguments)
    {
        ++callCount;
        queryCount += isQuery;
        return original(arguments...);
    }
    static std::function<void()> replace(OpenGLFunctions& gl, bool asks)
    {
        auto& entry = (gl.*listOfTable<Backend>)->f.*function;
        original = entry;
        isQuery = asks;
        entry = call;
        return [&entry] { entry = original; };
    }
};

} // namespace

CallCounter::CallCounter(OpenGLFunctions& gl)
{
    reset();
#define COUNT_AS(version, name, isQuery)                                                                     \
    m_undo.push_back(                                                                                        \
        Counted<QOpenGLFunctions_##version##_CoreBackend,                                                    \
                &QOpenGLFunctions_##version##_CoreBackend::Functions::name>::replace(gl, isQuery))
#define COUNT(version, name) COUNT_AS(version, name, false)
#define COUNT_QUERY(version, name) COUNT_AS(version, name, true)
    COUNT(1_0, Enable);
    COUNT(1_0, Disable);
    COUNT(1_0, DepthRange);
    COUNT(1_0, PolygonMode);
    COUNT(1_0, TexParameteri);
    COUNT(1_1, BindTexture);
    COUNT(1_1, DrawArrays);
    COUNT(1_1, DrawElements);
    COUNT(1_1, PolygonOffset);
    COUNT(1_3, ActiveTexture);
    COUNT(1_5, BindBuffer);
    COUNT(1_5, BufferData);
    COUNT(1_5, BufferSubData);
    COUNT(2_0, UseProgram);
    COUNT(2_0, Uniform1f);
    COUNT(2_0, Uniform2f);
    COUNT(2_0, Uniform3f);
    COUNT(2_0, Uniform4f);
    COUNT(2_0, Uniform1i);
    COUNT(2_0, UniformMatrix3fv);
    COUNT(2_0, UniformMatrix4fv);
    COUNT(2_0, VertexAttribPointer);
    COUNT(2_0, EnableVertexAttribArray);
    COUNT(2_0, DisableVertexAttribArray);
    COUNT(3_0, Uniform1ui);
    COUNT(3_0, Uniform2ui);
    COUNT(3_0, BindVertexArray);
    COUNT(3_0, BindBufferBase);
    COUNT(3_0, VertexAttribIPointer);
    COUNT(3_1, DrawArraysInstanced);
    COUNT(3_1, DrawElementsInstanced);
    COUNT(3_2, DrawElementsBaseVertex);
    COUNT(3_2, DrawElementsInstancedBaseVertex);
    COUNT(3_3, VertexAttribDivisor);
    COUNT_QUERY(1_0, GetError);
    COUNT_QUERY(1_0, GetIntegerv);
    COUNT_QUERY(1_0, GetFloatv);
    COUNT_QUERY(1_0, GetDoublev);
    COUNT_QUERY(1_0, GetBooleanv);
    COUNT_QUERY(1_0, IsEnabled);
    COUNT_QUERY(1_5, GetBufferSubData);
    COUNT_QUERY(1_5, GetBufferParameteriv);
    COUNT_QUERY(2_0, GetUniformLocation);
    COUNT_QUERY(2_0, GetUniformfv);
    COUNT_QUERY(2_0, GetUniformiv);
    COUNT_QUERY(2_0, GetProgramiv);
    COUNT_QUERY(2_0, GetVertexAttribiv);
    COUNT_QUERY(3_0, GetUniformuiv);
    COUNT_QUERY(3_0, GetIntegeri_v);
#undef COUNT_QUERY
#undef COUNT
#undef COUNT_AS
}

CallCounter::~CallCounter()
{
    for (const auto& undo : m_undo)
        undo();
}

int CallCounter::calls() const
{
    return callCount;
}

int CallCounter::queries() const
{
    return queryCount;
}

void CallCounter::reset()
{
    callCount = 0;
    queryCount = 0;
}
