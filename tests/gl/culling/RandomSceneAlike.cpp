// The items of a random scene that many are alike of: lines and meshes of all looks.
#include "RandomScene.h"

#include "random_drawing.h"

#include <Viewer3dModule/drawers/DrawerType.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>

// Which stand for nothing in the model.
void RandomScene::addLocalLines()
{
    for (int i = m_dice.between(-4, 6); i > 0; --i) {
        auto line = std::make_unique<PolyPolyline3dItem>(0, HostLines);
        const std::vector<int> counts = random_drawing::counts(m_dice);
        line->setPoints(random_drawing::points(m_dice, counts), counts);
        line->setPen(random_drawing::pen(m_dice, m_usualWidth));
        line->setTransform(glm::mat4(toScene() * anyPlace()), false);
        m_local.push_back(line.get());
        m_localLines.push_back(line.get());
        m_scene.addLocalItem(std::move(line));
    }
}

int RandomScene::anyElement()
{
    return KindsOfItems::FirstType + m_dice.between(0, KindsOfItems::TypeCount - 1);
}

int RandomScene::anyDrawer()
{
    constexpr int types[] = {DrawerType::Mono,       DrawerType::Mesh,      DrawerType::Mono,
                             DrawerType::Mesh,       DrawerType::WideLines, HostLines,
                             DrawerType::VertexColor};
    return types[m_dice.between(0, m_hasAllKinds && m_hasSweptFences ? 6 : 5)];
}

// From within a unit around the origin. Meshes may be mirrored, and scaled by an amount for each direction.
glm::dmat4 RandomScene::anyPlace()
{
    const glm::dvec3 middle =
        m_dice.oneIn(2) ? m_dice.point(-Extent, Extent) : m_usualPlace + m_dice.point(-25.0, 25.0);
    const glm::dmat4 turned =
        glm::rotate(glm::translate(glm::dmat4(1.0), middle), m_dice.between(-3.0, 3.0), m_dice.direction());
    const double size =
        m_dice.oneIn(3) ? 1.5 : m_dice.between(5.0, 30.0); // of small lines pens are all there is
    return glm::scale(turned, (m_dice.oneIn(3) ? -size : size) * m_dice.point(0.2, 1.0));
}

void RandomScene::addAlike()
{
    const bool isUsual = !m_dice.oneIn(6);
    m_elements.push_back(std::make_unique<TestElement>(isUsual ? m_usualElement : anyElement()));
    TestElement& element = *m_elements.back();
    element.setVisible(!m_dice.oneIn(8));
    element.setHighlighted(m_dice.oneIn(6));
    const int drawer = isUsual ? m_usualDrawer : anyDrawer();
    const bool isMesh = (drawer == DrawerType::Mesh) != m_dice.oneIn(6);
    auto* item = new DrawnItem(&element, ++m_lastAlike, drawer);
    item->setTransform(glm::mat4(anyPlace()), false);
    Placed& placed = add(*item, isMesh ? MeshKind : LineKind);
    if (isMesh) {
        setMesh(placed);
    } else {
        placed.line = std::make_unique<PolyPolyline3dItem>(0, drawer);
        setPen(placed);
        setPoints(placed);
        item->drawing = [line = placed.line.get()](const PaintContext& context) { line->draw(context); };
        item->describing = [line = placed.line.get()](ItemDrawing& drawn) {
            return line->describeDrawing(drawn);
        };
    }
    item->setDrawsByPrimitives(m_dice.oneIn(2));
    if (m_dice.oneIn(10)) item->describing = nullptr;
    m_scene.addElement(item);
}

void RandomScene::setPen(Placed& placed)
{
    const QPen pen = random_drawing::pen(m_dice, m_usualWidth);
    placed.line->setPen(pen);
    placed.item->setSolid(pen.color().alpha() != 0);
    placed.item->setPixelReach(std::max(static_cast<float>(pen.widthF()), 1.0f) / 2.0f);
}

void RandomScene::setPoints(Placed& placed)
{
    const std::vector<int> counts = random_drawing::counts(m_dice);
    const std::vector<glm::vec3> points = random_drawing::points(m_dice, counts);
    placed.line->setPoints(points, counts);
    setVertices(placed, points);
}

void RandomScene::setMesh(Placed& placed)
{
    MeshData data = random_drawing::mesh(m_dice);
    setVertices(placed, data.positions);
    placed.mesh = std::make_unique<MeshNode3d>(std::move(data));
    placed.item->setSolid(placed.mesh->isSolid());
    placed.item->drawing = [&placed](const PaintContext& context) { placed.mesh->draw(context, 1); };
    placed.item->describing = [&placed](ItemDrawing& drawn) { return placed.mesh->describeDrawing(drawn); };
}

// Another pen, other points, or another mesh.
void RandomScene::redraw(Placed& placed)
{
    if (placed.line && m_dice.oneIn(2))
        setPen(placed);
    else if (placed.line)
        setPoints(placed);
    else if (placed.mesh && placed.item->describing)
        setMesh(placed);
    else if (!m_localLines.empty())
        m_localLines.front()->setPen(random_drawing::pen(m_dice, m_usualWidth));
    place(placed);
    placed.item->drawingChanged();
}
