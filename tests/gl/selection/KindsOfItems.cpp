#include "KindsOfItems.h"

#include "tests/support/ProgramList.h"

#include <Viewer3dModule/drawers/CompositeDrawer.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <Viewer3dModule/shaders/Uniforms.h>

#include <QtGui/QOpenGLShaderProgram>
#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>

namespace {

constexpr int SphereType = DrawerType::ShaderSphere, CylinderType = DrawerType::ShaderCylinder;
constexpr int TextureWidth = 24, TextureHeight = 10;

int drawerTypeOf(KindsOfItems::Kind kind)
{
    switch (kind) {
    case KindsOfItems::Wide:
        return DrawerType::WideLines;
    case KindsOfItems::Dashed:
        return DrawerType::DashedLines;
    case KindsOfItems::Solid:
        return DrawerType::SolidRegularLines;
    case KindsOfItems::RoundPoints:
        return KindsOfItems::RoundPointsType;
    case KindsOfItems::PlainMesh:
    case KindsOfItems::ColoredMesh:
        return DrawerType::Mesh;
    case KindsOfItems::Textured:
        return DrawerType::Texture;
    case KindsOfItems::Caption:
        return DrawerType::Caption;
    case KindsOfItems::LinesAndPoints:
        return KindsOfItems::TwoStagesType;
    case KindsOfItems::Sphere:
        return SphereType;
    case KindsOfItems::Cylinder:
        return CylinderType;
    default:
        return DrawerType::Mono;
    }
}

// A frame that counts around a middle that is too faint, with a hole.
QImage frameTexture()
{
    QImage image(TextureWidth, TextureHeight, QImage::Format_RGBA8888);
    for (int y = 0; y < TextureHeight; ++y)
        for (int x = 0; x < TextureWidth; ++x) {
            const int fromBorder = std::min({x, y, TextureWidth - 1 - x, TextureHeight - 1 - y});
            image.setPixelColor(x, y, QColor(200, 100, 50, fromBorder < 2 ? 255 : fromBorder < 4 ? 90 : 0));
        }
    return image;
}

void emptyItem(DrawnItem& item)
{
    item.drawing = nullptr;
    item.describing = nullptr;
}

template <class Part>
void drawPart(DrawnItem& item, Part* part)
{
    item.drawing = [part](const PaintContext& context) { part->draw(context, 1); };
    item.describing = [part](ItemDrawing& drawing) { return part->describeDrawing(drawing); };
}

std::vector<KindsOfItems::Kind> inTurns(int count)
{
    std::vector<KindsOfItems::Kind> kinds;
    for (int i = 0; i < count; ++i)
        kinds.push_back(KindsOfItems::kindOf(static_cast<std::size_t>(i)));
    return kinds;
}

} // namespace

KindsOfItems::KindsOfItems(Scene3d& scene, OpenGLFunctions& gl,
                           std::vector<std::unique_ptr<TestElement>>& elements, int count)
    : KindsOfItems(scene, gl, elements, inTurns(count), 20)
{
}

KindsOfItems::KindsOfItems(Scene3d& scene, OpenGLFunctions& gl,
                           std::vector<std::unique_ptr<TestElement>>& elements,
                           const std::vector<Kind>& kinds, unsigned seed)
    : m_scene(scene)
    , m_gl(gl)
    , m_random(seed)
{
    addDrawers();
    gl.glGenBuffers(1, &m_quad);
    gl.glGenTextures(1, &m_texture);
    const QImage image = frameTexture();
    gl.glBindTexture(GL_TEXTURE_2D, m_texture);
    gl.glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, TextureWidth, TextureHeight, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                    image.constBits());
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    gl.glBindTexture(GL_TEXTURE_2D, 0);

    scene.startGroupOperation();
    int i = 0;
    for (const Kind kind : kinds) {
        elements.push_back(std::make_unique<TestElement>(FirstType + whole(0, TypeCount - 1)));
        TestElement& element = *elements.back();
        element.setVisible(whole(0, 11) != 0);
        element.setHighlighted(whole(0, 9) == 0);
        auto* item =
            new DrawnItem(&element, i % 2 == 0 ? i + 1 : (LONGID(7) << 32) + i + 1, drawerTypeOf(kind));
        ++i;
        scene.addElement(item);
        m_center = near(glm::dvec3(0.0), 100.0);
        make(kind, *item);
        m_items.push_back(item);
    }
    scene.finishGroupOperation(ksp::StagedProgress::dummy());
    scene.flushBounds();
}

