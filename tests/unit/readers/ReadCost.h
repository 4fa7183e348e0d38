#pragma once

#include <QtCore/QString>

#include <functional>

/// What a reading took, in a process of its own.
struct ReadCost
{
    QString refusal;      ///< empty when it was read
    double seconds = 0.0; ///< of the processor
    double memory = 0.0;  ///< the most that was held at a time beyond what there was before, bytes
};

/// Calls the function in a process of its own and measures it. The function may throw ksp::CommonError;
/// ending in any other way fails the test.
ReadCost costOf(const std::function<void()>& read);

/// Memory and time mean little where the compiler or a sanitizer adds its own.
constexpr bool canMeasure()
{
#if defined(__SANITIZE_ADDRESS__) || !defined(__OPTIMIZE__)
    return false;
#else
    return true;
#endif
}
