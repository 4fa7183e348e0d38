#pragma once

#include <framework/ksp/StagedProgress.h>

#include <QtCore/QIODevice>

#include <cstdint>
#include <string_view>
#include <vector>

namespace readers {

/// Reads a device from front to back through a window that grows with the longest line or block asked for,
/// never beyond what the device holds. Reports progress and obeys a cancel each time it fetches more. A
/// device that fails throws ksp::CommonError.
///
/// The views and pointers that it hands out are good until the next call.
class InputBuffer
{
public:
    InputBuffer(QIODevice& device, ksp::StagedProgress progress);

    /// The longest line and run of characters that are read, in bytes; longer ones throw ksp::CommonError.
    static constexpr std::size_t longestLine = 4 * 1024 * 1024;

    /// The next line without its end (LF, CR LF or CR); false at the end of the data.
    bool readLine(std::string_view& line);
    /// The number of the last line read, from 1.
    std::uint64_t getLineNumber() const { return m_lineNumber; }
    /// The next run of characters between blanks and line ends; false at the end of the data.
    bool readToken(std::string_view& token);
    /// The next bytes in one piece; null when fewer are left.
    const char* readBytes(std::size_t count)
    {
        if (m_end - m_begin < count && !fetch(count)) return nullptr;
        const char* bytes = m_window.data() + m_begin;
        m_begin += count;
        return bytes;
    }
    /// The bytes ahead, at most count, without taking them.
    std::string_view peek(std::size_t count);

    /// Bytes of the whole device, and those not yet taken.
    std::uint64_t getSize() const { return m_size; }
    std::uint64_t getRemaining() const { return m_size - m_offset + (m_end - m_begin); }

private:
    bool fetch(std::size_t count);
    bool fetchMore();

    QIODevice& m_device;
    ksp::StagedProgress m_progress;
    std::vector<char> m_window;
    std::size_t m_begin = 0; // what is not taken yet, in the window
    std::size_t m_end = 0;
    std::uint64_t m_offset = 0; // bytes fetched so far
    std::uint64_t m_size = 0;
    std::uint64_t m_lineNumber = 0;
};

} // namespace readers
