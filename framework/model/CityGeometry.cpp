#include <framework/model/CityGeometry.h>

#include <algorithm>

namespace {

// Ends never go back, and the last one is all that there is.
template <typename Ends, typename Get>
bool coverAll(const Ends& ends, std::size_t count, Get get)
{
    std::uint32_t last = 0;
    for (const auto& end : ends) {
        if (get(end) < last) return false;
        last = get(end);
    }
    return last == count;
}

} // namespace

gmx::BoundingBox CityGeometry::getBounds() const
{
    gmx::BoundingBox box;
    for (const glm::dvec3& vertex : vertices)
        box.unite(vertex);
    return box;
}

bool CityGeometry::isSound() const
{
    const auto hasVertex = [this](std::uint32_t corner) { return corner < vertices.size(); };
    const auto hasLook = [this](const Piece& piece) {
        return piece.kind <= Piece::Surface && piece.look < looks.size();
    };
    const auto isKnown = [](const Look& look) { return look.wrapping <= Look::Border; };
    return (texCoords.empty() || texCoords.size() == corners.size()) &&
           std::all_of(looks.begin(), looks.end(), isKnown) &&
           std::all_of(corners.begin(), corners.end(), hasVertex) &&
           std::all_of(pieces.begin(), pieces.end(), hasLook) &&
           coverAll(ringEnds, corners.size(), [](std::uint32_t end) { return end; }) &&
           coverAll(pieces, ringEnds.size(), [](const Piece& piece) { return piece.ringEnd; });
}
