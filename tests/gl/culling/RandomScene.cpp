#include "RandomScene.h"

#include "random_drawing.h"

#include "tests/gl/glyphs/GlyphsTest.h"
#include "tests/gl/instanced/InstancedTest.h"

#include <Viewer3dModule/drawables/Node3dItem.h>
#include <Viewer3dModule/drawers/DrawerType.h>

#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>

namespace {

glm::dvec3 placeIn(const glm::dmat4& matrix, const glm::dvec3& point)
{
    return glm::dvec3(matrix * glm::dvec4(point, 1.0));
}

/// Of a matrix that keeps angles.
double scaleOf(const glm::dmat4& matrix)
{
    return glm::length(glm::dvec3(matrix[0]));
}

gmx::BoundingBox around(const std::vector<glm::dvec3>& points)
{
    gmx::BoundingBox box;
    for (const glm::dvec3& point : points)
        box.unite(point);
    return box;
}

} // namespace

/// They stand where the scene's transform leads to.
class RandomScene::Mark : public MarkItem
{
public:
    Mark(const RandomScene& scene, LONGID identifier, const glm::dvec3& made)
        : MarkItem(identifier, {})
        , m_in(scene)
        , m_made(made)
    {
    }
    void updateDataImpl() override { place = glm::vec3(placeIn(m_in.toScene(), m_made)); }

private:
    const RandomScene& m_in;
    glm::dvec3 m_made;
};

class RandomScene::Label : public LabelledItem
{
public:
    Label(const RandomScene& scene, LONGID identifier, const glm::dvec3& made)
        : LabelledItem(identifier)
        , m_in(scene)
        , m_made(made)
    {
    }
    void updateDataImpl() override { anchor = glm::vec3(placeIn(m_in.toScene(), m_made)); }

private:
    const RandomScene& m_in;
    glm::dvec3 m_made;
};

void RandomScene::addDrawers(Scene3d& scene, OpenGLFunctions& gl, Variety variety)
{
    QDir::addSearchPath(QStringLiteral("shader"),
                        QStringLiteral(V3D_SOURCE_DIR "/tests/gl/instanced/shaders"));
    std::vector<std::unique_ptr<TestElement>> none;
    const KindsOfItems theirs(scene, gl, none, {}, 0); // and their drawers
    const auto eitherWay = [&scene](int type) {
        auto& sequential = dynamic_cast<SequentialItem3dDrawer&>(*scene.getDefaultDrawer(type));
        return std::make_unique<EitherWayDrawer>(&scene, sequential.getProgramToShare());
    };
    std::vector<int> types = {DrawerType::Mono,         DrawerType::VertexColor,       DrawerType::WideLines,
                              DrawerType::DashedLines,  DrawerType::SolidRegularLines, DrawerType::Mesh,
                              DrawerType::ShaderSphere, DrawerType::ShaderCylinder};
    if (variety == AllInAllFences) // programs that might draw items together, if any told what they draw
        types.insert(types.end(), {DrawerType::Texture, DrawerType::Caption, KindsOfItems::RoundPointsType});
    for (const int type : types)
        for (int element = 0; element < KindsOfItems::TypeCount; ++element)
            scene.addDrawer(KindsOfItems::FirstType + element, type, eitherWay(type));
    scene.addDefaultDrawer(HostLines, eitherWay(DrawerType::WideLines));
    scene.addDrawer(MarkItem::DrawerKind, std::make_unique<InstancedViewerOrientedTextureDrawer>(&scene));
    scene.addDrawer(LabelledItem::DrawerKind, std::make_unique<LabelledItemDrawer>(&scene));
}

