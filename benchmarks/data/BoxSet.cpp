#include <benchmarks/data/BoxSet.h>

#include <benchmarks/data/Dice.h>

#include <algorithm>
#include <cmath>

BoxSet::BoxSet(qint64 count)
{
    // Together they cover the view about twice, however many they are.
    const float edge = std::min(0.5f, 8.0f / std::sqrt(static_cast<float>(count)));
    Dice dice;
    boxes.reserve(static_cast<std::size_t>(count));
    for (qint64 i = 0; i < count; ++i) {
        const glm::mat4 matrix = dice.turnAndPlace();
        const glm::vec3 halfSize = 0.5f * edge * (glm::vec3(1.0f) + dice.within(0.4f));
        boxes.push_back({matrix, halfSize, dice.color()});
    }
}

std::array<glm::vec3, BoxSet::VertexCount> BoxSet::positionsOf(const Box& box)
{
    const std::array<glm::vec3, VertexCount> outward = normals();
    std::array<glm::vec3, VertexCount> positions{};
    for (std::size_t i = 0; i < VertexCount; ++i) {
        const glm::vec3 normal = outward[i];
        const glm::vec3 side(normal.y, normal.z, normal.x), up = glm::cross(normal, side);
        const float right = i % 4 == 1 || i % 4 == 2 ? 1.0f : -1.0f, top = i % 4 >= 2 ? 1.0f : -1.0f;
        positions[i] = (normal + right * side + top * up) * box.halfSize;
    }
    return positions;
}

std::array<glm::vec3, BoxSet::VertexCount> BoxSet::normals()
{
    std::array<glm::vec3, VertexCount> all{};
    for (std::size_t i = 0; i < VertexCount; ++i) {
        const auto face = static_cast<int>(i / 4);
        all[i][face / 2] = face % 2 == 0 ? 1.0f : -1.0f;
    }
    return all;
}

std::array<std::uint32_t, BoxSet::IndexCount> BoxSet::indices()
{
    std::array<std::uint32_t, IndexCount> all{};
    constexpr std::uint32_t corners[] = {0, 1, 2, 0, 2, 3};
    for (std::uint32_t i = 0; i < IndexCount; ++i)
        all[i] = 4 * (i / 6) + corners[i % 6];
    return all;
}
