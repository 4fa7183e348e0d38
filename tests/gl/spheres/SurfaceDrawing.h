#pragma once

#include "SurfaceReference.h"

#include <tests/support/ShaderDrawing.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cstring>

/// Draws the surfaces that are made of one point: "Sphere", "SmoothSphere" and "Cylinder" of ProgramList.h.
class SurfaceDrawing : public ShaderDrawing
{
protected:
    /// What the last stage before the fragments hands on.
    struct Vertex
    {
        glm::vec4 clip;
        glm::vec3 normal;
        glm::vec3 eye;
        glm::vec2 texture;
    };

    /// Builds the program, with the vertices open for capture, and feeds the point.
    void useSurface(const std::string& name, const glm::vec3& point = glm::vec3(0.0f))
    {
        m_name = name;
        for (const ProgramRecipe& candidate : furtherPrograms())
            if (candidate.name == name)
                use(candidate, {"gl_Position", "light_normal", "light_position", "texture_coords"});
        ASSERT_NE(program, nullptr) << name;
        feed(point);
        gl->glPatchParameteri(GL_PATCH_VERTICES, 1);
    }
    void feed(const glm::vec3& point) { attribute(0, 3, {point.x, point.y, point.z}); }
    bool isCylinder() const { return m_name == "Cylinder"; }

    /// Sets the matrices to something without symmetries; the normals' matrix is another one again.
    void place()
    {
        m_model = glm::translate(glm::mat4(1.0f), glm::vec3(0.5f, -0.25f, 0.75f));
        m_model = glm::rotate(m_model, 0.6f, glm::vec3(1.0f, 2.0f, -0.5f));
        m_model = glm::scale(m_model, glm::vec3(0.5f, 1.25f, 2.0f));
        m_view = glm::lookAt(glm::vec3(3, -4, 2), glm::vec3(0.25f, 0.5f, 0), glm::vec3(0, 0, 1));
        m_projection = glm::perspective(1.0f, 1.5f, 0.5f, 20.0f);
        m_normalMatrix = glm::mat3(0.5f, -1.0f, 0.25f, 0.75f, 0.125f, 1.5f, -0.5f, 2.0f, 1.0f);
        setMatrices();
    }
    void setMatrices()
    {
        set("model", m_model);
        set("view", m_view);
        set("projection", m_projection);
        set("normalMatrix", m_normalMatrix);
    }

    /// In eye coordinates: with a light from +z, whose frame they are.
    std::vector<Vertex> captureSurface(int instances = 1)
    {
        glm::vec3 direction(0.0f);
        gl->glGetUniformfv(program->programId(), program->uniformLocation("uLightDirection"), &direction.x);
        set("uLightDirection", glm::vec3(0.0f, 0.0f, 1.0f));
        constexpr int components = sizeof(Vertex) / sizeof(float);
        const std::vector<float> values =
            capture(mode(), 1, GL_TRIANGLES, components, 3 * 2 * 64 * 64, instances);
        set("uLightDirection", direction);
        std::vector<Vertex> vertices(values.size() / components);
        std::memcpy(vertices.data(), values.data(), values.size() * sizeof(float));
        return vertices;
    }
    void drawSurface(int instances = 1) { draw(mode(), 1, instances); }
    void setLevels(float outer, float inner)
    {
        set("uTessLevelOuter", outer);
        set("uTessLevelInner", inner);
    }
    /// With these a sphere's texture coordinates are the shares of the way around and from pole to pole.
    void showShares()
    {
        set("uTextureK", 1.0f);
        set("uTextureB", 0.0f);
    }

    /// The largest difference of a captured vertex from what the matrices make of a point of the model; the
    /// texture coordinates left aside.
    double differenceFrom(const surface_reference::Point& expected, const Vertex& vertex) const
    {
        glm::dvec4 eye = glm::dmat4(m_view) * glm::dmat4(m_model) * glm::dvec4(expected.position, 1.0);
        if (isCylinder()) eye /= eye.w;
        const glm::dvec4 clip = glm::dmat4(m_projection) * eye;
        const glm::dvec3 normal = glm::dmat3(m_normalMatrix) * expected.normal;
        double largest = 0.0;
        const auto compare = [&largest](double a, double b) {
            largest = std::isnan(a) ? INFINITY : std::max(largest, std::fabs(a - b));
        };
        for (int k = 0; k < 4; ++k)
            compare(double(vertex.clip[k]), clip[k]);
        for (int k = 0; k < 3; ++k) {
            compare(double(vertex.normal[k]), normal[k]);
            compare(double(vertex.eye[k]), eye[k]);
        }
        return largest;
    }

    glm::mat4 m_model{1.0f};
    glm::mat4 m_view{1.0f};
    glm::mat4 m_projection{1.0f};
    glm::mat3 m_normalMatrix{1.0f};

private:
    unsigned mode() const { return isCylinder() ? GL_POINTS : GL_PATCHES; }

    std::string m_name;
};