RandomScene::RandomScene(Scene3d& scene, OpenGLFunctions& gl, FenceSetter& fence, Variety variety,
                         unsigned seed)
    : m_scene(scene)
    , m_gl(gl)
    , m_fence(fence)
    , m_dice(seed)
{
    if (variety == SomeInSweptFences) {
        m_hasSweptFences = m_dice.oneIn(2);
        m_hasAllKinds = !m_hasSweptFences;
        m_isForPictures = m_hasAllKinds && m_dice.oneIn(6);
    }
    m_usualElement = anyElement();
    m_usualDrawer = m_isForPictures ? DrawerType::VertexColor : anyDrawer();
    m_usualWidth = random_drawing::penWidth(m_dice);
    m_usualPlace = m_dice.point(-Extent, Extent);
    m_scene.startGroupOperation(); // so that nothing is placed before the transform is set
    setTransforms();
    addKinds();
    if (m_hasAllKinds) addMarksAndLabels();
    for (int i = m_dice.oneIn(5) ? m_dice.between(20, 40) : m_dice.between(0, 16); i > 0; --i)
        addAlike();
    m_scene.finishGroupOperation(ksp::StagedProgress::dummy());
    if (m_hasAllKinds) addNodes();
    addLocalLines();
    setFence();
}

RandomScene::~RandomScene()
{
    m_fence.reset();
    m_kinds.reset();
    m_scene.clear();
    for (const Drawable3dItem* item : m_local)
        m_scene.deleteLocalItem(item);
}

// The model may be anywhere and of any unit; its host then chooses a transform, or the scene does so by
// itself.
void RandomScene::setTransforms()
{
    m_scene.setModelToSceneTransform(glm::dmat4(1.0));
    if (m_dice.oneIn(2)) return;
    const double scale = std::pow(10.0, m_dice.between(-1.0, 3.0));
    m_toModel = glm::translate(glm::dmat4(1.0), m_dice.point(-3e4, 3e4) * scale);
    m_toModel = glm::rotate(m_toModel, m_dice.between(-3.0, 3.0), m_dice.direction());
    m_toModel = glm::scale(m_toModel, glm::dvec3(scale));
    if (m_dice.oneIn(2)) return;
    const glm::dmat4 shown = glm::scale(glm::dmat4(1.0), glm::dvec3(m_dice.between(0.3, 3.0)));
    const glm::dmat4 noAngle = glm::translate(glm::dmat4(1.0), -glm::dvec3(m_toModel[3]));
    m_scene.setModelToSceneTransform(shown * glm::scale(glm::dmat4(1.0), glm::dvec3(1.0 / scale)) * noAngle);
}

void RandomScene::addKinds()
{
    using K = KindsOfItems;
    constexpr K::Kind some[] = {K::Lines,       K::TwoLines,  K::ForegroundLine, K::Wide,
                                K::PlainPoints, K::PlainMesh, K::ColoredMesh};
    std::vector<K::Kind> kinds;
    for (int i = m_dice.between(2, 14); i > 0; --i)
        kinds.push_back(m_hasAllKinds ? static_cast<K::Kind>(m_dice.between(0, K::KindCount - 1))
                                      : some[m_dice.between(0, 6)]);
    const auto seed = static_cast<unsigned>(m_dice.between(0, 1 << 30));
    m_kinds = std::make_unique<KindsOfItems>(m_scene, m_gl, m_elements, kinds, seed);
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        DrawnItem& item = *m_kinds->items()[i];
        item.setDrawsByPrimitives(item.describing && m_dice.oneIn(2));
        add(item, kinds[i]);
    }
}

void RandomScene::addMarksAndLabels()
{
    for (int i = m_dice.between(-3, 3); i > 0; --i)
        m_scene.addElement(new Mark(*this, 5000 + i, m_dice.point(-Extent, Extent)));
    static const auto texture = [] {
        QImage square(4, 6, QImage::Format_RGBA8888);
        square.fill(Qt::white);
        return std::make_shared<IconTexture>(square);
    }();
    for (int i = m_dice.between(-2, 2); i > 0; --i) {
        auto* label = new Label(*this, 6000 + i, m_dice.point(-Extent, Extent));
        for (int glyph = m_dice.between(1, 5); glyph > 0; --glyph)
            label->glyphs.emplace_back(glm::vec2(5.0f * float(glyph), 0.0f), texture);
        m_scene.addElement(label);
    }
}

