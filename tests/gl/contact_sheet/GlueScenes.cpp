#include "SheetScenes.h"

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>

// The scenes of the glue programs and of the eye-dome lighting.

namespace {

enum Layer { RawCoords = 1, Face, FaceEdge, FaceNode, CloudPoint, Edge, MidNode, Node, PointItem };

constexpr unsigned bit(int layer)
{
    return 1u << layer;
}

Shape hut()
{
    return shapes::together({shapes::box({-0.7f, -0.5f, -0.2f}, {0.5f, 0.5f, 0.4f})});
}

std::vector<glm::vec3> zigzag()
{
    return {{-1.2f, -0.9f, 0.0f},
            {-0.4f, -1.1f, 0.3f},
            {0.5f, -0.8f, 0.0f},
            {1.0f, 0.3f, 0.5f},
            {0.9f, 1.0f, 0.9f}};
}

} // namespace

// Points of a cloud, nodes and point items, by the masks of their items.
void SheetScenes::drawGluePoints()
{
    give("pen_width", 9.0f);
    give("glue_mask", bit(CloudPoint));
    std::vector<glm::vec3> cloud;
    for (int i = 0; i < 40; ++i) {
        const float t = static_cast<float>(i);
        cloud.emplace_back(1.3f * std::sin(2.4f * t) * std::sqrt(t / 40.0f),
                           1.3f * std::cos(2.4f * t) * std::sqrt(t / 40.0f), 0.3f * std::sin(t));
    }
    feed(cloud);
    drawFed(GL_POINTS);
    give("glue_mask", bit(Node) | bit(CloudPoint));
    feed(zigzag());
    drawFed(GL_POINTS);
    give("glue_mask", ~0u);
    give("pen_width", 15.0f);
    feed({{-0.9f, 0.6f, 0.6f}, {0.2f, 0.3f, 0.9f}});
    drawFed(GL_POINTS);
    give("pen_width", 9.0f);
}

void SheetScenes::drawGlueLines()
{
    give("pen_width", 9.0f);
    give("glue_mask", ~0u);
    feed(zigzag());
    drawFed(GL_LINE_STRIP);
}

// A hut, and a pyramid whose mask leaves faces out.
void SheetScenes::drawGlueFaces()
{
    give("pen_width", 9.0f);
    give("glue_mask", ~0u);
    feed(hut());
    drawFed(GL_TRIANGLES);
    give("glue_mask", ~bit(Face));
    give("model", glm::scale(glm::translate(glm::mat4(1.0f), {0.7f, 0.5f, -0.2f}), glm::vec3(0.5f)));
    feed(shapes::pyramid(2.6f));
    drawFed(GL_TRIANGLES);
    give("model", glm::mat4(1.0f));
}

CellDrawing::Output SheetScenes::drawAllGlue()
{
    return drawPass(Mode::GlueMask, [this] {
        for (const Scene& scene : scenes()) {
            if (scene.kind != Kind::Glue) continue;
            select(scene.program);
            target->bind();
            (this->*scene.draw)();
        }
    });
}

// Stairs, towers and a ball of one colour without light: nothing tells them apart but their depth.
void SheetScenes::drawPictureForEyeDome()
{
    give("uLightMode", false);
    std::vector<Shape> parts;
    for (int i = 0; i < 5; ++i) {
        const float step = 0.25f * static_cast<float>(i);
        parts.push_back(shapes::box({-1.2f + step, -0.2f, -0.4f}, {0.2f, 1.2f, -0.25f + step}));
    }
    for (int i = 0; i < 3; ++i)
        parts.push_back(shapes::box({0.55f, -1.0f + 0.7f * static_cast<float>(i), -0.4f},
                                    {0.85f, -0.7f + 0.7f * static_cast<float>(i), 0.8f}));
    parts.push_back(shapes::box({-1.5f, -1.5f, -0.5f}, {1.5f, 1.5f, -0.4f}));
    item({0.85f, 0.83f, 0.78f, 1.0f}, 0);
    feed(shapes::together(parts));
    drawFed(GL_TRIANGLES);
    place(glm::scale(glm::translate(glm::mat4(1.0f), {-0.6f, -0.9f, -0.25f}), glm::vec3(0.6f)));
    feed(shapes::torus(0.7f, 0.3f));
    drawFed(GL_TRIANGLES);
}

CellDrawing::Output SheetScenes::drawEyeDome(int shading)
{
    select("Mesh");
    gl->glDepthRangef(0.001f, 1.0f); // what lies below belongs to the foreground
    const Output picture = drawPass(Mode::Ordinary, [this] { drawPictureForEyeDome(); });
    gl->glDepthRangef(0.0f, 1.0f);

    select("EyeDome");
    give("rgb_texture", 0);
    give("depth_texture", 1);
    give("edl_shading_type", shading);
    give("mvp_inv", glm::inverse(cameraProjection()));
    // the pass fills the target as it is
    for (const char* matrix : {"projection", "view", "model"})
        give(matrix, glm::mat4(1.0f));
    std::vector<float> bottomUp; // bottom row first, as textures have it
    for (int y = CellSize - 1; y >= 0; --y)
        for (int x = 0; x < CellSize; ++x)
            bottomUp.push_back(picture.depth(x, y));
    loadTexture(QImage(CellSize, CellSize, QImage::Format_RGBA8888)); // owned by the fixture
    int depthTexture = 0;
    gl->glGetIntegerv(GL_TEXTURE_BINDING_2D, &depthTexture);
    gl->glActiveTexture(GL_TEXTURE1);
    gl->glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(depthTexture));
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT32F, CellSize, CellSize, 0, GL_DEPTH_COMPONENT,
                     GL_FLOAT, bottomUp.data());
    gl->glActiveTexture(GL_TEXTURE0);
    loadTexture(picture.attachments[0].mirrored());
    feed(Shape{{{-1, -1, 0}, {1, -1, 0}, {-1, 1, 0}, {1, 1, 0}}, {}, {}, {{0, 0}, {1, 0}, {0, 1}, {1, 1}}});
    gl->glDepthFunc(GL_ALWAYS);
    const Output output = drawPass(Mode::Ordinary, [this] { drawFed(GL_TRIANGLE_STRIP); });
    gl->glDepthFunc(GL_LEQUAL);
    return output;
}
