#include "ShapeTest.h"

#include <array>
#include <cmath>

// Spheres and cylinders that the graphics processor makes of one point.
namespace {

class ShaderShapesTest : public ShapeTest
{
protected:
    /// A straight line of sight, in coordinates of a shape.
    struct Ray
    {
        glm::dvec3 from, along;
    };
    using Hits = std::function<bool(const Ray&)>;

    static bool hitsSphere(const Ray& ray)
    {
        // the point of the line that is nearest to the centre
        const double t = -glm::dot(ray.from, ray.along) / glm::dot(ray.along, ray.along);
        return glm::length(ray.from + t * ray.along) <= 1.0;
    }
    static bool hitsCylinder(const Ray& ray)
    {
        const glm::dvec2 o(ray.from), d(ray.along);
        const double a = glm::dot(d, d), b = glm::dot(o, d), c = glm::dot(o, o) - 1.0;
        const double root = b * b - a * c;
        if (a == 0.0 || root < 0.0) return false;
        for (const double sign : {-1.0, 1.0})
            if (std::abs(ray.from.z + (-b + sign * std::sqrt(root)) / a * ray.along.z) <= 1.0) return true;
        return false;
    }
    /// The rays through places of the picture, of which eight a pixel are asked for.
    class Rays
    {
    public:
        explicit Rays(const glm::dmat4& pixelToShape)
            : m_corner(pixelToShape * glm::dvec4(-1.0, 1.0, -1.0, 1.0))
            , m_right(pixelToShape[0] * (2.0 / Width))
            , m_down(pixelToShape[1] * (-2.0 / Height))
            , m_depth(pixelToShape[2] * 2.0)
        {
        }
        Ray through(double x, double y) const
        {
            const glm::dvec4 near = m_corner + x * m_right + y * m_down;
            const glm::dvec4 far = near + m_depth;
            const glm::dvec3 from = glm::dvec3(near) / near.w;
            return {from, glm::dvec3(far) / far.w - from};
        }

