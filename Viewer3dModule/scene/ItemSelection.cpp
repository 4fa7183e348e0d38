#include <Viewer3dModule/scene/ItemSelection.h>

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawables/fetchItem.h>
#include <Viewer3dModule/drawers/Item3dSelectionProvider.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <Viewer3dModule/host/View3dSettings.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/scene/SelectionStore.h>
#include <Viewer3dModule/scene/holdsVertices.h>
#include <Viewer3dModule/scene/longestTargetSide.h>
#include <Viewer3dModule/shaders/DeferredProgram.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <Viewer3dModule/shaders/ProgramVariants.h>
#include <Viewer3dModule/shaders/Uniforms.h>
#include <framework/graphics/InteractiveGraphicsItem.h>
#include <framework/ksp/Log.h>

#include <QtCore/QVariant>
#include <QtGui/QOpenGLShaderProgram>
#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <typeinfo>

namespace {

PaintContext passOf(const PaintContext& view, Scene3d& scene)
{
    PaintContext pass = view;
    pass.setViewport(QRect(QPoint(0, 0), view.viewportRect.size()));
    pass.scene = &scene;
    pass.vertexArray = scene.getDefaultVao(); // one of another context would be no name here
    return pass;
}

/// Whether the alpha of highlighted items counts; it does with a host that registers no settings.
bool countsHighlight()
{
    const View3dSettings* settings = View3dSettings::getInstance();
    return !settings || settings->getSelectedColor().alphaF() >= 0.5;
}

glm::dmat4 viewProjection(const PaintContext& pass)
{
    return glm::dmat4(pass.projection) * glm::dmat4(pass.view);
}

bool isTooLarge(OpenGLFunctions& gl, const QSize& size)
{
    const int side = longestTargetSide(gl);
    if (size.width() <= side && size.height() <= side) return false;
    ksp::Log::error(
        QStringLiteral("Nothing is selected in a view of %1 x %2 pixels: this driver draws at most "
                       "%3 x %3 pixels")
            .arg(size.width())
            .arg(size.height())
            .arg(side));
    return true;
}

void makeUnique(std::vector<LONGID>& ids)
{
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
}

} // namespace

ItemSelection::ItemSelection(Scene3d& scene, Item3dSelectionProvider& provider, SelectionStore& store,
                             const PaintContext& view, const QPolygonF& polygon,
                             const SelectionOptions& options)
    : m_scene(scene)
    , m_provider(provider)
    , m_store(store)
    , m_options(options)
    , m_polygon(SelectionMask::simplified(polygon))
    , m_pass(passOf(view, scene))
    , m_area(m_polygon, view.viewportRect.size())
    , m_areaIsRectangle(m_area.containsAll(m_area.pixels()))
    , m_areaVolume(viewProjection(m_pass), view.viewportRect.size(), m_area.pixels())
    , m_picture(viewProjection(m_pass), view.viewportRect.size(), m_pass.viewportRect)
    , m_isFenced(scene.isFenced())
    , m_countsHighlight(countsHighlight())
{
}

std::vector<LONGID> ItemSelection::run(OpenGLFunctions& gl)
{
    if (m_area.pixels().isEmpty() || isTooLarge(gl, m_area.viewport())) return {};
    std::vector<LONGID> found = m_options.mode == SelectionMode::Visible ? seen(gl) : touched(gl);
    if (m_options.rule == SelectionRule::Inside) keepInside(gl, found);
    return found;
}

// --- which items are drawn
// --------------------------------------------------------------------------------------------

bool ItemSelection::isChosen(Drawable3dItem* item) const
{
    return m_options.itemFilter ? m_options.itemFilter(item) : item->isVisible();
}

/// Of pixels in the picture.
bool ItemSelection::isAllInArea(const QRect& pixels) const
{
    return m_area.pixels().contains(pixels) && (m_areaIsRectangle || m_area.containsAll(pixels));
}

bool ItemSelection::reachesArea(const Drawable3dItem& item, const gmx::BoundingBox& box)
{
    const bool isInRectangle = m_inArea.isSeenByBox(item);
    if (isInRectangle && m_areaIsRectangle) return true;
    const double reach = m_reach.of(item);
    if (!isInRectangle && !m_areaVolume.reaches(box, reach)) return false;
    if (m_areaIsRectangle) return true;
    const QRect pixels = m_picture.pixelsOf(box, reach);
    return pixels.isEmpty() || m_area.containsAny(pixels);
}