// Of a size in pixels, or in the model's units.
void RandomScene::addNodes()
{
    for (int i = m_dice.between(-2, 2); i > 0; --i) {
        auto node = std::make_unique<Node3dItem>(&m_scene, DrawerType::ShaderSphere);
        node->setModelPos(placeIn(m_toModel, m_dice.point(-60.0, 60.0)));
        if (m_dice.oneIn(3))
            node->setModelRadius(m_dice.between(2.0, 10.0) * scaleOf(m_toModel));
        else
            node->setPixelRadius(m_dice.between(3.0, 30.0));
        m_local.push_back(node.get());
        m_scene.addLocalItem(std::move(node));
    }
}

void RandomScene::setVertices(Placed& placed, const std::vector<glm::vec3>& vertices)
{
    placed.item->vertices.clear();
    for (const glm::vec3& vertex : vertices)
        placed.item->vertices.push_back(placeIn(placed.own, vertex));
    placed.box = around(placed.item->vertices);
}

RandomScene::Placed& RandomScene::add(DrawnItem& item, int kind)
{
    m_items.push_back(std::make_unique<Placed>());
    Placed& placed = *m_items.back();
    placed.item = &item;
    placed.kind = kind;
    placed.own = glm::dmat4(static_cast<const Drawable3dItem&>(item).getTransform());
    placed.box = item.box;
    if (!item.vertices.empty()) { // what is drawn beyond them is swept along them in the scene's units
        placed.box = around(item.vertices);
        placed.margin = item.box.getMax() - placed.box.getMax();
    }
    item.updating = [this, &placed] { place(placed); };
    return placed;
}

void RandomScene::place(Placed& placed)
{
    const glm::dmat4 matrix = toScene() * placed.place;
    const gmx::BoundingBox box = placed.box.transformed(matrix);
    placed.item->box = gmx::BoundingBox(box.getMin() - placed.margin, box.getMax() + placed.margin);
    placed.item->setTransform(glm::mat4(matrix * placed.own), false);
}

void RandomScene::remove(std::size_t index)
{
    DrawnItem& item = *m_items[index]->item;
    if (m_items[index]->kind < KindsOfItems::KindCount)
        m_kinds->remove(item);
    else
        m_scene.removeElement(item.getId());
    m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(index));
}

int RandomScene::fenceKind() const
{
    return m_scene.isFenced() ? m_fence.fence().getType() : 0;
}

bool RandomScene::isCut() const
{
    if (fenceKind() == 0) return false;
    const glm::dmat4 toModel = m_scene.sceneToModelTransform();
    const auto held = std::count_if(m_items.begin(), m_items.end(), [&](const auto& placed) {
        return m_fence.fence().contains(placeIn(toModel, placed->item->box.getCenter()));
    });
    return held != 0 && static_cast<std::size_t>(held) != m_items.size();
}

void RandomScene::setFence()
{
    m_fence.reset();
    m_fence.item().setInteractionMode(m_dice.oneIn(6));
    if (m_dice.oneIn(2) || m_isForPictures) return;
    const double scale = scaleOf(m_toModel);
    const glm::dvec3 middle = placeIn(m_toModel, m_dice.point(-50.0, 50.0));
    Frame frame = Frame::random(m_dice, middle);
    const int corners = m_dice.between(3, 7);
    switch (m_hasSweptFences ? m_dice.between(0, 2) : 0) {
    case 0:
        return m_fence.set(middle, m_dice.between(50.0, 150.0) * scale);
    case 1:
        frame.eye -= m_dice.between(60.0, 200.0) * scale * frame.look;
        return m_fence.set(prism(frame, randomRing(m_dice, corners, 220.0 * scale),
                                 m_dice.oneIn(2) ? 0.0 : m_dice.between(60.0, 250.0) * scale));
    default:
        frame.eye -= 250.0 * scale * frame.look;
        return m_fence.set(frustum(frame, randomRing(m_dice, corners, 1.4),
                                   m_dice.between(20.0, 250.0) * scale, m_dice.between(260.0, 500.0) * scale,
                                   0.6));
    }
}

