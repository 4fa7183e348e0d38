#pragma once

#include <cstdint>
#include <vector>

namespace readers {

/// Lists of lists of indices, as CityJSON has them for boundaries and for what belongs to their surfaces, in
/// one piece of memory. An entry may be null.
class IndexTree
{
public:
    /// An entry: a list, an index or null. Good while the tree is not changed.
    class Node
    {
    public:
        Node() = default; ///< null
        bool isList() const { return m_entry && *m_entry == list; }
        bool isNull() const { return !m_entry || *m_entry == none; }
        bool isIndex() const { return m_entry && *m_entry >= 0; }
        /// Of an entry that is one.
        std::uint32_t index() const { return static_cast<std::uint32_t>(*m_entry); }

    private:
        friend class IndexTree;
        explicit Node(const std::int32_t* entry)
            : m_entry(entry)
        {
        }
        const std::int32_t* m_entry = nullptr;
    };
    /// Goes through the entries of a list. A node that is no list has no entries, and of null each entry is
    /// null without end.
    class Entries
    {
    public:
        explicit Entries(Node node)
            : m_isEndless(node.isNull())
        {
            if (!node.isList()) return;
            m_next = node.m_entry + 2;
            m_end = node.m_entry + node.m_entry[1];
        }
        bool isAtEnd() const { return !m_isEndless && m_next == m_end; }
        /// Not at the end.
        Node take()
        {
            if (m_isEndless) return {};
            const std::int32_t* entry = m_next;
            m_next += *entry == list ? entry[1] : 1;
            return Node(entry);
        }

    private:
        const std::int32_t* m_next = nullptr;
        const std::int32_t* m_end = nullptr;
        bool m_isEndless;
    };

    /// Forgets everything.
    void clear();
    void beginList();
    void endList();
    void addIndex(std::int32_t index) { m_entries.push_back(index); }
    void addNull() { m_entries.push_back(none); }
    bool isComplete() const { return m_open.empty(); }

    /// The outermost list; null when there is none.
    Node root() const { return m_entries.empty() ? Node() : Node(m_entries.data()); }

private:
    static constexpr std::int32_t list = -1; // followed by the number of numbers that it takes with these two
    static constexpr std::int32_t none = -2;

    std::vector<std::int32_t> m_entries;
    std::vector<std::size_t> m_open; // where lists under way begin
};

} // namespace readers