void ItemSelection::findInArea()
{
    m_inArea = m_scene.itemIndex().find(m_areaVolume);
}

// What stands for no element has no box to be left out by. It reports nothing, but hides what is behind it.
bool ItemSelection::isCandidate(Drawable3dItem* item)
{
    if (!item || !m_inArea.isSeen(*item)) return false;
    const InteractiveGraphicsItem* hostItem = item->hostItem();
    if (!hostItem) return m_options.mode == SelectionMode::Visible && isChosen(item);
    const gmx::BoundingBox box = hostItem->sceneBoundingBox();
    if (!reachesArea(*item, box) || !isChosen(item)) return false;
    if (m_options.rule == SelectionRule::Inside) m_items.emplace(hostItem->getId(), item);
    if (!isSelectedByBox(*item, box)) return true;
    m_selectedByBox.push_back(hostItem->getId());
    return false;
}

bool ItemSelection::Pass::isEmpty() const
{
    return asked.empty() &&
           std::all_of(handed.begin(), handed.end(), [](const Handed& part) { return part.items.empty(); });
}

// Drawers that draw their items one by one, whatever these are, are handed what the index finds; the table of
// items has those of types that are not drawn, too, because the next selection may draw them. Other drawers
// ask every item, and so do all where a fence has them look at all of theirs.
ItemSelection::Pass ItemSelection::candidatesByDrawer()
{
    findInArea();
    Pass pass;
    for (const auto& [key, drawer] : m_scene.m_drawers) {
        if (drawer->getItems().empty()) continue;
        const Item3dDrawer& any = *drawer;
        const bool isTypeDrawn = m_scene.isTypeDrawn(key.first, m_options.visibilityFilter);
        if (!m_isFenced && m_inArea.isValid() && typeid(any) == typeid(SequentialItem3dDrawer))
            pass.handed.push_back({static_cast<SequentialItem3dDrawer*>(drawer.get()), isTypeDrawn, {}});
        else if (isTypeDrawn)
            pass.asked.push_back(drawer.get());
    }
    if (!pass.handed.empty()) hand(pass);
    return pass;
}

void ItemSelection::hand(Pass& pass)
{
    constexpr std::size_t itemsAhead = 8;
    std::vector<const Item3dDrawer*> drawers;
    for (const Handed& part : pass.handed)
        drawers.push_back(part.drawer);
    m_store.items.update(m_scene.itemIndex(), drawers);
    std::vector<ItemTable::Entry> entries = m_store.items.others();
    m_inArea.forEach([&](std::size_t number) { entries.push_back(m_store.items.at(number)); });
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (i + itemsAhead < entries.size()) fetchItem(entries[i + itemsAhead].item);
        Drawable3dItem* item = entries[i].item;
        if (!item || !item->isVisible()) continue;
        Handed& part = pass.handed[entries[i].drawer];
        if (part.isTypeDrawn && isCandidate(item)) part.items.push_back(item);
    }
}

int ItemSelection::kindsMarkedBy(const Item3dDrawer* drawer)
{
    if (drawer != m_lastKinds.first) m_lastKinds = {drawer, findKindsMarkedBy(drawer)};
    return m_lastKinds.second;
}

// Only of drawers that are known to draw all of their items.
int ItemSelection::findKindsMarkedBy(const Item3dDrawer* drawer)
{
    const auto [entry, isNew] = m_kinds.emplace(drawer, 0);
    if (!isNew || !drawer || typeid(*drawer) != typeid(SequentialItem3dDrawer)) return entry->second;
    const auto* sequential = static_cast<const SequentialItem3dDrawer*>(drawer);
    QOpenGLShaderProgram* program = m_pass.program ? m_pass.program : sequential->getProgramToShare();
    if (!program || (!program->isLinked() && !DeferredProgram::isWaiting(program))) return 0;
    ProgramVariant marking;
    marking.drawsMasks = true;
    marking.marksItems = true;
    program = &findProgramVariant(*program, marking);
    DeferredProgram::build(program); // where it draws this pass itself
    if (!program->isLinked()) return 0;
    const PassUniforms locations = PassUniforms::of(*program);
    if (locations.itemIndex < 0 || locations.selectionRect < 0) return 0;
    const QVariant kinds = program->property("primitives");
    entry->second = kinds.isValid() ? kinds.toInt() : m_pass.primitives;
    return entry->second;
}

