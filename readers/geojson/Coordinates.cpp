#include <readers/geojson/Coordinates.h>

#include <algorithm>
#include <cmath>

namespace readers {

namespace {

using Part = FeatureElement::Part;

constexpr double largestCoordinate = 1e15;
constexpr const char* noNumber = "a coordinate is no number";
constexpr const char* tooFewNumbers = "a position of fewer than two numbers";

int levelOfPositions(Coordinates::Type type)
{
    switch (type) {
    case Coordinates::Type::Point:
        return 0;
    case Coordinates::Type::MultiPoint:
    case Coordinates::Type::LineString:
        return 1;
    case Coordinates::Type::MultiLineString:
    case Coordinates::Type::Polygon:
        return 2;
    default:
        return 3;
    }
}

Part::Kind kindOf(Coordinates::Type type)
{
    switch (type) {
    case Coordinates::Type::Point:
    case Coordinates::Type::MultiPoint:
        return Part::Point;
    case Coordinates::Type::LineString:
    case Coordinates::Type::MultiLineString:
        return Part::Line;
    default:
        return Part::Ring;
    }
}

// A ring loses the repetition of its first point.
const char* finish(Part& part)
{
    std::vector<glm::dvec3>& points = part.points;
    if (part.kind == Part::Line && points.size() == 1) return "a line of one position";
    if (part.kind != Part::Ring) return nullptr;
    if (points.size() > 1 && points.front() == points.back()) points.pop_back();
    return points.size() < 3 ? "a ring of fewer than three different positions" : nullptr;
}

} // namespace

const char* const Coordinates::noList = "its geometry lacks a list of coordinates or geometries";

void Coordinates::beginList()
{
    const bool inPosition = m_level >= 0 && m_kinds[m_level] == Kind::Position;
    if (m_ignored > 0 || inPosition || m_level == deepest) {
        if (m_ignored == 0) addOther();
        ++m_ignored;
        return;
    }
    if (m_level >= 0) m_kinds[m_level] = Kind::Lists;
    m_kinds[++m_level] = Kind::Empty;
}

std::size_t Coordinates::endList()
{
    if (m_ignored > 0) {
        --m_ignored;
        return 0;
    }
    const int level = m_level--;
    if (m_kinds[level] == Kind::Position) {
        endPosition(level);
        return 2 * sizeof(glm::dvec3); // here and in the part
    }
    m_ends.push_back({static_cast<std::uint32_t>(level), static_cast<std::uint32_t>(m_positions.size())});
    if (m_kinds[level] == Kind::Lists && level == m_positionLevel - 1)
        return 4 * sizeof(Part); // in a list that grows by doubling
    if (m_kinds[level] == Kind::Empty) m_emptyLevel = std::max(m_emptyLevel, level);
    return 2 * sizeof(End);
}

void Coordinates::addNumber(double number)
{
    addCoordinate(number, std::abs(number) <= largestCoordinate
                              ? nullptr
                              : "a coordinate is not finite or beyond 1e15");
}

void Coordinates::addOther()
{
    addCoordinate(0.0, noNumber);
}

// Of the numbers after the third nobody knows what they mean.
void Coordinates::addCoordinate(double number, const char* mistake)
{
    if (m_ignored > 0) return;
    Kind& kind = m_kinds[m_level];
    if (kind == Kind::Lists) {
        note(noList);
        return;
    }
    if (kind == Kind::Empty) {
        kind = Kind::Position;
        m_position = glm::dvec3(0.0);
        m_count = 0;
    }
    if (m_count < 3) {
        m_position[static_cast<int>(m_count)] = number;
        if (mistake) note(mistake);
    }
    ++m_count;
}

void Coordinates::endPosition(int level)
{
    if (m_count < 2) note(tooFewNumbers);
    if (m_positionLevel < 0) m_positionLevel = level;
    if (level != m_positionLevel) note(level > m_positionLevel ? noNumber : noList);
    m_positions.push_back(m_position);
}

void Coordinates::note(const char* mistake)
{
    if (!m_mistake) m_mistake = mistake;
}

const char* Coordinates::judge(int positionLevel) const
{
    if (m_positionLevel >= 0 && m_positionLevel < positionLevel) return noList;
    if (std::max(m_positionLevel, m_emptyLevel) > positionLevel) return noNumber;
    if (m_mistake) return m_mistake;
    if (positionLevel > 0 && m_emptyLevel == positionLevel) return tooFewNumbers;
    return nullptr;
}

const char* Coordinates::makeParts(Type type, std::vector<Part>& parts) const
{
    const int level = levelOfPositions(type);
    if (const char* mistake = judge(level)) return mistake;
    if (level == 0 && !m_positions.empty()) parts.push_back({Part::Point, false, m_positions});
    const auto listLevel = static_cast<std::uint32_t>(level - 1);
    auto next = m_positions.begin();
    bool hole = false;
    for (const End& end : m_ends) {
        if (end.level < listLevel) hole = false; // the next polygon
        if (end.level != listLevel) continue;
        const auto stop = m_positions.begin() + end.positions;
        Part part{kindOf(type), hole, {next, stop}};
        next = stop;
        if (part.points.empty() && part.kind != Part::Ring) continue;
        if (const char* mistake = finish(part)) return mistake;
        hole = part.kind == Part::Ring;
        parts.push_back(std::move(part));
    }
    return nullptr;
}

} // namespace readers