std::size_t RandomScene::anyIndex()
{
    return static_cast<std::size_t>(m_dice.between(0, static_cast<int>(m_items.size()) - 1));
}

RandomScene::Change RandomScene::change()
{
    const auto what =
        m_items.empty() ? Added : static_cast<Change>(std::min(m_dice.between(0, 7), int(Moved)));
    if (what == Added) addAlike();
    if (what == Fenced) setFence();
    if (what == Added || what == Fenced) return what;
    const std::size_t index = m_lookedAt < m_items.size() && m_dice.oneIn(2) ? m_lookedAt : anyIndex();
    DrawnItem& item = *m_items[index]->item;
    const Change told = item.describing ? what : ChangeCount;
    if (what == Hidden)
        item.setVisible(!static_cast<Drawable3dItem&>(item).isVisible());
    else if (what == Highlighted)
        item.getModelElement()->setHighlighted(!item.isHighlighted());
    else if (what == Removed)
        remove(index);
    else if (what == Redrawn)
        redraw(*m_items[index]);
    else
        move(*m_items[index], what == Updated);
    return told;
}

// Turned about its middle, by a little or to anywhere.
void RandomScene::move(Placed& placed, bool isUpdated)
{
    const glm::dvec3 middle = placed.box.getCenter();
    glm::dmat4 moved = glm::translate(glm::dmat4(1.0), isUpdated || m_dice.oneIn(2)
                                                           ? m_dice.point(-30.0, 30.0)
                                                           : m_dice.point(-Extent, Extent) - middle);
    moved = glm::rotate(glm::translate(moved, middle), m_dice.between(-3.0, 3.0), m_dice.direction());
    placed.place = glm::translate(moved, -middle);
    if (!isUpdated) return place(placed); // which the scene learns of by the transform alone
    std::vector<Graphics3dItem*> updated{placed.item};
    m_scene.updateGraphicsItems(updated);
}

void RandomScene::look(PaintContext& context)
{
    m_scene.flushBounds();
    const glm::dmat4 matrix = toScene();
    const double scale = scaleOf(matrix);
    const double aspect = double(context.viewportRect.width()) / context.viewportRect.height();
    const glm::dvec3 up = glm::dmat3(matrix) * glm::dvec3(0.1, 0.2, 1.0);
    glm::dvec3 eye = placeIn(matrix, (m_dice.oneIn(3) ? 3.0 : 1.0) * m_dice.point(-Extent, Extent));
    glm::dvec3 target = placeIn(matrix, m_dice.point(-80.0, 80.0));
    if (!m_items.empty() && !m_dice.oneIn(4)) { // most look at something
        const glm::dmat4 toModel = m_scene.sceneToModelTransform();
        for (int tries = 0; tries < 5; ++tries) {
            m_lookedAt = anyIndex();
            target = m_items[m_lookedAt]->item->box.getCenter();
            if (fenceKind() == 0 || m_fence.fence().contains(placeIn(toModel, target))) break;
        }
        eye = target + m_dice.between(15.0, 150.0) * scale * m_dice.direction();
    }
    context.view = glm::mat4(glm::lookAt(eye, target, up));
    const double zoom = m_dice.between(5.0, 100.0) * scale, farthest = m_dice.between(100.0, 500.0) * scale;
    const double nearest = (m_dice.oneIn(4) ? m_dice.between(10.0, 80.0) : 0.5) * scale;
    const double behind = m_dice.between(-60.0, 60.0) * scale, angle = m_dice.between(0.1, 1.6);
    context.projection = glm::mat4(
        m_dice.oneIn(3) ? glm::ortho(-zoom * aspect, zoom * aspect, -zoom, zoom, behind, 250.0 * scale)
                        : glm::perspective(angle, aspect, nearest, farthest));
}