bool ItemSelection::isSelectedByBox(Drawable3dItem& item, const gmx::BoundingBox& box)
{
    // A fence may leave out of the item what draws in the area.
    if (m_isFenced || m_options.mode != SelectionMode::Through || !item.drawsOpaque()) return false;
    const int kinds = kindsMarkedBy(item.getDrawer());
    const Drawable3dPrimitive::GeometryInfo info = item.getGeometryInfo();
    const bool hasPoints = info.pointCount != 0 && (kinds & PrimitiveBit::Points) != 0;
    const bool hasLines = info.lineCount != 0 && (kinds & PrimitiveBit::Lines) != 0;
    if (!hasPoints && !hasLines) return false;
    // A pixel's width for the rounding of what lies on the border.
    const QRect pixels = m_picture.pixelsOf(box, 1.0);
    const bool isLarge = std::max(pixels.width(), pixels.height()) >= 8; // more than 2 without the rounding
    return (hasPoints || isLarge) && isAllInArea(pixels) && m_picture.holds(box) &&
           (m_countsHighlight || !item.isHighlighted());
}

// --- what lies in the area
// --------------------------------------------------------------------------------------------

std::vector<LONGID> ItemSelection::touched(OpenGLFunctions& gl)
{
    // Of two points the rectangle counts alone, and no fragment looks at a mask.
    const QRectF box = m_polygon.boundingRect();
    const QPolygonF diagonal(QVector<QPointF>{box.topLeft(), box.bottomRight()});
    const Pass candidates = candidatesByDrawer();
    std::vector<LONGID> found;
    if (!candidates.isEmpty())
        found = draw(gl, m_pass, m_areaIsRectangle ? diagonal : m_polygon, false, m_area.pixels(),
                     [&](const PaintContext& pass) { draw(candidates, pass); });
    found.insert(found.end(), m_selectedByBox.begin(), m_selectedByBox.end());
    makeUnique(found);
    return found;
}

// Depths play no part, and so neither does what lies in the foreground.
void ItemSelection::draw(const Pass& candidates, const PaintContext& context)
{
    for (const Handed& part : candidates.handed)
        if (!part.items.empty()) part.drawer->drawOnly(part.items, context);
    for (Item3dDrawer* drawer : candidates.asked)
        drawer->draw(context, [this](Drawable3dItem* item) { return isCandidate(item); });
}

std::vector<LONGID> ItemSelection::draw(OpenGLFunctions& gl, const PaintContext& context,
                                        const QPolygonF& polygon, bool inverted, const QRect& pixels,
                                        const Drawing& drawing)
{
    const SelectionTarget target(gl, m_store.frameBuffer, context.viewportRect.size(), pixels);
    if (!target.isComplete()) return {};
    PaintContext pass = context;
    pass.drawMode = DrawMode::SelectionBufferDraw;
    m_provider.setSelectionPolygon(polygon);
    m_provider.setInverted(inverted);
    m_provider.beginSelection(pass);
    drawing(pass);
    return m_provider.selectedItems();
}

ItemSelection::Drawing ItemSelection::drawingOf(const Ids& ids)
{
    return [this, &ids](const PaintContext& pass) {
        m_scene.drawElements(pass, m_options.visibilityFilter, [&ids](Drawable3dItem* item) {
            return item && item->hostItem() && ids.count(item->hostItem()->getId()) != 0;
        });
    };
}

// What is seen is read from a picture of identifiers and not from the selection buffer. A fragment that is
// hidden would set its bit too, unless every program had a variant that tests depths early and the depths had
// been drawn before: twice the drawing, with two programs that would have to give the same depths, and where
// items lie in one plane all of them would count. The picture has, of these, the one that is drawn last, as
// any frame has. Local items hide as well; their identifiers, addresses, are those of no element.
std::vector<LONGID> ItemSelection::seen(OpenGLFunctions& gl)
{
    SelectionTarget target(gl, m_area.viewport(), m_area.pixels());
    if (!target.isComplete()) return {};
    findInArea();
    Ids drawn;
    const auto filter = [this, &drawn](Drawable3dItem* item) {
        if (!isCandidate(item)) return false;
        if (item->hostItem()) drawn.insert(item->hostItem()->getId());
        return true;
    };
    PaintContext pass = m_pass;
    pass.drawMode = DrawMode::SelectionMaskDraw;
    m_scene.drawFrame(pass, m_options.visibilityFilter, filter);

    const QRect& pixels = m_area.pixels();
    const std::vector<std::uint64_t> ids = target.ids(pixels);
    std::vector<LONGID> found;
    auto next = ids.begin();
    std::uint64_t last = 0;
    for (int y = pixels.top(); y <= pixels.bottom(); ++y)
        for (int x = pixels.left(); x <= pixels.right(); ++x) {
            const std::uint64_t id = *next++;
            if (id == last || !m_area.contains(x, y)) continue;
            last = id;
            if (drawn.erase(static_cast<LONGID>(id)) != 0) found.push_back(static_cast<LONGID>(id));
        }
    return found;
}

