#pragma once

#include <framework/ksp/LONGID.h>

#include <array>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <unordered_map>
#include <vector>

/// Blocks of memory as large as elements of a model and their items (bytes), made in the order in which a
/// scene makes these and kept in a map of the standard library: to remove one is to look it up and to free
/// its two blocks and its place in the map, and nothing else.
template <std::size_t ElementSize, std::size_t ItemSize>
class PlainBlocks
{
public:
    explicit PlainBlocks(std::size_t count)
    {
        std::vector<std::unique_ptr<Element>> elements;
        elements.reserve(count);
        for (std::size_t i = 0; i < count; ++i)
            elements.push_back(std::make_unique<Element>());
        for (auto& element : elements)
            m_pairs.emplace(static_cast<LONGID>(m_pairs.size() + 1),
                            Pair{std::move(element), std::make_unique<Item>()});
    }

    /// In the order in which they were made.
    std::vector<LONGID> ids() const
    {
        std::vector<LONGID> ids;
        for (std::size_t i = 0; i < m_pairs.size(); ++i)
            ids.push_back(static_cast<LONGID>(i + 1));
        return ids;
    }
    void remove(const std::vector<LONGID>& ids)
    {
        for (const LONGID id : ids)
            m_pairs.erase(id);
        if (!m_pairs.empty()) throw std::runtime_error("blocks are left");
    }

private:
    template <std::size_t Size>
    struct Block
    {
        std::array<std::byte, Size> bytes{}; // written to, so that there is memory behind it
    };
    using Element = Block<ElementSize>;
    using Item = Block<ItemSize>;
    struct Pair
    {
        std::unique_ptr<Element> element;
        std::unique_ptr<Item> item;
    };

    std::unordered_map<LONGID, Pair> m_pairs;
};
