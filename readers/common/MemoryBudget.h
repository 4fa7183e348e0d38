#pragma once

#include <framework/ksp/CommonError.h>

namespace readers {

/// The memory that what a file becomes may take: a small file can ask for very much. Files that were not
/// written to do so stay far below.
class MemoryBudget
{
public:
    /// Bytes that a text takes, about.
    static constexpr std::size_t ofText(std::size_t characters) { return 56 + 2 * characters; }

    /// fileSize: bytes.
    explicit MemoryBudget(std::size_t fileSize)
        : m_left(12'000'000 + 6 * fileSize)
    {
    }

    /// One of so many bytes.
    static MemoryBudget of(std::size_t bytes)
    {
        MemoryBudget budget(0);
        budget.m_left = bytes;
        return budget;
    }

    /// Throws ksp::CommonError when so many bytes more are too many.
    void charge(std::size_t bytes)
    {
        if (bytes > m_left)
            throw ksp::CommonError(QStringLiteral("unfolds to far more than a file of its size should"));
        m_left -= bytes;
    }

private:
    std::size_t m_left;
};

} // namespace readers
