#include <readers/cityjson/IndexTree.h>

#include <framework/ksp/CommonError.h>

#include <limits>

namespace readers {

void IndexTree::clear()
{
    m_entries.clear();
    m_open.clear();
}

void IndexTree::beginList()
{
    constexpr std::size_t deepest = 8;
    if (m_open.size() == deepest) throw ksp::CommonError(QStringLiteral("its lists nest too deeply"));
    m_open.push_back(m_entries.size());
    m_entries.push_back(list);
    m_entries.push_back(0);
}

void IndexTree::endList()
{
    const std::size_t begin = m_open.back();
    const std::size_t length = m_entries.size() - begin;
    if (length > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        throw ksp::CommonError(QStringLiteral("has a geometry that is too large"));
    m_entries[begin + 1] = static_cast<std::int32_t>(length);
    m_open.pop_back();
}

} // namespace readers
