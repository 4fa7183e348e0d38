// What a fence costs a frame, beside the same frame without one in the same run: the goal is below 1.3. The
// cost of the verdicts that fragments have, where an item is cut, is told as well. Disabled in the suite.
#include "FencedScene.h"

#include "tests/support/TestItems.h"
#include "tests/support/VertexItem.h"

#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <Viewer3dModule/drawables/PolyPolyline3dItem.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/host/Graphics3dItem.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <random>

namespace {

constexpr int speedWidth = 1280, speedHeight = 960;
constexpr int speedRuns = 9;

/// A surface as readers give it: with normals and light.
class Surface : public Drawable3dPrimitive
{
public:
    explicit Surface(MeshData data)
        : m_node(std::move(data))
    {
    }
    void draw(const PaintContext& context, int instances) override { m_node.draw(context, instances); }

private:
    MeshNode3d m_node;
};

/// What tells a scene where an item lies: an element that draws as another item does.
class PlacedItem : public Graphics3dItem
{
public:
    PlacedItem(CModelElement& element, LONGID id, std::unique_ptr<Drawable3dPrimitive> shape, int drawerType,
               const gmx::BoundingBox& box)
        : Graphics3dItem(&element)
        , m_id(id)
        , m_shape(std::move(shape))
        , m_drawerType(drawerType)
        , m_box(box)
    {
    }
    LONGID getId() const override { return m_id; }
    int getDefaultDrawerType() const override { return m_drawerType; }
    gmx::BoundingBox sceneBoundingBox() const override { return isTold ? m_box : gmx::BoundingBox(); }
    /// Without its box an item has a verdict for each of its fragments.
    static inline bool isTold = true;

protected:
    void draw(const PaintContext& context) override { m_shape->draw(context, 1); }

private:
    LONGID m_id;
    std::unique_ptr<Drawable3dPrimitive> m_shape;
    int m_drawerType;
    gmx::BoundingBox m_box;
};

class FenceSpeedTest : public SceneTest
{
protected:
    void SetUp() override
    {
        SceneTest::SetUp();
        fence = std::make_unique<FenceSetter>(*project);
    }
    void add(std::unique_ptr<Drawable3dPrimitive> shape, int drawerType, const std::vector<glm::vec3>& points)
    {
        gmx::BoundingBox box;
        for (const glm::vec3& point : points)
            box.unite(glm::dvec3(point));
        elements.push_back(std::make_unique<TestElement>());
        const auto id = static_cast<LONGID>(elements.size());
        scene->addElement(new PlacedItem(*elements.back(), id, std::move(shape), drawerType, box));
    }
    /// Milliseconds of processor time of all threads, the middle one of speedRuns.
    double timeOfFrame(const PaintContext& context)
    {
        RenderTarget target(*gl, QSize(speedWidth, speedHeight));
        std::vector<double> used;
        for (int i = -1; i < speedRuns; ++i) {
            const std::clock_t start = std::clock();
            target.bind();
            target.clear(Qt::black);
            scene->drawFrame(context, nullptr, {});
            gl->glFinish();
            if (i >= 0) used.push_back(1e3 * double(std::clock() - start) / CLOCKS_PER_SEC);
        }
        std::sort(used.begin(), used.end());
        return used[used.size() / 2];
    }
    /// With fences that hold all there is.
    void compare(const char* what)
    {
        const PaintContext context = paintContext(speedWidth, speedHeight);
        std::printf("%s\n", what);
        const auto with = [&](const char* kind) {
            const double time = timeOfFrame(context);
            PlacedItem::isTold = false;
            const double byFragments = timeOfFrame(context);
            PlacedItem::isTold = true;
            const double again = timeOfFrameWithout(context);
            std::printf("  %s: %.1f ms, %.2f times %.1f; were there no boxes to go by %.2f times\n", kind,
                        time, time / again, again, byFragments / again);
            EXPECT_LT(time / again, 1.3) << what << ", " << kind;
        };
        fence->set(glm::dvec3(0.0), 10.0);
        with("sphere");
        Frame frame;
        frame.eye = {0.0, 0.0, -10.0};
        fence->set(frustum(frame, square(1.0), 1.0, 30.0, 0.5));
        with("frustum");
        frame.eye = {0.0, 0.0, -5.0};
        fence->set(prism(frame, square(3.0), 10.0));
        with("prism");
        Ring ring;
        for (int i = 0; i < 50; ++i)
            ring.emplace_back(4.0 * std::cos(i * 0.12566), 4.0 * std::sin(i * 0.12566));
        fence->set(prism(frame, closed(ring), 10.0));
        with("prism of 50 corners");
    }
    double timeOfFrameWithout(const PaintContext& context)
    {
        fence->reset();
        const double time = timeOfFrame(context);
        return time;
    }

    std::unique_ptr<FenceSetter> fence;
    std::vector<std::unique_ptr<TestElement>> elements;
};

TEST_F(FenceSpeedTest, DISABLED_ManyLines)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> place(-0.98f, 0.98f), step(-0.006f, 0.006f);
    for (int i = 0; i < 20000; ++i) {
        glm::vec3 point(place(random), place(random), place(random));
        std::vector<glm::vec3> points;
        for (int k = 0; k < 32; ++k) {
            points.push_back(point);
            point += glm::vec3(step(random), step(random), step(random));
        }
        auto line = std::make_unique<PolyPolyline3dItem>(0, DrawerType::Mono);
        line->setPen(QPen(Qt::white, 1.0));
        line->setPoints(points, {32});
        add(std::move(line), DrawerType::Mono, points);
    }
    compare("20,000 lines of 32 vertices");
}

MeshData surfaceOf(int cells, float z)
{
    MeshData data;
    for (int y = 0; y <= cells; ++y)
        for (int x = 0; x <= cells; ++x) {
            data.positions.emplace_back(2.0f * float(x) / float(cells) - 1.0f,
                                        2.0f * float(y) / float(cells) - 1.0f,
                                        z + 0.01f * float((x * 7 + y * 13) % 5));
            data.normals.emplace_back(0.0f, 0.0f, 1.0f);
        }
    MeshData::Part part;
    const auto at = [cells](int x, int y) { return std::uint32_t(y * (cells + 1) + x); };
    for (int y = 0; y < cells; ++y)
        for (int x = 0; x < cells; ++x)
            for (const std::uint32_t index :
                 {at(x, y), at(x + 1, y), at(x + 1, y + 1), at(x, y), at(x + 1, y + 1), at(x, y + 1)})
                data.indices.push_back(index);
    part.indexCount = std::uint32_t(data.indices.size());
    part.color = QColor(200, 180, 160);
    data.parts.push_back(part);
    return data;
}

TEST_F(FenceSpeedTest, DISABLED_LitSurfaces)
{
    for (const float z : {0.5f, 0.3f, 0.1f, -0.1f}) // each before the last: all are shaded
        add(std::make_unique<Surface>(surfaceOf(100, z)), DrawerType::Mesh, surfaceOf(100, z).positions);
    compare("4 surfaces of 20,000 triangles, lit");
}

TEST_F(FenceSpeedTest, DISABLED_PlainTriangles)
{
    for (const float z : {0.5f, 0.3f, 0.1f, -0.1f})
        add(std::make_unique<VertexItem>(GL_TRIANGLES, squareVertices(-1, -1, 1, 1, z)), DrawerType::Mono,
            squareVertices(-1, -1, 1, 1, z));
    compare("4 plain squares");
}

} // namespace
