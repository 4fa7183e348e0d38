#include <viewer/elements/LabelDrawer.h>

#include <viewer/elements/ILabel.h>
#include <viewer/elements/NameDrawer.h>

#include <Viewer3dModule/drawables/TextureFactory.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/host/Fence3dItem.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/gmx/IFence3D.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <unordered_set>

namespace {

/// Places that are taken, found by the squares of a grid that they touch.
class TakenPlaces
{
public:
    /// Takes the place, unless a part of it is taken.
    bool take(const QRect& rect)
    {
        bool isFree = true;
        const auto walk = [&](const auto& use) {
            for (int y = cell(rect.top()); y <= cell(rect.bottom()); ++y)
                for (int x = cell(rect.left()); x <= cell(rect.right()); ++x)
                    use(m_cells[static_cast<std::uint64_t>(static_cast<std::uint32_t>(y)) << 32 |
                                static_cast<std::uint32_t>(x)]);
        };
        walk([&](const std::vector<QRect>& places) {
            isFree = isFree && std::none_of(places.begin(), places.end(),
                                            [&](const QRect& other) { return other.intersects(rect); });
        });
        if (isFree) walk([&](std::vector<QRect>& places) { places.push_back(rect); });
        return isFree;
    }

private:
    static int cell(int pixel) { return pixel >> 6; } // 64 pixels wide

    std::unordered_map<std::uint64_t, std::vector<QRect>> m_cells;
};

/// What a label is not hidden by, for as long as it lives.
class NoDepthTest
{
public:
    explicit NoDepthTest(OpenGLFunctions& gl)
        : m_gl(gl)
        , m_before(gl.glIsEnabled(GL_DEPTH_TEST))
    {
        m_gl.glDisable(GL_DEPTH_TEST);
    }
    ~NoDepthTest()
    {
        if (m_before) m_gl.glEnable(GL_DEPTH_TEST);
    }
    NoDepthTest(const NoDepthTest&) = delete;
    NoDepthTest& operator=(const NoDepthTest&) = delete;

private:
    OpenGLFunctions& m_gl;
    GLboolean m_before;
};

/// The fence outside of which nothing is drawn, in scene coordinates; null without one.
std::shared_ptr<gmx::IFence3D> fenceOf(Scene3d& scene)
{
    const Fence3dItem* fence = scene.getFence();
    return fence && !fence->isInteractionMode() ? fence->getIFence3D(scene.modelToSceneTransform()) : nullptr;
}

} // namespace

LabelDrawer::LabelDrawer(Scene3d* scene, QOpenGLShaderProgram* program, const QString& property)
    : SequentialItem3dDrawer(scene, program)
    , m_property(property)
{
}

LabelDrawer::~LabelDrawer() = default;

void LabelDrawer::addTo(Scene3d& scene, const QString& property)
{
    const auto& captions =
        dynamic_cast<SequentialItem3dDrawer&>(*scene.getDefaultDrawer(DrawerType::Caption));
    scene.addDrawer(
        VisibilityType, DrawerType::Caption,
        std::unique_ptr<Item3dDrawer>(new LabelDrawer(&scene, captions.getProgramToShare(), property)));
}

LabelDrawer* LabelDrawer::find(const Scene3d& scene)
{
    return dynamic_cast<LabelDrawer*>(scene.getDrawer(VisibilityType, DrawerType::Caption));
}

NameDrawer& LabelDrawer::names()
{
    if (!m_names) m_names = std::make_unique<NameDrawer>(scene());
    return *m_names;
}

// The drawer holds the letters of names that are gone until others take their room; its clone has none.
void LabelDrawer::freeUnused()
{
    if (m_names && m_names->getItems().empty())
        m_names.reset(static_cast<NameDrawer*>(m_names->clone().release()));
    TextureFactory::instance().removeUnused();
}

void LabelDrawer::draw(const PaintContext&, Filter) {}

std::unique_ptr<Item3dDrawer> LabelDrawer::clone() const
{
    return std::unique_ptr<Item3dDrawer>(new LabelDrawer(scene(), getProgramToShare(), m_property));
}

LabelDrawer::Labels LabelDrawer::labelsByElement() const
{
    Labels labels;
    const auto collect = [&](const std::vector<Drawable3dItem*>& items) {
        for (Drawable3dItem* item : items)
            if (item->isVisible())
                if (auto* label = dynamic_cast<ILabel*>(item)) labels.emplace_back(label, item);
    };
    collect(getItems());
    if (m_names) collect(m_names->getItems());
    std::sort(labels.begin(), labels.end(),
              [](const auto& a, const auto& b) { return a.first->elementId() < b.first->elementId(); });
    return labels;
}

void LabelDrawer::write(const PaintContext& pass, const glm::dmat4& viewProjection, const QSize& size,
                        const QPoint& corner)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || !m_isShown) return;
    TakenPlaces taken;
    const std::shared_ptr<gmx::IFence3D> fence = fenceOf(*scene());
    std::unordered_set<const Drawable3dItem*> written;
    for (const auto& [label, item] : labelsByElement()) {
        const glm::dvec3 place = label->scenePlace();
        const glm::dvec4 clip = viewProjection * glm::dvec4(place, 1.0);
        const bool isSeen = clip.w > 0.0 && std::abs(clip.x) <= clip.w && std::abs(clip.y) <= clip.w;
        if (!isSeen || (fence && !fence->contains(place))) continue;
        const QRect rect = label->rectAt(
            {(clip.x / clip.w + 1.0) / 2.0 * size.width(), (1.0 - clip.y / clip.w) / 2.0 * size.height()});
        if (!taken.take(rect)) continue;
        label->setCorner({rect.left() - corner.x(), rect.top() + rect.height() - corner.y()});
        written.insert(item);
    }
    const NoDepthTest overAll(*gl);
    const Filter isWritten = [&](Drawable3dItem* item) { return written.count(item) != 0; };
    if (m_names) m_names->draw(pass, isWritten);
    SequentialItem3dDrawer::draw(pass, isWritten);
}