    private:
        glm::dvec4 m_corner, m_right, m_down, m_depth;
    };
    /// Checks that what is drawn ends where the outline of the shape does, within a pixel: pixels that lie
    /// inside with all that is within a pixel of them are drawn, and those of which all of that lies outside
    /// are not.
    static void expectOutline(const QImage& image, const PaintContext& context, const glm::dmat4& model,
                              const Hits& hits, const char* what)
    {
        const glm::dmat4 toShape =
            glm::inverse(glm::dmat4(context.projection) * glm::dmat4(context.view) * model);
        const Rays rays(toShape);
        std::array<glm::dvec2, 8> circle;
        for (std::size_t i = 0; i < circle.size(); ++i) {
            const double angle = double(i) * 0.25 * 3.14159265358979;
            circle[i] = glm::dvec2(0.5 + std::cos(angle), 0.5 + std::sin(angle));
        }
        int inside = 0, wrong = 0;
        for (int y = 0; y < Height; ++y)
            for (int x = 0; x < Width; ++x) {
                int hit = 0;
                for (const glm::dvec2& way : circle)
                    hit += hits(rays.through(x + way.x, y + way.y));
                if (hit != 0 && hit != 8) continue;
                inside += hit == 8;
                wrong += isInked(image.pixel(x, y)) != (hit == 8);
            }
        EXPECT_EQ(wrong, 0) << what << ", of " << inside << " pixels inside";
        EXPECT_GT(inside, 5) << what << ": too small to tell";
    }
    double random(double from, double to)
    {
        return std::uniform_real_distribution<double>(from, to)(m_numbers);
    }
    glm::dvec3 randomPlace() { return {random(-2.0, 2.0), random(-1.5, 1.5), random(-10.0, 0.0)}; }
    void expectOutlines(Drawable3dItem& item, const std::function<glm::dmat4()>& nextModel, const Hits& hits)
    {
        for (const bool isParallel : {false, true})
            for (int i = 0; i < 10; ++i) {
                const glm::mat4 model(nextModel());
                item.setTransform(model, false);
                const PaintContext context = shapeView(isParallel);
                const std::string what = (isParallel ? "parallel " : "central ") + std::to_string(i);
                const QImage image = drawFrame(context);
                expectOutline(image, context, glm::dmat4(model), hits, what.c_str());
                if (i == 4) saveTestImage(("shape " + what).c_str(), image);
            }
    }
    static int polygonMode(OpenGLFunctions& gl)
    {
        GLint modes[2] = {0, 0};
        gl.glGetIntegerv(GL_POLYGON_MODE, modes);
        return modes[0];
    }

private:
    std::mt19937 m_numbers{99};
};

TEST_F(ShaderShapesTest, SpheresEndWhereTheirOutlineDoes)
{
    SphereItem sphere(scene.get());
    sphere.shape.setTessLevel(64.0f, 64.0f);
    expectOutlines(
        sphere,
        [this] {
            const double radius = std::exp(random(std::log(0.3), std::log(2.5)));
            return glm::scale(glm::translate(glm::dmat4(1.0), randomPlace()), glm::dvec3(radius));
        },
        hitsSphere);
}

TEST_F(ShaderShapesTest, CylindersEndWhereTheirOutlineDoes)
{
    CylinderItem cylinder(scene.get());
    expectOutlines(
        cylinder,
        [this] {
            const glm::dvec3 axis(random(-1.0, 1.0), random(-1.0, 1.0), random(-1.0, 1.0));
            const double radius = random(0.3, 1.5);
            const glm::dmat4 turned = glm::rotate(glm::translate(glm::dmat4(1.0), randomPlace()),
                                                  random(0.0, 6.0), glm::normalize(axis));
            return glm::scale(turned, glm::dvec3(radius, radius, random(0.3, 2.0)));
        },
        hitsCylinder);
}

TEST_F(ShaderShapesTest, SpheresShareADrawerOfTheirType)
{
    const DrawableShaderSphere sphere, same, other(1234);
    EXPECT_EQ(sphere.getDrawerType(), 922689792);
    EXPECT_EQ(other.getDrawerType(), 922689792);
    EXPECT_FALSE(scene->isHasDrawer(DrawerType::ShaderSphere, DrawerType::ShaderSphere));
    Item3dDrawer* drawer = sphere.getDrawer(scene.get());
    EXPECT_EQ(scene->getDrawer(DrawerType::ShaderSphere, DrawerType::ShaderSphere), drawer);
    EXPECT_EQ(same.getDrawer(scene.get()), drawer);
    EXPECT_FALSE(scene->isHasDrawer(1234, DrawerType::ShaderSphere));
    Item3dDrawer* second = other.getDrawer(scene.get());
    EXPECT_NE(second, drawer);
    EXPECT_EQ(scene->getDrawer(1234, DrawerType::ShaderSphere), second);
    EXPECT_NE(dynamic_cast<SequentialItem3dDrawer*>(drawer), nullptr);
    EXPECT_NE(dynamic_cast<SequentialItem3dDrawer*>(second), nullptr);
}

TEST_F(ShaderShapesTest, SpheresOfSeveralTypesAreDrawnInOneFrame)
{
    SphereItem left(scene.get()), right(scene.get(), 1234);
    left.setTransform(glm::translate(glm::mat4(1.0f), glm::vec3(-2.0f, 0.0f, 0.0f)), false);
    right.setTransform(glm::translate(glm::mat4(1.0f), glm::vec3(2.0f, 0.0f, 0.0f)), false);
    const QImage image = drawFrame(shapeView(true)); // 20 pixels a unit
    EXPECT_TRUE(isInked(image.pixel(60, 80)));
    EXPECT_FALSE(isInked(image.pixel(100, 80)));
    EXPECT_TRUE(isInked(image.pixel(140, 80)));
}

TEST_F(ShaderShapesTest, CylindersShareOneDrawer)
{
    const DrawableShaderCylinder cylinder, same;
    EXPECT_EQ(cylinder.getDrawerType(), 922728960);
    Item3dDrawer* drawer = cylinder.getDrawer(scene.get());
    EXPECT_EQ(same.getDrawer(scene.get()), drawer);
    EXPECT_EQ(scene->getDrawer(DrawerType::ShaderCylinder, DrawerType::ShaderCylinder), drawer);
}

TEST_F(ShaderShapesTest, ADrawerMadeOfADrawerOfShapesDrawsThemToo)
{
    const DrawableShaderSphere sphere;
    const std::unique_ptr<Item3dDrawer> clone = sphere.getDrawer(scene.get())->clone();
    EXPECT_EQ(typeid(*clone), typeid(*sphere.getDrawer(scene.get())));
    EXPECT_EQ(dynamic_cast<SequentialItem3dDrawer&>(*clone).getDefaultProgram(),
              dynamic_cast<SequentialItem3dDrawer&>(*sphere.getDrawer(scene.get())).getDefaultProgram());
}

TEST_F(ShaderShapesTest, TheTextureRunsBetweenItsHeights)
{
    SphereItem sphere(scene.get());
    const auto expectUniforms = [&](float k, float b) {
        drawFrame(shapeView());
        EXPECT_FLOAT_EQ(uniformOf<float>(sphere.getDrawer(), "uTextureK"), k);
        EXPECT_FLOAT_EQ(uniformOf<float>(sphere.getDrawer(), "uTextureB"), b);
    };
    expectUniforms(-1.0f, 1.0f);
    sphere.shape.setTextureFovY(0.5f, -0.5f); // shares 0.75 and 0.25 of the way from pole to pole
    expectUniforms(-2.0f, 1.5f);
    sphere.shape.setTextureFovY(1.0f, 0.0f);
    expectUniforms(-2.0f, 2.0f);
    sphere.shape.setTextureFovY(1.0f, -1.0f);
    expectUniforms(-1.0f, 1.0f);
    sphere.shape.setTextureFovY(0.5f, 0.5f);
    drawFrame(shapeView());
    EXPECT_TRUE(std::isinf(uniformOf<float>(sphere.getDrawer(), "uTextureK"))) << "not guarded against";
}

TEST_F(ShaderShapesTest, LevelsOfSpheresAreTheirOwn)
{
    SphereItem coarse(scene.get()), usual(scene.get());
    coarse.shape.setTessLevel(8.0f, 8.0f);
    EXPECT_EQ(trianglesOf(shapeView()), 2u * 8 * 8 + 2u * 32 * 32);
    coarse.setVisible(false);
    EXPECT_EQ(trianglesOf(shapeView()), 2048u);
    EXPECT_EQ(uniformOf<float>(usual.getDrawer(), "uTessLevelOuter"), 32.0f);
    usual.shape.setTessLevel(16.0f, 12.0f);
    drawFrame(shapeView());
    EXPECT_EQ(uniformOf<float>(usual.getDrawer(), "uTessLevelOuter"), 16.0f);
    EXPECT_EQ(uniformOf<float>(usual.getDrawer(), "uTessLevelInner"), 12.0f);
}

TEST_F(ShaderShapesTest, WireModeDrawsEdgesOnlyAndIsEachShapesOwn)
{
    SphereItem wire(scene.get()), full(scene.get());
    CylinderItem tube(scene.get());
    wire.setTransform(glm::translate(glm::mat4(1.0f), glm::vec3(-2.5f, 0.0f, 0.0f)), false);
    full.setTransform(glm::translate(glm::mat4(1.0f), glm::vec3(2.5f, 0.0f, 0.0f)), false);
    const PaintContext context = shapeView(true);
    const auto inkAround = [](const QImage& image, int x) { return inked(image.copy(x - 22, 58, 44, 44)); };
    for (DrawableShaderSphere* sphere : {&wire.shape, &full.shape})
        sphere->setTessLevel(8.0f, 8.0f);
    const QImage before = drawFrame(context);
    wire.shape.setWireMode(true);
    tube.shape.setWireMode(true);
    const QImage image = drawFrame(context);
    saveTestImage("shapes as wires", image);
    EXPECT_EQ(inkAround(image, 150), inkAround(before, 150));
    EXPECT_LT(inkAround(image, 50), inkAround(before, 50) * 8 / 10);
    EXPECT_GT(inkAround(image, 50), inkAround(before, 50) / 10);
    EXPECT_EQ(uniformOf<int>(tube.getDrawer(), "uWireMode"), 1);
    tube.shape.setWireMode(false);
    wire.shape.setWireMode(false);
    EXPECT_EQ(drawFrame(context), before);
    EXPECT_EQ(uniformOf<int>(tube.getDrawer(), "uWireMode"), 0);
}

TEST_F(ShaderShapesTest, ThePolygonModeIsAskedForOnceAPassAndPutBack)
{
    std::vector<std::unique_ptr<SphereItem>> spheres;
    std::vector<std::unique_ptr<CylinderItem>> cylinders;
    for (int i = 0; i < 5; ++i) {
        spheres.push_back(std::make_unique<SphereItem>(scene.get()));
        cylinders.push_back(std::make_unique<CylinderItem>(scene.get()));
        spheres.back()->shape.setWireMode(i % 2 == 0);
        cylinders.back()->shape.setWireMode(i % 2 != 0);
    }
    for (const int mode : {GL_FILL, GL_LINE, GL_POINT}) {
        gl->glPolygonMode(GL_FRONT_AND_BACK, GLenum(mode));
        GlCalls calls(*gl);
        drawFrame(shapeView());
        EXPECT_EQ(calls.polygonModeQuestions, 2) << "one for spheres, one for cylinders";
        EXPECT_EQ(calls.draws.size(), 10u);
        EXPECT_EQ(polygonMode(*gl), mode);
    }
    gl->glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

TEST_F(ShaderShapesTest, ThePolygonModeIsPutBackWithoutADrawerThatAsks)
{
    DrawableShaderSphere sphere;
    SequentialItem3dDrawer other(
        scene.get(),
        dynamic_cast<SequentialItem3dDrawer&>(*sphere.getDrawer(scene.get())).getDefaultProgram());
    PaintContext context = shapeView();
    context.program = other.getDefaultProgram();
    context.program->bind();
    sphere.setWireMode(true);
    RenderTarget target(*gl, context.viewportRect.size());
    target.bind();
    for (Item3dDrawer* drawer : {static_cast<Item3dDrawer*>(nullptr), static_cast<Item3dDrawer*>(&other),
                                 sphere.getDrawer(scene.get())}) {
        context.drawer = drawer;
        gl->glPolygonMode(GL_FRONT_AND_BACK, GL_POINT);
        sphere.draw(context, 1);
        EXPECT_EQ(polygonMode(*gl), GL_POINT);
    }
    gl->glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    context.program->release();
}

TEST_F(ShaderShapesTest, EachIsOneDrawCallOfOnePointAndLeavesNothingBound)
{
    SphereItem sphere(scene.get());
    CylinderItem cylinder(scene.get());
    cylinder.instances = 7;
    GlCalls calls(*gl);
    drawFrame(shapeView());
    ASSERT_EQ(calls.draws.size(), 2u);
    for (const GlCalls::Draw& draw : calls.draws) {
        const bool isSphere = draw.mode == GL_PATCHES;
        EXPECT_EQ(draw.mode, GLenum(isSphere ? GL_PATCHES : GL_POINTS));
        EXPECT_EQ(draw.vertices, 1);
        EXPECT_EQ(draw.instances, isSphere ? 1 : 7);
    }
    EXPECT_NE(calls.draws[0].mode, calls.draws[1].mode);
    EXPECT_EQ(calls.uploads.size(), 2u) << "their points";
    EXPECT_EQ(calls.uploadedBytes(), 24u);
    GLint array = -1, buffer = -1, enabled = -1;
    gl->glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &array);
    gl->glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &buffer);
    EXPECT_EQ(array, 0);
    EXPECT_EQ(buffer, 0);
    gl->glBindVertexArray(scene->getDefaultVao());
    gl->glGetVertexAttribiv(0, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &enabled);
    EXPECT_EQ(enabled, 0);
    gl->glBindVertexArray(0);
    calls.reset();
    drawFrame(shapeView());
    EXPECT_TRUE(calls.uploads.empty());
}

