#include <benchmarks/data/LineSet.h>

#include <benchmarks/data/Dice.h>

LineSet::LineSet(qint64 count)
{
    constexpr float step = 0.05f; // 3 pixels of the whole view
    Dice dice;
    lines.reserve(static_cast<std::size_t>(count));
    vertices.reserve(static_cast<std::size_t>(count) * VerticesPerLine);
    for (qint64 i = 0; i < count; ++i) {
        const glm::mat4 matrix = dice.turnAndPlace();
        lines.push_back({matrix, dice.color()});
        glm::vec3 point(0.0f);
        for (int k = 0; k < VerticesPerLine; ++k) {
            vertices.push_back(point);
            point += dice.within(step);
        }
    }
}