KindsOfItems::~KindsOfItems()
{
    for (DrawnItem* item : m_items)
        emptyItem(*item);
    m_gl.glDeleteBuffers(1, &m_quad);
    m_gl.glDeleteTextures(1, &m_texture);
}

void KindsOfItems::remove(DrawnItem& item)
{
    emptyItem(item);
    m_items.erase(std::find(m_items.begin(), m_items.end(), &item));
    m_scene.removeElement(item.getId());
}

// Once in a scene: each has a program of its own.
void KindsOfItems::addDrawers()
{
    if (m_scene.isHasDefaultDrawer(TwoStagesType)) return;
    const auto add = [this](int type, const char* name) {
        for (const ProgramRecipe& recipe : furtherPrograms())
            if (recipe.name == name)
                m_scene.addDefaultDrawer(
                    type, std::make_unique<SequentialItem3dDrawer>(
                              &m_scene, m_scene.createProgram(recipe.files, recipe.defines, {})));
    };
    add(RoundPointsType, "Points");
    add(SphereType, "Sphere");
    add(CylinderType, "Cylinder");
    auto composite = std::make_unique<CompositeDrawer>(&m_scene);
    composite->addStage(1, DrawerType::WideLines);
    composite->addStage(2, RoundPointsType);
    m_scene.addDefaultDrawer(TwoStagesType, std::move(composite));
}

void KindsOfItems::make(Kind kind, DrawnItem& item)
{
    switch (kind) {
    case PlainPoints:
    case RoundPoints:
        return makePoints(kind, item);
    case PlainMesh:
    case ColoredMesh:
        return makeMesh(kind, item);
    case Textured:
        return makeTextured(item);
    case Caption:
        return makeCaption(item);
    case Sphere:
    case Cylinder:
        return makeSolidOfRevolution(kind, item);
    default:
        return makeLines(kind, item, kind == TwoLines ? 2 : 1);
    }
}

glm::dvec3 KindsOfItems::near(const glm::dvec3& center, double distance)
{
    return center +
           glm::dvec3(real(-distance, distance), real(-distance, distance), real(-distance, distance));
}

// Points at most 12 units apart each way, which the item's box is made to hold.
std::vector<glm::vec3> KindsOfItems::walk(DrawnItem& item, int count)
{
    std::vector<glm::vec3> points;
    glm::dvec3 point = m_center;
    for (int i = 0; i < count; ++i) {
        points.emplace_back(point);
        item.vertices.emplace_back(points.back());
        item.box.unite(item.vertices.back());
        point = near(point, 12.0);
    }
    return points;
}

// One of which the alpha counts more often than not; an item whose does may promise it.
QColor KindsOfItems::anyColor(DrawnItem& item)
{
    constexpr int alphas[] = {255, 255, 255, 200, 128, 127, 60, 0};
    const int alpha = alphas[whole(0, 7)];
    item.setDrawsOpaque(alpha >= 128 && whole(0, 1) == 0);
    return QColor(whole(0, 255), whole(0, 255), whole(0, 255), alpha);
}

