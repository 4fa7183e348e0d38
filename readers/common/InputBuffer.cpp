#include <readers/common/InputBuffer.h>

#include <framework/ksp/CommonError.h>

#include <algorithm>
#include <cstring>

namespace readers {

namespace {

constexpr std::size_t firstWindow = 64 * 1024;

bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r') || c == '\0';
}

} // namespace

InputBuffer::InputBuffer(QIODevice& device, ksp::StagedProgress progress)
    : m_device(device)
    , m_progress(std::move(progress))
    , m_size(static_cast<std::uint64_t>(std::max<qint64>(device.size() - device.pos(), 0)))
{
    m_window.resize(static_cast<std::size_t>(std::min<std::uint64_t>(firstWindow, m_size + 1)));
}

bool InputBuffer::fetchMore()
{
    m_progress.throwIfCanceled();
    if (m_offset >= m_size) return false; // what a growing file gains meanwhile is left alone
    if (m_begin > 0) {
        std::memmove(m_window.data(), m_window.data() + m_begin, m_end - m_begin);
        m_end -= m_begin;
        m_begin = 0;
    }
    if (m_end == m_window.size()) m_window.resize(m_window.size() * 2);
    const std::uint64_t wanted = std::min<std::uint64_t>(m_window.size() - m_end, m_size - m_offset);
    const qint64 count = m_device.read(m_window.data() + m_end, static_cast<qint64>(wanted));
    if (count < 0) throw ksp::CommonError(QStringLiteral("cannot be read: %1").arg(m_device.errorString()));
    if (count == 0) { // the file became shorter
        m_size = m_offset;
        return false;
    }
    m_end += static_cast<std::size_t>(count);
    m_offset += static_cast<std::uint64_t>(count);
    m_progress.setDone(static_cast<double>(m_offset), static_cast<double>(m_size));
    return true;
}

bool InputBuffer::fetch(std::size_t count)
{
    if (count > getRemaining()) return false;
    while (m_end - m_begin < count) {
        if (!fetchMore()) return false;
    }
    return true;
}

std::string_view InputBuffer::peek(std::size_t count)
{
    while (m_end - m_begin < count && fetchMore()) {
    }
    return {m_window.data() + m_begin, std::min(count, m_end - m_begin)};
}

bool InputBuffer::readLine(std::string_view& line)
{
    std::size_t length = 0; // known to hold no line end
    for (;;) {
        const char* begin = m_window.data() + m_begin;
        const char* end = m_window.data() + m_end;
        const char* stop = std::find_if(begin + length, end, [](char c) { return c == '\n' || c == '\r'; });
        length = static_cast<std::size_t>(stop - begin);
        // a CR at the window's end may have its LF still to come
        const bool whole = stop != end && (*stop == '\n' || stop + 1 != end);
        if (length > longestLine)
            throw ksp::CommonError(QStringLiteral("line %1 is longer than 4 MiB").arg(m_lineNumber + 1));
        if (!whole && fetchMore()) continue;
        if (begin == end) return false;
        begin = m_window.data() + m_begin;
        end = m_window.data() + m_end;
        stop = begin + length;
        line = {begin, length};
        m_begin += length;
        if (stop != end) ++m_begin;
        if (stop != end && *stop == '\r' && stop + 1 != end && stop[1] == '\n') ++m_begin;
        ++m_lineNumber;
        return true;
    }
}

bool InputBuffer::readToken(std::string_view& token)
{
    for (;;) {
        while (m_begin < m_end && isBlank(m_window[m_begin]))
            ++m_begin;
        if (m_begin < m_end) break;
        if (!fetchMore()) return false;
    }
    std::size_t length = 1;
    for (;;) {
        while (m_begin + length < m_end && !isBlank(m_window[m_begin + length]))
            ++length;
        if (length > longestLine) throw ksp::CommonError(QStringLiteral("holds a word longer than 4 MiB"));
        if (m_begin + length < m_end || !fetchMore()) break;
    }
    token = {m_window.data() + m_begin, length};
    m_begin += length;
    return true;
}

} // namespace readers
