#include "random_drawing.h"

#include <algorithm>
#include <numeric>

QColor random_drawing::color(Dice& dice)
{
    const int alpha = dice.oneIn(6) ? std::max(dice.between(-200, 255), 0) : 255;
    return {dice.between(0, 255), dice.between(0, 255), dice.between(0, 255), alpha};
}

double random_drawing::penWidth(Dice& dice)
{
    const double widths[] = {0.0, 1.0, 1.0, 2.5, 5.0, double(dice.between(1, 40)), 64.0};
    return widths[dice.between(0, 6)];
}

QPen random_drawing::pen(Dice& dice, double usualWidth)
{
    const double width = dice.oneIn(6) ? penWidth(dice) : usualWidth;
    return QPen(color(dice), width, dice.oneIn(5) ? Qt::DashLine : Qt::SolidLine);
}

std::vector<int> random_drawing::counts(Dice& dice)
{
    std::vector<int> all;
    for (int i = dice.between(0, 2); i >= 0; --i)
        all.push_back(dice.oneIn(30) ? 1 : dice.between(2, 7));
    return all;
}

std::vector<glm::vec3> random_drawing::points(Dice& dice, const std::vector<int>& counts)
{
    const int total = std::max(std::accumulate(counts.begin(), counts.end(), dice.oneIn(10) ? -1 : 0), 1);
    std::vector<glm::vec3> all;
    for (int i = 0; i < total; ++i)
        all.emplace_back(dice.point(-1.0, 1.0));
    return all;
}

MeshData random_drawing::mesh(Dice& dice)
{
    MeshData data;
    const int vertices = dice.between(3, 9);
    for (int i = 0; i < vertices; ++i)
        data.positions.emplace_back(dice.point(-1.0, 1.0));
    if (dice.oneIn(4))
        for (int i = 0; i < vertices; ++i)
            data.colors.push_back(static_cast<std::uint32_t>(dice.between(0, 0x7FFFFFFF)) | 0x80000000u);
    if (dice.oneIn(10)) {
        data.texCoords.resize(data.positions.size(), glm::vec2(0.3f, 0.6f));
        data.images.emplace_back(2, 2, QImage::Format_ARGB32);
        data.images.back().fill(color(dice));
    }
    const bool isMixed = dice.oneIn(8), isColorful = dice.oneIn(2);
    MeshData::Part part;
    part.kind = static_cast<MeshData::Part::Kind>(dice.oneIn(3) ? dice.between(0, 2) : 2);
    part.color = dice.oneIn(4) ? QColor() : color(dice);
    part.pointSize = static_cast<float>(dice.between(1, 4));
    part.image = data.images.empty() ? -1 : 0;
    for (int parts = dice.between(0, 2); parts >= 0; --parts) {
        part.firstIndex = static_cast<std::uint32_t>(data.indices.size());
        part.indexCount = static_cast<std::uint32_t>(6 * dice.between(0, 3));
        for (std::uint32_t i = 0; i < part.indexCount; ++i)
            data.indices.push_back(static_cast<std::uint32_t>(dice.between(0, vertices - 1)));
        data.parts.push_back(part);
        if (isMixed) part.kind = static_cast<MeshData::Part::Kind>(dice.between(0, 2));
        if (isColorful) part.color = color(dice);
        if (isColorful) part.pointSize = static_cast<float>(dice.between(1, 4));
    }
    return data;
}