void KindsOfItems::makeLines(Kind kind, DrawnItem& item, int parts)
{
    QPen pen(anyColor(item), kind == Wide || kind == LinesAndPoints ? whole(1, 12) : 1);
    if (kind == Dashed) pen.setStyle(Qt::DashLine);
    if (kind == ForegroundLine) {
        std::vector<glm::dvec3> points;
        for (const glm::vec3& point : walk(item, whole(3, 8)))
            points.emplace_back(point);
        auto line = std::make_unique<Polyline3dForegroundItem>(DrawerType::Mono, points);
        line->setClosed(whole(0, 1) == 1);
        line->setColor(pen.color());
        item.info = line->getGeometryInfo();
        item.drawing = [part = line.get()](const PaintContext& context) { part->drawElement(context); };
        m_parts.push_back(std::move(line));
        return;
    }
    auto line = std::make_unique<PolyPolyline3dItem>(0, item.getDefaultDrawerType());
    std::vector<glm::vec3> points;
    std::vector<int> counts;
    for (int i = 0; i < parts; ++i) {
        counts.push_back(whole(2, 12));
        const std::vector<glm::vec3> part = walk(item, counts.back());
        points.insert(points.end(), part.begin(), part.end());
        m_center = near(glm::dvec3(0.0), 130.0);
    }
    line->setPen(pen);
    line->setPoints(points, counts);
    item.info = line->getGeometryInfo();
    PolyPolyline3dItem* part = line.get();
    m_parts.push_back(std::move(line));
    if (kind == Solid) {
        const float radius = static_cast<float>(real(0.5, 2.5));
        std::vector<QVector2D> section;
        for (int i = 0; i <= 6; ++i)
            section.emplace_back(radius * std::cos(float(i % 6)), radius * std::sin(float(i % 6)));
        const glm::dvec3 mitres(4.0 * radius);
        item.box = gmx::BoundingBox(item.box.getMin() - mitres, item.box.getMax() + mitres);
        item.drawing = [part, section](const PaintContext& context) {
            context.program->setUniformValueArray("section", section.data(), int(section.size()));
            context.program->setUniformValueArray("section_normals", section.data(), int(section.size()));
            context.program->setUniformValue("section_points_count", int(section.size()));
            part->draw(context);
        };
    } else if (kind == LinesAndPoints) {
        makePoints(kind, item);
        item.describing = nullptr;
        item.drawing = [part, dots = item.drawing](const PaintContext& context) {
            if (context.stage == 1) part->draw(context);
            if (context.stage == 2) dots(context);
        };
    } else {
        drawPart(item, part);
    }
}

void KindsOfItems::makePoints(Kind, DrawnItem& item)
{
    MeshData data;
    data.positions = walk(item, whole(1, 5));
    MeshData::Part part;
    part.kind = MeshData::Part::Points;
    part.indexCount = static_cast<std::uint32_t>(data.positions.size());
    part.pointSize = static_cast<float>(real(1.0, 20.0));
    part.color = anyColor(item);
    for (std::uint32_t i = 0; i < part.indexCount; ++i)
        data.indices.push_back(i);
    item.info.pointCount = part.indexCount;
    data.parts.push_back(part);
    m_nodes.push_back(std::make_unique<MeshNode3d>(data));
    drawPart(item, m_nodes.back().get());
}

void KindsOfItems::makeMesh(Kind kind, DrawnItem& item)
{
    MeshData data;
    MeshData::Part part;
    part.color = anyColor(item);
    for (int i = whole(1, 4); i > 0; --i) {
        const std::vector<glm::vec3> corners = walk(item, 3);
        data.positions.insert(data.positions.end(), corners.begin(), corners.end());
    }
    part.indexCount = static_cast<std::uint32_t>(data.positions.size());
    for (std::uint32_t i = 0; i < part.indexCount; ++i)
        data.indices.push_back(i);
    if (kind == ColoredMesh) {
        item.setDrawsOpaque(false);
        for (std::uint32_t i = 0; i < part.indexCount; ++i)
            data.colors.push_back(whole(0, 2) == 0 ? 0x10FFFFFFu : 0xFFFFFFFFu);
    }
    item.info.triangleCount = part.indexCount / 3;
    data.parts.push_back(part);
    m_nodes.push_back(std::make_unique<MeshNode3d>(data));
    drawPart(item, m_nodes.back().get());
}

