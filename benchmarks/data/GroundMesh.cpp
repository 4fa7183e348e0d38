#include <benchmarks/data/GroundMesh.h>

#include <benchmarks/scene/View.h>

#include <cmath>

GroundMesh::GroundMesh(qint64 triangles)
{
    constexpr std::uint32_t rows = 1000;
    const auto columns = static_cast<std::uint32_t>(triangles / (2 * rows));
    positions.reserve((columns + 1) * (rows + 1));
    normals.reserve(positions.capacity());
    for (std::uint32_t row = 0; row <= rows; ++row)
        for (std::uint32_t column = 0; column <= columns; ++column) {
            const float x =
                2.0f * View::halfWidth * (static_cast<float>(column) / static_cast<float>(columns) - 0.5f);
            const float y =
                2.0f * View::halfHeight * (static_cast<float>(row) / static_cast<float>(rows) - 0.5f);
            const float a = 2.0f * x, b = 1.5f * y;
            positions.emplace_back(x, y, 0.5f * std::sin(a) * std::cos(b));
            normals.push_back(glm::normalize(
                glm::vec3(-std::cos(a) * std::cos(b), 0.75f * std::sin(a) * std::sin(b), 1.0f)));
        }
    indices.reserve(6ull * columns * rows);
    for (std::uint32_t row = 0; row < rows; ++row)
        for (std::uint32_t column = 0; column < columns; ++column) {
            const std::uint32_t a = row * (columns + 1) + column, b = a + 1, c = b + columns + 1, d = c - 1;
            indices.insert(indices.end(), {a, b, c, a, c, d});
        }
}
