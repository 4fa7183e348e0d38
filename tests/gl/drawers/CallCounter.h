#pragma once

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <functional>
#include <vector>

/// Counts the calls of OpenGL that drawing makes through the function tables of one context, and those of
/// programs of its share group, for as long as it lives: all that binds, sets, enables, uploads or draws, and
/// all that asks, also for a uniform by its name. The calls go on to the driver. What the process allocates
/// and emits meanwhile is counted as well. One at a time, and the context outlives it.
class CallCounter
{
public:
    /// @param gl  a table of the context, which is current
    explicit CallCounter(OpenGLFunctions& gl);
    ~CallCounter();
    CallCounter(const CallCounter&) = delete;
    CallCounter& operator=(const CallCounter&) = delete;

    /// Since the last reset.
    int calls() const;       ///< of all kinds
    int queries() const;     ///< glGet and the like
    int allocations() const; ///< by new
    /// By Qt, the framework and the module from the C library directly; none are counted where a sanitizer
    /// has its functions.
    int plainAllocations() const;
    int signalCount() const; ///< of all objects
    void reset();

    /// False where a sanitizer has the C library's functions.
    static bool countsPlainAllocations();

private:
    void countPrograms();

    std::vector<std::function<void()>> m_undo;
};