void KindsOfItems::makeTextured(DrawnItem& item)
{
    const std::vector<glm::vec3> corners = walk(item, 3);
    const glm::vec3 fourth = corners[1] + corners[2] - corners[0];
    item.vertices.emplace_back(fourth);
    item.box.unite(glm::dvec3(fourth));
    std::vector<float> data;
    const auto put = [&data](const glm::vec3& point, float s, float t) {
        data.insert(data.end(), {point.x, point.y, point.z, s, t});
    };
    put(corners[0], 0.0f, 0.0f);
    put(corners[1], 1.0f, 0.0f);
    put(corners[2], 0.0f, 1.0f);
    put(corners[2], 0.0f, 1.0f);
    put(corners[1], 1.0f, 0.0f);
    put(fourth, 1.0f, 1.0f);
    item.info.triangleCount = 2;
    item.drawing = [this, data](const PaintContext& context) {
        if ((context.primitives & PrimitiveBit::Triangles) == 0) return;
        uniforms::set(m_gl, context.program->uniformLocation("item_color"), glm::vec4(1.0f));
        m_gl.glBindVertexArray(context.vertexArray);
        m_gl.glBindTexture(GL_TEXTURE_2D, m_texture);
        m_gl.glBindBuffer(GL_ARRAY_BUFFER, m_quad);
        m_gl.glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(data.size() * sizeof(float)), data.data(),
                          GL_STREAM_DRAW);
        m_gl.glEnableVertexAttribArray(0);
        m_gl.glEnableVertexAttribArray(3);
        m_gl.glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 20, nullptr);
        m_gl.glVertexAttribPointer(3, 2, GL_FLOAT, GL_FALSE, 20, reinterpret_cast<const void*>(12));
        m_gl.glDrawArrays(GL_TRIANGLES, 0, 6);
        m_gl.glDisableVertexAttribArray(0);
        m_gl.glDisableVertexAttribArray(3);
        m_gl.glBindTexture(GL_TEXTURE_2D, 0);
        m_gl.glBindVertexArray(0);
    };
}

void KindsOfItems::makeCaption(DrawnItem& item)
{
    const glm::vec3 point = walk(item, 1).front();
    const glm::vec2 offset(real(-5.0, 5.0), real(-5.0, 5.0));
    item.info.pointCount = 1;
    item.drawing = [this, point, offset](const PaintContext& context) {
        if ((context.primitives & PrimitiveBit::Points) == 0) return;
        uniforms::set(m_gl, context.program->uniformLocation("item_color"), glm::vec4(1.0f));
        uniforms::set(m_gl, context.program->uniformLocation("offset"), offset);
        m_gl.glBindVertexArray(context.vertexArray);
        m_gl.glBindTexture(GL_TEXTURE_2D, m_texture);
        m_gl.glBindBuffer(GL_ARRAY_BUFFER, m_quad);
        m_gl.glBufferData(GL_ARRAY_BUFFER, sizeof(point), &point, GL_STREAM_DRAW);
        m_gl.glEnableVertexAttribArray(0);
        m_gl.glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
        m_gl.glDrawArrays(GL_POINTS, 0, 1);
        m_gl.glDisableVertexAttribArray(0);
        m_gl.glBindTexture(GL_TEXTURE_2D, 0);
        m_gl.glBindVertexArray(0);
    };
}

// The surfaces are made by the stages, from a point at the origin of the item: it gives no vertices.
void KindsOfItems::makeSolidOfRevolution(Kind kind, DrawnItem& item)
{
    const double radius = real(2.0, 9.0);
    const double half = kind == Sphere ? radius : real(2.0, 9.0); // of its height
    item.box = gmx::BoundingBox(m_center - glm::dvec3(radius, radius, half),
                                m_center + glm::dvec3(radius, radius, half));
    item.setTransform(
        glm::mat4(glm::scale(glm::translate(glm::dmat4(1.0), m_center), glm::dvec3(radius, radius, half))),
        false);
    const QColor color = anyColor(item);
    item.setDrawsOpaque(false);
    item.drawing = [this, color, kind](const PaintContext& context) {
        const glm::vec3 origin(0.0f);
        uniforms::set(m_gl, context.program->uniformLocation("item_color"), color);
        if (kind == Sphere) // nodes that share the program leave theirs
            for (const char* level : {"uTessLevelOuter", "uTessLevelInner"})
                uniforms::set(m_gl, context.program->uniformLocation(level), 32.0f);
        m_gl.glBindVertexArray(context.vertexArray);
        m_gl.glBindBuffer(GL_ARRAY_BUFFER, m_quad);
        m_gl.glBufferData(GL_ARRAY_BUFFER, sizeof(origin), &origin, GL_STREAM_DRAW);
        m_gl.glEnableVertexAttribArray(0);
        m_gl.glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
        m_gl.glPatchParameteri(GL_PATCH_VERTICES, 1);
        m_gl.glDrawArrays(kind == Sphere ? GL_PATCHES : GL_POINTS, 0, 1);
        m_gl.glDisableVertexAttribArray(0);
        m_gl.glBindVertexArray(0);
    };
}
