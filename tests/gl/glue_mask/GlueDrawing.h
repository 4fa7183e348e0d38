#pragma once

#include <tests/support/ShaderDrawing.h>

#include <cstring>
#include <map>
#include <random>

/// The layers of the glue mask, written out here once more.
enum Layer {
    RawCoords = 1,
    Face = 2,
    FaceEdge = 3,
    FaceNode = 4,
    CloudPoint = 5,
    Edge = 6,
    MidNode = 7,
    Node = 8,
    PointItem = 9
};

inline std::uint32_t bit(int layer)
{
    return 1u << layer;
}

inline std::uint32_t bitsOf(float value)
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, 4);
    return bits;
}

/// Whether all three are the same bits.
inline bool areSameBits(const glm::vec3& a, const glm::vec3& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

/// Draws with the glue programs of ProgramList.h.
class GlueDrawing : public ShaderDrawing
{
protected:
    static constexpr float Pixel = 2.0f / Size; ///< the size of a pixel in normalised device coordinates

    ~GlueDrawing() override
    {
        if (!gl) return;
        makeCurrent();
        m_parked.clear();
    }

    /// Binds the program, which is built once in a test; its uniforms keep their values.
    void select(const std::string& name)
    {
        if (program) m_parked[m_selected] = std::move(program);
        m_selected = name;
        program = std::move(m_parked[name]);
        if (!program) return use(name);
        program->bind();
    }

    void feed(const std::vector<glm::vec3>& points)
    {
        std::vector<float> values;
        for (const glm::vec3& point : points)
            values.insert(values.end(), {point.x, point.y, point.z});
        attribute(0, 3, values);
        m_count = static_cast<int>(points.size());
    }
    int fedCount() const { return m_count; }

    /// Clears, draws what was fed and reads the pictures.
    void drawFed(unsigned mode) { draw(mode, m_count); }

    /// Draws what was fed onto what is there.
    void drawOver(unsigned mode)
    {
        target->bind();
        gl->glDrawArrays(mode, 0, m_count);
        for (int i = 0; i < 4; ++i)
            images[static_cast<std::size_t>(i)] = target->image(i);
        depths = target->depth();
    }

    glm::vec3 coordsAt(int x, int y) const
    {
        glm::vec3 coords;
        for (int axis = 0; axis < 3; ++axis) {
            const std::uint32_t bits = word(x, y, axis);
            std::memcpy(&coords[axis], &bits, 4);
        }
        return coords;
    }
    std::uint32_t markAt(int x, int y) const { return word(x, y, 3); }
    /// The layer whose complement the pixel bears; 0 for any other mark, such as a face's.
    int layerAt(int x, int y) const
    {
        const std::uint32_t layer = ~markAt(x, y);
        return layer <= PointItem ? static_cast<int>(layer) : 0;
    }

    /// What a geometry stage hands on.
    struct Vertex
    {
        glm::vec4 clip;
        glm::vec3 coords;
        int layer;
        std::uint32_t mask;
    };
    static std::vector<std::string> varyings()
    {
        return {"gl_Position", "Glue.coords", "Glue.priority_layer", "Glue.mask"};
    }
    /// Builds the program with its vertices open for captureFed.
    void useCaptured(const std::string& name)
    {
        for (const ProgramRecipe& candidate : furtherPrograms())
            if (candidate.name == name) return use(candidate, varyings());
        FAIL() << "no program " << name;
    }
    /// What comes of what was fed; `primitive` is what the geometry stage puts out.
    std::vector<Vertex> captureFed(unsigned mode, unsigned primitive)
    {
        return captureFedAs<Vertex>(mode, primitive);
    }
    template <typename Record>
    std::vector<Record> captureFedAs(unsigned mode, unsigned primitive)
    {
        constexpr int components = sizeof(Record) / sizeof(float);
        const std::size_t room = 6 * static_cast<std::size_t>(m_count);
        const std::vector<float> values = capture(mode, m_count, primitive, components, room);
        std::vector<Record> records(values.size() / components);
        if (!records.empty())
            std::memcpy(static_cast<void*>(records.data()), values.data(), values.size() * sizeof(float));
        return records;
    }

    float random(float from, float to) { return std::uniform_real_distribution<float>(from, to)(m_random); }
    glm::vec3 randomPoint(float limit)
    {
        const float x = random(-limit, limit);
        const float y = random(-limit, limit);
        return {x, y, random(-limit, limit)};
    }
    std::vector<glm::vec3> randomPoints(int count, float limit)
    {
        std::vector<glm::vec3> points;
        for (int i = 0; i < count; ++i)
            points.push_back(randomPoint(limit));
        return points;
    }

private:
    std::map<std::string, std::unique_ptr<QOpenGLShaderProgram>> m_parked;
    std::string m_selected;
    std::mt19937 m_random{20};
    int m_count = 0;
};

/// The coordinates of the centre of a pixel, y down, in normalised device coordinates.
inline glm::vec2 centreOf(int x, int y, int size)
{
    const float pixel = 2.0f / static_cast<float>(size);
    return {-1.0f + pixel * (static_cast<float>(x) + 0.5f), 1.0f - pixel * (static_cast<float>(y) + 0.5f)};
}
