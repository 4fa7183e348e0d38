#pragma once

#include <benchmarks/scene/View.h>

#include <QtGui/QColor>
#include <glm/glm.hpp>
#include <glm/gtc/matrix_transform.hpp>

#include <random>

/// Random numbers, the same in every run and with every library.
class Dice
{
public:
    float between(float low, float high)
    {
        return low + (high - low) * static_cast<float>(m_engine() >> 8) * (1.0f / 16777216.0f);
    }
    glm::vec3 within(float radius)
    {
        const float x = between(-radius, radius), y = between(-radius, radius);
        return {x, y, between(-radius, radius)};
    }
    /// A place in what the view shows, up to a unit before or behind its middle.
    glm::vec3 place()
    {
        const float x = between(-0.97f, 0.97f) * View::halfWidth;
        const float y = between(-0.97f, 0.97f) * View::halfHeight;
        return {x, y, between(-1.0f, 1.0f)};
    }
    /// A turn about any axis to a place of the view.
    glm::mat4 turnAndPlace()
    {
        const glm::mat4 there = glm::translate(glm::mat4(1.0f), place());
        const float angle = between(0.0f, 6.28f);
        return glm::rotate(there, angle, glm::normalize(within(1.0f) + glm::vec3(0.0f, 0.0f, 1.5f)));
    }
    /// Opaque, and far from black.
    QColor color()
    {
        const auto channel = [this] { return 64 + static_cast<int>(m_engine() % 192u); };
        const int red = channel(), green = channel();
        return QColor(red, green, channel());
    }

private:
    std::mt19937 m_engine{20240229};
};