TEST_F(ShaderShapesTest, DrawNothingWithoutAContext)
{
    SphereItem sphere(scene.get());
    CylinderItem cylinder(scene.get());
    PaintContext context = shapeView();
    context.program = dynamic_cast<SequentialItem3dDrawer&>(*sphere.getDrawer()).getDefaultProgram();
    scene->doneCurrent();
    sphere.shape.draw(context, 1);
    cylinder.shape.draw(context, 1);
    scene->makeCurrent();
    GlCalls calls(*gl);
    drawFrame(shapeView());
    EXPECT_EQ(calls.uploads.size(), 2u) << "their points are still to be made";
}

TEST_F(ShaderShapesTest, FreeTheirPoints)
{
    const DrawableShaderSphere sphere;
    const DrawableShaderCylinder cylinder;
    sphere.getDrawer(scene.get());
    cylinder.getDrawer(scene.get());
    PaintContext context = shapeView();
    RenderTarget target(*gl, QSize(8, 8));
    target.bind();
    const GlObjects before = GlObjects::count(*gl);
    for (int round = 0; round < 1000; ++round) {
        SphereItem one(scene.get());
        CylinderItem other(scene.get());
        one.shape.setTessLevel(2.0f, 2.0f);
        scene->drawFrame(context, nullptr, {});
        if (round > 0) continue;
        EXPECT_EQ(GlObjects::count(*gl).buffers, before.buffers + 2);
    }
    EXPECT_EQ(GlObjects::count(*gl), before);
}

} // namespace
