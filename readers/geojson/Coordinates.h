#pragma once

#include <framework/model/FeatureElement.h>

#include <cstdint>
#include <vector>

namespace readers {

/// The coordinates of one GeoJSON geometry while they are read: lists of lists of numbers that mean something
/// only once the type of the geometry is known, and that may stand before it. A list with numbers is a
/// position. Whether all have the shape that the type needs is judged in the end.
class Coordinates
{
public:
    /// The types of geometry that have coordinates.
    enum class Type { Point, MultiPoint, LineString, MultiLineString, Polygon, MultiPolygon };

    void beginList();
    /// Returns about the bytes that the list takes until it is a part, or in one, of a feature.
    std::size_t endList();
    void addNumber(double number);
    /// Something that is neither a number nor a list. What it holds is not for here.
    void addOther();
    /// Whether the outermost list has ended.
    bool isComplete() const { return m_level < 0; }

    /// Makes parts of them. An empty list is a geometry without anything in it, and no mistake. Returns the
    /// reason when they do not fit the type, null when they do.
    const char* makeParts(Type type, std::vector<FeatureElement::Part>& parts) const;

    static const char* const noList; ///< the reason for coordinates that are none at all

private:
    static constexpr int deepest = 3; ///< the level of the positions of a MultiPolygon
    /// What a list under way is, as far as it is known from what it holds.
    enum class Kind { Empty, Position, Lists };
    /// Where a list that is no position ended.
    struct End
    {
        std::uint32_t level;     ///< lists around it
        std::uint32_t positions; ///< all that there were until then
    };

    void addCoordinate(double number, const char* mistake);
    void endPosition(int level);
    const char* judge(int positionLevel) const;
    void note(const char* mistake);

    std::vector<glm::dvec3> m_positions;
    std::vector<End> m_ends;
    int m_level = -1; // of the list under way
    Kind m_kinds[deepest + 1] = {};
    int m_ignored = 0; // lists under way that are not looked at, since they stand where none may
    glm::dvec3 m_position = glm::dvec3(0.0);
    std::size_t m_count = 0;         // of the numbers of the position under way
    int m_positionLevel = -1;        // of the first position
    int m_emptyLevel = -1;           // of the deepest empty list
    const char* m_mistake = nullptr; // the first
};

} // namespace readers
