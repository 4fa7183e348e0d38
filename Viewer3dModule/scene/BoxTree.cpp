#include <Viewer3dModule/scene/BoxTree.h>

#include <Viewer3dModule/scene/PictureVolume.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr std::size_t width = 16; // children a node

std::size_t nodesFor(std::size_t children)
{
    return (children + width - 1) / width;
}

/// The lowest 21 bits of the value, two zeros after each.
std::uint64_t spread(std::uint64_t value)
{
    value &= 0x1FFFFF;
    value = (value | value << 32) & 0x1F00000000FFFF;
    value = (value | value << 16) & 0x1F0000FF0000FF;
    value = (value | value << 8) & 0x100F00F00F00F00F;
    value = (value | value << 4) & 0x10C30C30C30C30C3;
    return (value | value << 2) & 0x1249249249249249;
}

/// Where on a curve through space a point of the unit cube lies: near points lie near on it.
std::uint64_t placeOnCurve(const glm::dvec3& point)
{
    const auto whole = [](double value) {
        return static_cast<std::uint64_t>(std::clamp(value, 0.0, 1.0) * 0x1FFFFF);
    };
    return spread(whole(point.x)) | spread(whole(point.y)) << 1 | spread(whole(point.z)) << 2;
}

} // namespace

void BoxTree::Box::unite(const Box& other)
{
    low = glm::min(low, other.low);
    high = glm::max(high, other.high);
    reach = std::max(reach, other.reach);
}

int BoxTree::add()
{
    int number = static_cast<int>(m_positions.size());
    if (m_freeNumbers.empty()) {
        m_positions.push_back(0);
    } else {
        number = m_freeNumbers.back();
        m_freeNumbers.pop_back();
    }
    m_positions[static_cast<std::size_t>(number)] = m_leaves.size();
    m_leaves.emplace_back();
    m_leaves.back().number = number;
    ++m_astray;
    change(m_leaves.size() - 1);
    return number;
}

void BoxTree::remove(int number)
{
    const std::size_t position = m_positions[static_cast<std::size_t>(number)];
    Leaf& leaf = m_leaves[position];
    static_cast<Box&>(leaf) = Box();
    leaf.number = -1;
    if (!std::exchange(leaf.isAstray, true)) ++m_astray;
    m_freeNumbers.push_back(number);
    change(position);
}

void BoxTree::set(int number, const gmx::BoundingBox& box, double reach)
{
    Box wanted;
    if (box.isValid()) wanted = {box.getMin(), box.getMax(), reach};
    const std::size_t position = m_positions[static_cast<std::size_t>(number)];
    Leaf& leaf = m_leaves[position];
    if (leaf.low == wanted.low && leaf.high == wanted.high && leaf.reach == wanted.reach) return;
    static_cast<Box&>(leaf) = wanted;
    if (!std::exchange(leaf.isAstray, true)) ++m_astray;
    change(position);
}

void BoxTree::change(std::size_t position)
{
    m_changed.push_back(position / width);
}

// --- upkeep
// -----------------------------------------------------------------------------------------------------------

void BoxTree::update()
{
    if (m_changed.empty()) return;
    if (m_astray > m_leaves.size() / 2) order();
    shapeLevels();
    for (std::size_t level = 0; level < m_levels.size(); ++level) {
        std::sort(m_changed.begin(), m_changed.end());
        m_changed.erase(std::unique(m_changed.begin(), m_changed.end()), m_changed.end());
        for (std::size_t& node : m_changed) {
            m_levels[level][node] = nodeOf(level, node);
            node /= width;
        }
    }
    m_changed.clear();
}

