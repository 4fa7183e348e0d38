#include "CallCounter.h"

#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>

#include <cstdlib>
#include <cstring>
#include <new>

#include <dlfcn.h>

// What Qt has for tools that look at programs; its header is not installed with the others.
struct QSignalSpyCallbackSet
{
    void (*begin)(QObject*, int, void**);
    void (*slotBegin)(QObject*, int, void**);
    void (*end)(QObject*, int);
    void (*slotEnd)(QObject*, int);
};
void Q_CORE_EXPORT qt_register_signal_spy_callbacks(QSignalSpyCallbackSet* callbacks);

static int allocationCount = 0;

void* operator new(std::size_t size)
{
    ++allocationCount;
    if (void* place = std::malloc(size)) return place;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    ++allocationCount;
    return std::malloc(size);
}
void operator delete(void* place) noexcept
{
    std::free(place);
}
void operator delete(void* place, std::size_t) noexcept
{
    std::free(place);
}

// What the libraries take from the C library directly, as Qt's containers do; what the driver takes does not
// count. Sanitizers have allocation functions of their own.
static int plainAllocationCount = 0;
static thread_local bool isCounting = false;
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define COUNTS_PLAIN_ALLOCATIONS

static void countPlain(const void* caller)
{
    if (!isCounting) return;
    Dl_info info{};
    if (dladdr(caller, &info) == 0 || !info.dli_fname) return;
    for (const char* library : {"libViewer3dModule", "libHostFramework", "libQt5"})
        plainAllocationCount += std::strstr(info.dli_fname, library) != nullptr;
}

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* place, std::size_t size);

void* malloc(std::size_t size) noexcept
{
    countPlain(__builtin_return_address(0));
    return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) noexcept
{
    countPlain(__builtin_return_address(0));
    return __libc_calloc(count, size);
}
void* realloc(void* place, std::size_t size) noexcept
{
    countPlain(__builtin_return_address(0));
    return __libc_realloc(place, size);
}
}
#endif

bool CallCounter::countsPlainAllocations()
{
#ifdef COUNTS_PLAIN_ALLOCATIONS
    return true;
#else
    return false;
#endif
}

namespace {

int callCount = 0;
int queryCount = 0;
int emittedCount = 0;
int firstAllocation = 0;

QSignalSpyCallbackSet signalCallbacks{[](QObject*, int, void**) { ++emittedCount; }, nullptr, nullptr,
                                      nullptr};

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
template struct NamedList<QOpenGLFunctions_4_0_CoreBackend, &OpenGLFunctions::d_4_0_Core>;
template struct NamedList<QOpenGLFunctions_4_3_CoreBackend, &OpenGLFunctions::d_4_3_Core>;

// Programs have another list: what they are asked for by name goes there.
QOpenGLFunctionsPrivate* QOpenGLFunctions::*listOfPrograms = nullptr;

template <QOpenGLFunctionsPrivate* QOpenGLFunctions::*member>
struct NamedProgramList
{
    static inline const bool known = (listOfPrograms = member) != nullptr;
};
template struct NamedProgramList<&QOpenGLFunctions::d_ptr>;

/// Stands in for one of the functions.
template <auto function>
struct Counted;
template <class Functions, class Result, class... Arguments,
          Result (QOPENGLF_APIENTRYP Functions::*function)(Arguments...)>
struct Counted<function>
{
    static inline Result(QOPENGLF_APIENTRYP original)(Arguments...) = nullptr;
    static inline bool isQuery = false;

    static Result QOPENGLF_APIENTRY call(Arguments... arguments)
    {
        ++callCount;
        queryCount += isQuery;
        return original(arguments...);
    }
    static std::function<void()> replace(Functions& list, bool asks)
    {
        auto& entry = list.*function;
        original = entry;
        isQuery = asks;
        entry = call;
        return [&entry] { entry = original; };
    }
};

} // namespace