// --- what lies nowhere else
// -------------------------------------------------------------------------------------------

// Four steps, each for what is left of the one before: by boxes; by drawing into the other pixels of the
// picture; by drawing around the picture, where pens and captions reach beyond its border; and by vertices,
// for parts that lie far beyond it, before the near plane or behind the far one. Hidden parts count as well,
// also where only seen ones are selected.
void ItemSelection::keepInside(OpenGLFunctions& gl, std::vector<LONGID>& found)
{
    found.erase(
        std::remove_if(found.begin(), found.end(), [this](LONGID id) { return m_items.count(id) == 0; }),
        found.end());
    drop(found, outsideOfArea(gl, found));
    drop(found, aroundPicture(gl, found));
    drop(found, withVerticesOutside(gl, found));
}

void ItemSelection::drop(std::vector<LONGID>& found, const std::vector<LONGID>& outside)
{
    const Ids dropped(outside.begin(), outside.end());
    found.erase(
        std::remove_if(found.begin(), found.end(), [&dropped](LONGID id) { return dropped.count(id) != 0; }),
        found.end());
}

/// Whether the box and all that is drawn around it lie in the picture, and in the area.
bool ItemSelection::isInsideByBox(LONGID id)
{
    const Drawable3dItem& item = *m_items.at(id);
    return isInPictureByBox(id) &&
           isAllInArea(m_picture.pixelsOf(item.hostItem()->sceneBoundingBox(), m_reach.of(item)));
}

bool ItemSelection::isInPictureByBox(LONGID id)
{
    const Drawable3dItem& item = *m_items.at(id);
    const gmx::BoundingBox box = item.hostItem()->sceneBoundingBox();
    const QRect pixels = m_picture.pixelsOf(box, m_reach.of(item));
    return !pixels.isEmpty() && m_pass.viewportRect.contains(pixels) && m_picture.holds(box);
}

std::vector<LONGID> ItemSelection::outsideOfArea(OpenGLFunctions& gl, const std::vector<LONGID>& found)
{
    Ids unsure;
    for (const LONGID id : found)
        if (!isInsideByBox(id)) unsure.insert(id);
    if (unsure.empty()) return {};
    return draw(gl, m_pass, m_polygon, true, m_pass.viewportRect, drawingOf(unsure));
}

std::vector<LONGID> ItemSelection::aroundPicture(OpenGLFunctions& gl, const std::vector<LONGID>& found)
{
    Ids unsure;
    for (const LONGID id : found)
        if (!isInPictureByBox(id)) unsure.insert(id);
    if (unsure.empty()) return {};
    const QSize size = m_area.viewport();
    const int margin = std::min(64, (longestTargetSide(gl) - std::max(size.width(), size.height())) / 2);
    if (margin < 1) return std::vector<LONGID>(unsure.begin(), unsure.end()); // there is no telling
    const QSize larger = size + QSize(2 * margin, 2 * margin);
    PaintContext pass = m_pass;
    pass.setViewport(QRect(QPoint(0, 0), larger));
    pass.projection =
        glm::mat4(glm::scale(glm::dmat4(1.0), glm::dvec3(double(size.width()) / larger.width(),
                                                         double(size.height()) / larger.height(), 1.0)) *
                  glm::dmat4(pass.projection));
    const QPolygonF picture(QRectF(QPointF(margin, margin), QSizeF(size)));
    return draw(gl, pass, picture, true, pass.viewportRect, drawingOf(unsure));
}

std::vector<LONGID> ItemSelection::withVerticesOutside(OpenGLFunctions& gl, const std::vector<LONGID>& found)
{
    std::vector<LONGID> outside;
    for (const LONGID id : found) {
        Drawable3dItem& item = *m_items.at(id);
        if (m_picture.holds(item.hostItem()->sceneBoundingBox())) continue;
        if (!holdsVertices(gl, m_picture, m_scene, item)) outside.push_back(id);
    }
    return outside;
}
