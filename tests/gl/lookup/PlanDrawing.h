#pragma once

#include "CaseDrawing.h"

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <vector>

/// A picture of the plan, and its four quarters where there are finer ones: column 0 and 1 of row 0, then of
/// row 1.
struct Picture
{
    int layer = 0;
    std::array<std::unique_ptr<Picture>, 4> quarters;

    void split(int a, int b, int c, int d)
    {
        const int layers[4] = {a, b, c, d};
        for (std::size_t q = 0; q < 4; ++q) {
            quarters[q] = std::make_unique<Picture>();
            quarters[q]->layer = layers[q];
        }
    }
};

struct Plan
{
    int rows = 0;
    int columns = 0;
    std::vector<Picture> tiles; // row by row
};

/// The numbers that the shader reads. Nodes below the roots lie in a random order.
class PlanWriter
{
public:
    explicit PlanWriter(std::mt19937& random)
        : m_random(random)
    {
    }
    std::vector<int> write(const Plan& plan)
    {
        m_numbers.assign(3 * plan.tiles.size(), 0);
        std::size_t count = 0;
        for (const Picture& tile : plan.tiles)
            count += nodesBelow(tile);
        m_numbers.resize(m_numbers.size() + 3 * count + 1, 0);
        m_places.resize(count);
        for (std::size_t i = 0; i < count; ++i)
            m_places[i] = static_cast<int>(3 * plan.tiles.size() + 3 * i + 1);
        std::shuffle(m_places.begin(), m_places.end(), m_random);
        for (std::size_t i = 0; i < plan.tiles.size(); ++i)
            fill(plan.tiles[i], static_cast<int>(3 * i));
        return m_numbers;
    }

private:
    static std::size_t nodesBelow(const Picture& picture)
    {
        std::size_t count = 0;
        for (const auto& quarter : picture.quarters)
            if (quarter) count += 1 + nodesBelow(*quarter);
        return count;
    }
    int none() { return m_random() % 2 == 0 ? 0 : -1; }
    int& at(int place) { return m_numbers[static_cast<std::size_t>(place)]; }
    void fill(const Picture& picture, int place)
    {
        at(place + 2) = picture.layer;
        at(place) = none();
        int link = place; // where to write the place of the next child
        for (const auto& quarter : picture.quarters) {
            if (!quarter) continue;
            const int child = m_places.back();
            m_places.pop_back();
            at(link) = child;
            at(child + 1) = none();
            fill(*quarter, child);
            link = child + 1;
        }
    }

    std::mt19937& m_random;
    std::vector<int> m_numbers;
    std::vector<int> m_places;
};

/// A fixture with a texture of layers bound and a plan in its buffer.
class PlanDrawing : public CaseDrawing
{
protected:
    void SetUp() override
    {
        CaseDrawing::SetUp();
        gl->glGenTextures(1, &m_texture);
        gl->glBindTexture(GL_TEXTURE_2D_ARRAY, m_texture);
        for (const GLenum name : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T})
            gl->glTexParameteri(GL_TEXTURE_2D_ARRAY, name, GL_CLAMP_TO_EDGE);
        gl->glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    }
    void TearDown() override
    {
        if (gl) gl->glDeleteTextures(1, &m_texture);
        CaseDrawing::TearDown();
    }
    void feed(const Plan& plan, const glm::mat4& matrix = glm::mat4(1.0f))
    {
        storage(7, PlanWriter(random).write(plan));
        set("uTexturePlanRows", plan.rows);
        set("uTexturePlanCols", plan.columns);
        set("uTexturePlanMatrix", matrix);
    }

    std::mt19937 random{4711};

private:
    unsigned m_texture = 0;
};