CallCounter::CallCounter(OpenGLFunctions& gl)
{
#define COUNT_AS(version, name, isQuery)                                                                     \
    m_undo.push_back(Counted<&QOpenGLFunctions_##version##_CoreBackend::Functions::name>::replace(           \
        (gl.*listOfTable<QOpenGLFunctions_##version##_CoreBackend>)->f, isQuery))
#define COUNT(version, name) COUNT_AS(version, name, false)
#define COUNT_QUERY(version, name) COUNT_AS(version, name, true)
    COUNT(1_0, Enable);
    COUNT(1_0, Disable);
    COUNT(1_0, DepthRange);
    COUNT(1_0, PolygonMode);
    COUNT(1_0, TexParameteri);
    COUNT(1_0, DepthMask);
    COUNT(1_0, Finish);
    COUNT(1_1, BindTexture);
    COUNT(1_1, DrawArrays);
    COUNT(1_1, DrawElements);
    COUNT(1_1, PolygonOffset);
    COUNT(1_3, ActiveTexture);
    COUNT(1_5, BindBuffer);
    COUNT(1_5, BufferData);
    COUNT(1_5, BufferSubData);
    COUNT(1_5, MapBuffer);
    COUNT(2_0, UseProgram);
    COUNT(2_0, Uniform1f);
    COUNT(2_0, Uniform2f);
    COUNT(2_0, Uniform3f);
    COUNT(2_0, Uniform4f);
    COUNT(2_0, Uniform1i);
    COUNT(2_0, Uniform1fv);
    COUNT(2_0, Uniform2fv);
    COUNT(2_0, Uniform3fv);
    COUNT(2_0, Uniform4fv);
    COUNT(2_0, Uniform1iv);
    COUNT(2_0, UniformMatrix3fv);
    COUNT(2_0, UniformMatrix4fv);
    COUNT(2_0, VertexAttribPointer);
    COUNT(2_0, EnableVertexAttribArray);
    COUNT(2_0, DisableVertexAttribArray);
    COUNT(3_0, Uniform1ui);
    COUNT(3_0, Uniform2ui);
    COUNT(3_0, Uniform1uiv);
    COUNT(3_0, Uniform4uiv);
    COUNT(3_0, BindVertexArray);
    COUNT(3_0, MapBufferRange);
    COUNT(3_0, BindBufferBase);
    COUNT(3_0, VertexAttribIPointer);
    COUNT(3_1, DrawArraysInstanced);
    COUNT(3_1, DrawElementsInstanced);
    COUNT(3_2, DrawElementsBaseVertex);
    COUNT(3_2, DrawElementsInstancedBaseVertex);
    COUNT(3_2, ProvokingVertex);
    COUNT(3_3, VertexAttribDivisor);
    COUNT(3_3, BindSampler);
    COUNT(4_0, PatchParameteri);
    COUNT(4_3, MultiDrawArraysIndirect);
    COUNT(4_3, MultiDrawElementsIndirect);
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
    COUNT_QUERY(2_0, GetActiveUniform);
    COUNT_QUERY(2_0, GetVertexAttribiv);
    COUNT_QUERY(3_0, GetUniformuiv);
    COUNT_QUERY(3_0, GetIntegeri_v);
    COUNT_QUERY(3_2, GetInteger64v);
#undef COUNT_QUERY
#undef COUNT
#undef COUNT_AS
    countPrograms();
    qt_register_signal_spy_callbacks(&signalCallbacks);
    isCounting = true;
    reset();
}

void CallCounter::countPrograms()
{
    QOpenGLFunctionsPrivate::Functions& list =
        (QOpenGLContext::currentContext()->functions()->*listOfPrograms)->f;
#define COUNT_AS(name, isQuery)                                                                              \
    m_undo.push_back(Counted<&QOpenGLFunctionsPrivate::Functions::name>::replace(list, isQuery))
    COUNT_AS(UseProgram, false);
    COUNT_AS(Uniform1f, false);
    COUNT_AS(Uniform1i, false);
    COUNT_AS(Uniform1fv, false);
    COUNT_AS(Uniform2fv, false);
    COUNT_AS(Uniform3fv, false);
    COUNT_AS(Uniform4fv, false);
    COUNT_AS(Uniform1iv, false);
    COUNT_AS(UniformMatrix3fv, false);
    COUNT_AS(UniformMatrix4fv, false);
    COUNT_AS(GetUniformLocation, true);
    COUNT_AS(GetAttribLocation, true);
    COUNT_AS(GetIntegerv, true);
    COUNT_AS(GetError, true);
    COUNT_AS(GetProgramiv, true);
#undef COUNT_AS
}

CallCounter::~CallCounter()
{
    isCounting = false;
    qt_register_signal_spy_callbacks(nullptr);
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

int CallCounter::allocations() const
{
    return allocationCount - firstAllocation;
}

int CallCounter::plainAllocations() const
{
    return plainAllocationCount;
}

int CallCounter::signalCount() const
{
    return emittedCount;
}

void CallCounter::reset()
{
    firstAllocation = allocationCount;
    plainAllocationCount = 0;
    emittedCount = 0;
    callCount = 0;
    queryCount = 0;
}
