#include <tests/support/ShaderDrawing.h>

namespace {

class GeometryCaptureTest : public ShaderDrawing
{
};

TEST_F(GeometryCaptureTest, PointsComeOutInSceneCoordinates)
{
    use({"capture", {shaderPath("dummy.vertex")}, {}}, {"gl_Position"});
    glm::mat4 model(1.0f);
    model[0] = {0, 2, 0, 0};
    model[1] = {-3, 0, 0, 0};
    model[2] = {0, 0, 0.5f, 0};
    model[3] = {100, -20, 3, 1};
    set("model", model);
    const std::vector<float> points = {1, 2, 3, -4, 5.5f, -6, 0, 0, 0};
    attribute(0, 3, points);
    unsigned buffer = 0;
    gl->glGenBuffers(1, &buffer);
    gl->glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, 0, buffer);
    gl->glBufferData(GL_TRANSFORM_FEEDBACK_BUFFER, 3 * 16, nullptr, GL_STATIC_READ);
    gl->glEnable(GL_RASTERIZER_DISCARD);
    gl->glBeginTransformFeedback(GL_POINTS);
    gl->glDrawArrays(GL_POINTS, 0, 3);
    gl->glEndTransformFeedback();
    gl->glDisable(GL_RASTERIZER_DISCARD);
    glm::vec4 captured[3];
    gl->glGetBufferSubData(GL_TRANSFORM_FEEDBACK_BUFFER, 0, sizeof captured, captured);
    gl->glDeleteBuffers(1, &buffer);
    for (std::size_t i = 0; i < 3; ++i) {
        const glm::dvec3 p(points[3 * i], points[3 * i + 1], points[3 * i + 2]);
        EXPECT_EQ(captured[i], glm::vec4(100 - 3 * p.y, -20 + 2 * p.x, 3 + 0.5 * p.z, 1));
    }
}

} // namespace
