#include <Viewer3dModule/scene/BoxTree.h>

#include <Viewer3dModule/scene/PictureVolume.h>

#include <algorithm>
#include <numeric>
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
    settleRemoved();
    auto number = static_cast<int>(m_positions.size());
    if (m_freeNumbers.empty()) {
        m_positions.push_back(0);
        m_isAstray.push_back(false);
    } else {
        number = m_freeNumbers.back();
        m_freeNumbers.pop_back();
        m_isAstray[static_cast<std::size_t>(number)] = false; // its old leaf is, and has no number
    }
    m_positions[static_cast<std::size_t>(number)] = static_cast<std::uint32_t>(m_leaves.size());
    m_leaves.emplace_back().number = number;
    change(number);
    return number;
}

void BoxTree::remove(int number)
{
    m_removed.push_back(number);
    if (m_removed.size() + m_freeNumbers.size() == m_positions.size()) *this = BoxTree();
}

void BoxTree::settleRemoved()
{
    for (const int number : m_removed) {
        change(number);
        m_leaves[m_positions[static_cast<std::size_t>(number)]] = Box();
        m_freeNumbers.push_back(number);
    }
    std::vector<int>().swap(m_removed);
}

void BoxTree::set(int number, const gmx::BoundingBox& box, float reach)
{
    Box wanted;
    if (box.isValid()) wanted = {box.getMin(), box.getMax(), reach};
    wanted.number = number;
    Box& leaf = m_leaves[m_positions[static_cast<std::size_t>(number)]];
    if (leaf.low == wanted.low && leaf.high == wanted.high && leaf.reach == wanted.reach) return;
    leaf = wanted;
    change(number);
}

void BoxTree::change(int number)
{
    const auto slot = static_cast<std::size_t>(number);
    m_changed.push_back(static_cast<std::uint32_t>(m_positions[slot] / width));
    if (!m_isAstray[slot]) ++m_astray;
    m_isAstray[slot] = true;
}

// --- upkeep
// -----------------------------------------------------------------------------------------------------------

void BoxTree::update()
{
    settleRemoved();
    if (m_changed.empty()) return;
    if (m_astray > m_leaves.size() / 2) order();
    shapeLevels();
    for (std::size_t level = 0; level < m_levels.size(); ++level) {
        std::sort(m_changed.begin(), m_changed.end());
        m_changed.erase(std::unique(m_changed.begin(), m_changed.end()), m_changed.end());
        for (std::uint32_t& node : m_changed) {
            m_levels[level][node] = nodeOf(level, node);
            node /= static_cast<std::uint32_t>(width);
        }
    }
    std::vector<std::uint32_t>().swap(m_changed);
}

// Along a curve through the box of all middles.
void BoxTree::order()
{
    Box middles;
    for (const Box& leaf : m_leaves)
        if (!leaf.isEmpty()) {
            const glm::dvec3 middle = leaf.low * 0.5 + leaf.high * 0.5;
            middles.unite({middle, middle});
        }
    const glm::dvec3 size = glm::max(middles.high - middles.low, glm::dvec3(1e-300));
    std::vector<std::pair<std::uint64_t, std::uint32_t>> places;
    places.reserve(m_leaves.size());
    for (std::uint32_t position = 0; position < m_leaves.size(); ++position) {
        const Box& leaf = m_leaves[position];
        if (leaf.number < 0) continue;
        const bool isSomewhere = !leaf.isEmpty();
        places.emplace_back(isSomewhere ? placeOnCurve((leaf.center() - middles.low) / size) : 0, position);
    }
    std::sort(places.begin(), places.end());

    std::vector<Box> ordered;
    ordered.reserve(places.size());
    for (const auto& place : places) {
        const Box& leaf = m_leaves[place.second];
        m_positions[static_cast<std::size_t>(leaf.number)] = static_cast<std::uint32_t>(ordered.size());
        ordered.push_back(leaf);
    }
    m_leaves = std::move(ordered);
    m_isAstray.assign(m_isAstray.size(), false);
    m_astray = 0;
    m_levels.clear();
    m_changed.resize(nodesFor(m_leaves.size()));
    std::iota(m_changed.begin(), m_changed.end(), 0u);
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

BoxTree::Box BoxTree::nodeOf(std::size_t level, std::size_t index) const
{
    const std::vector<Box>& children = level == 0 ? m_leaves : m_levels[level - 1];
    Box box;
    const std::size_t end = std::min((index + 1) * width, children.size());
    for (std::size_t child = index * width; child < end; ++child)
        box.unite(children[child]);
    return box;
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
    const Box& box = m_levels[level][index];
    if (box.isEmpty()) return;
    const PictureVolume::Part part =
        volume.partOf(box.center(), box.half(), static_cast<double>(box.reach), planes);
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
    takeReached(volume, planes, box.reach, first, found);
}

void BoxTree::takeReached(const PictureVolume& volume, PictureVolume::Planes planes, float reach,
                          std::size_t first, std::vector<std::uint8_t>& found) const
{
    PictureVolume::Border border = volume.border(static_cast<double>(reach), planes);
    const std::size_t end = std::min(first + width, m_leaves.size());
    for (std::size_t i = first; i < end; ++i) {
        const Box& leaf = m_leaves[i];
        if (leaf.isEmpty()) continue;
        if (leaf.reach < reach || leaf.reach > reach) {
            reach = leaf.reach;
            border = volume.border(static_cast<double>(reach), planes);
        }
        if (!border.leavesOut(leaf.center(), leaf.half())) found[static_cast<std::size_t>(leaf.number)] = 1;
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