// Along a curve through the box of all middles.
void BoxTree::order()
{
    Box middles;
    for (const Leaf& leaf : m_leaves)
        if (!leaf.isEmpty()) {
            const glm::dvec3 middle = leaf.low * 0.5 + leaf.high * 0.5;
            middles.unite({middle, middle, 0.0});
        }
    const glm::dvec3 size = glm::max(middles.high - middles.low, glm::dvec3(1e-300));
    std::vector<std::pair<std::uint64_t, std::size_t>> places;
    places.reserve(m_leaves.size());
    for (std::size_t position = 0; position < m_leaves.size(); ++position) {
        const Leaf& leaf = m_leaves[position];
        if (leaf.number < 0) continue;
        const bool isSomewhere = !leaf.isEmpty();
        places.emplace_back(
            isSomewhere ? placeOnCurve((leaf.low * 0.5 + leaf.high * 0.5 - middles.low) / size) : 0,
            position);
    }
    std::sort(places.begin(), places.end());

    std::vector<Leaf> ordered;
    ordered.reserve(places.size());
    for (const auto& place : places) {
        ordered.push_back(m_leaves[place.second]);
        ordered.back().isAstray = false;
        m_positions[static_cast<std::size_t>(ordered.back().number)] = ordered.size() - 1;
    }
    m_leaves = std::move(ordered);
    m_astray = 0;
    m_levels.clear();
    m_changed.clear();
    for (std::size_t node = 0; node < nodesFor(m_leaves.size()); ++node)
        m_changed.push_back(node);
}

// A level that grows beyond one box gets another one above, which is worked out with the box that was first.
void BoxTree::shapeLevels()
{
    std::size_t count = m_leaves.size();
    for (std::size_t level = 0; count > (level == 0 ? 0 : 1); ++level) {
        count = nodesFor(count);
        if (level == m_levels.size()) m_levels.emplace_back();
        m_levels[level].resize(count);
    }
}

template <class Children>
BoxTree::Box BoxTree::uniteSixteen(const Children& children, std::size_t node)
{
    Box box;
    const std::size_t end = std::min((node + 1) * width, children.size());
    for (std::size_t child = node * width; child < end; ++child)
        box.unite(children[child]);
    return box;
}

BoxTree::Box BoxTree::nodeOf(std::size_t level, std::size_t index) const
{
    return level == 0 ? uniteSixteen(m_leaves, index) : uniteSixteen(m_levels[level - 1], index);
}

// --- questions
// --------------------------------------------------------------------------------------------------------

gmx::BoundingBox BoxTree::bounds()
{
    update();
    if (m_levels.empty() || m_levels.back().front().isEmpty()) return gmx::BoundingBox();
    const Box& all = m_levels.back().front();
    return gmx::BoundingBox(all.low, all.high);
}

void BoxTree::find(const PictureVolume& volume, std::vector<std::uint8_t>& found)
{
    update();
    found.assign(size(), 0);
    if (!m_levels.empty()) visit(volume, PictureVolume::allPlanes, m_levels.size() - 1, 0, found);
}

// A plane that a box lies inside of need not be looked at for the boxes in it.
void BoxTree::visit(const PictureVolume& volume, PictureVolume::Planes planes, std::size_t level,
                    std::size_t index, std::vector<std::uint8_t>& found) const
{
    const auto partOf = [&volume](const Box& box, PictureVolume::Planes& rest) {
        if (box.isEmpty()) return PictureVolume::Part::None;
        return volume.partOf(box.low * 0.5 + box.high * 0.5, (box.high - box.low) / 2.0, box.reach, rest);
    };
    const PictureVolume::Part part = partOf(m_levels[level][index], planes);
    if (part == PictureVolume::Part::None) return;
    if (part == PictureVolume::Part::All) {
        takeAll(level, index, found);
        return;
    }
    const std::size_t first = index * width;
    if (level > 0) {
        const std::size_t end = std::min(first + width, m_levels[level - 1].size());
        for (std::size_t child = first; child < end; ++child)
            visit(volume, planes, level - 1, child, found);
        return;
    }
    const std::size_t end = std::min(first + width, m_leaves.size());
    for (std::size_t i = first; i < end; ++i) {
        PictureVolume::Planes rest = planes;
        if (partOf(m_leaves[i], rest) != PictureVolume::Part::None)
            found[static_cast<std::size_t>(m_leaves[i].number)] = 1;
    }
}

void BoxTree::takeAll(std::size_t level, std::size_t index, std::vector<std::uint8_t>& found) const
{
    std::size_t count = width;
    for (std::size_t i = 0; i < level; ++i)
        count *= width;
    const std::size_t end = std::min((index + 1) * count, m_leaves.size());
    for (std::size_t i = index * count; i < end; ++i)
        if (!m_leaves[i].isEmpty()) found[static_cast<std::size_t>(m_leaves[i].number)] = 1;
}
