#include "ViewerProcess.h"

#include "../../support/GlCalls.h"
#include "../../support/GlObjects.h"
#include "../../support/ImageCheck.h"
#include "../../support/SceneTest.h"
#include "../../support/VertexItem.h"

#include <viewer/FrameRenderer.h>
#include <viewer/Host.h>
#include <viewer/PicturePainter.h>
#include <viewer/elements/ElementLabel.h>
#include <viewer/elements/ElementTypes.h>
#include <viewer/elements/LabelDrawer.h>
#include <viewer/elements/NameDrawer.h>
#include <viewer/elements/NameItem.h>
#include <viewer/makeTarget.h>
#include <viewer/window/MainWindow.h>
#include <viewer/window/View3dWidget.h>

#include <Viewer3dModule/drawables/TextureFactory.h>
#include <Viewer3dModule/fences/SphereFence.h>
#include <Viewer3dModule/host/Fence3dItem.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/SelectionOptions.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/COrdinaryItemCreator.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>
#include <framework/model/FeatureElement.h>

#include <QtGui/QFontMetricsF>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QPainter>
#include <QtWidgets/QAction>

#include <algorithm>

namespace {

using Part = FeatureElement::Part;

constexpr int Width = 300;
constexpr int Height = 120;
const glm::dvec3 origin(2.7e6, 1.2e6, 400.0);
const QColor grey(150, 150, 150);

Part part(Part::Kind kind, std::vector<glm::dvec3> points)
{
    Part result;
    result.kind = kind;
    for (const glm::dvec3& point : points)
        result.points.push_back(origin + point);
    return result;
}

/// As letters are, and the balls of control points are nowhere.
bool isDark(QRgb pixel)
{
    return std::max({qRed(pixel), qGreen(pixel), qBlue(pixel)}) < 90;
}

/// The box of the letters, none of whose pixels are as dark in the scene.
QRect lettersOf(const QImage& image)
{
    QRect box;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (isDark(image.pixel(x, y))) box |= QRect(x, y, 1, 1);
    return box;
}

} // namespace

/// Features at large coordinates with labels, from above, a pixel a metre, row 0 at the north; (0, 0) is the
/// middle of the view.
class LabelsTest : public SceneTest
{
protected:
    void SetUp() override
    {
        SceneTest::SetUp();
        element_types::registerItems(*scene);
        LabelDrawer::addTo(*scene, QStringLiteral("name"));
        renderer = std::make_unique<FrameRenderer>(*scene);
    }
    void TearDown() override
    {
        renderer.reset();
        SceneTest::TearDown();
    }
    FeatureElement& add(const QString& name, std::vector<Part> parts)
    {
        auto element = std::make_unique<FeatureElement>();
        element->setProperties({{"name", name}, {"ref", name + " ref"}, {"stroke", "#c0c0c0"}});
        element->setParts(std::move(parts));
        return static_cast<FeatureElement&>(*manager().addItem(std::move(element)));
    }
    /// Keeps the view: two points in opposite corners, without names.
    void addCorners() { add({}, {part(Part::Point, {{-200, -200, 0}, {200, 200, 0}})}); }
    CModelElementManager& manager()
    {
        return *project->getModel()->getCreateItemManager(element_types::Feature);
    }
    /// In scene units.
    double metre() const { return scene->modelToSceneTransform()[0][0]; }
    Viewpoint viewpoint()
    {
        scene->flushBounds();
        const glm::dvec3 target = scene->mapFromModel(origin);
        const double distance = metre() * Height / 2.0 / std::tan(Viewpoint::usualFov / 2.0);
        return Viewpoint::looking(target + glm::dvec3(0, 0, distance), target, {0, 1, 0},
                                  IProjection::Parallel, QSizeF(Width, Height));
    }
    QImage frame()
    {
        const Viewpoint view = viewpoint();
        const auto target = makeTarget(renderer->makeCurrent(), {Width, Height}, 0);
        target->bind();
        renderer->drawFrame(view, {Width, Height}, scene->getDefaultVao(), grey);
        const QImage image = target->toImage();
        target->release();
        return image.convertToFormat(QImage::Format_RGB32);
    }

    std::unique_ptr<FrameRenderer> renderer;
};

TEST_F(LabelsTest, StandWhereTheirFeatureIs)
{
    addCorners();
    FeatureElement& element = add("HHHH", {part(Part::Line, {{-40, 10, 0}, {60, 10, 0}})});
    QRect letters = lettersOf(frame());
    EXPECT_NEAR(letters.x() + letters.width() / 2.0, 160.0, 1.5) << "half-way along the line";
    EXPECT_NEAR(letters.y() + letters.height() / 2.0, 50.0, 1.5);
    element.setParts({part(Part::Point, {{-50, -20, 0}})});
    letters = lettersOf(frame());
    EXPECT_NEAR(letters.x() + letters.width() / 2.0, 100.0, 1.5);
    EXPECT_LT(letters.bottom(), 80 - 3) << "above the marker";
    EXPECT_GT(letters.bottom(), 80 - 12);
    element.setParts({part(Part::Ring, {{20, -40, 0}, {80, -40, 0}, {80, 0, 0}, {20, 0, 0}})});
    letters = lettersOf(frame());
    EXPECT_NEAR(letters.x() + letters.width() / 2.0, 200.0, 1.5);
    EXPECT_NEAR(letters.y() + letters.height() / 2.0, 80.0, 4.0);
}

TEST_F(LabelsTest, AreAsSharpAsQtPaintsThemWhereverTheyStand)
{
    addCorners();
    FeatureElement& element = add("Main Street 12", {});
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(12);
    const QFontMetricsF metrics(font);
    const QSize size(int(std::ceil(metrics.horizontalAdvance("Main Street 12"))),
                     int(std::ceil(metrics.height())));
    for (const double shift : {0.0, 0.2, 0.49, 0.77}) {
        element.setParts({part(Part::Line, {{-30 + shift, shift, 5}, {-29 + shift, shift, 5}})});
        const QImage shown = frame();
        QImage expected = shown;
        expected.fill(grey);
        QPainter painter(&expected);
        painter.setFont(font);
        const auto write = [&](const QPoint& at, const QColor& color) {
            painter.setPen(color);
            painter.drawText(QRect(at, QSize(400, 40)), Qt::AlignLeft | Qt::AlignTop, "Main Street 12");
        };
        const QPoint corner(qRound(Width / 2 - 29.5 + shift - size.width() / 2.0),
                            qRound(Height / 2 - shift - size.height() / 2.0));
        for (int i = 0; i < 9; ++i)
            write(corner + QPoint(i % 3 - 1, i / 3 - 1), QColor(255, 255, 255, 200));
        write(corner, QColor(25, 25, 35));
        painter.end();
        const QRect area(corner - QPoint(2, 2), size + QSize(4, 4));
        // the line itself, a pixel or two, may look out; colours of faint pixels are rounded twice
        checkImage("label_sharp", shown.copy(area), expected.copy(area), {8, 3});
    }
}

TEST_F(LabelsTest, ThoseOfPointsAreAsSharpToo)
{
    addCorners();
    FeatureElement& element = add("AVATAR 12 gj", {});
    element.setProperty("marker-size", "4");
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(12);
    font.setHintingPreference(QFont::PreferFullHinting);
    const QFontMetrics metrics(font);
    const QSize size(metrics.horizontalAdvance("AVATAR 12 gj") + 2, metrics.height() + 2);
    for (const double shift : {0.1, 0.3, -0.3, 0.45}) {
        element.setParts({part(Part::Point, {{20 + shift, shift, 5}})});
        const QImage shown = frame();
        // centred above the marker, two pixels above its rim
        const QRect area(QPoint(Width / 2 + 20 - size.width() / 2, Height / 2 - 4 - size.height() + 1), size);
        QImage expected = shown;
        expected.fill(grey);
        QImage rims(shown.size(), QImage::Format_ARGB32_Premultiplied);
        rims.fill(Qt::transparent);
        const QPoint base = area.topLeft() + QPoint(1, 1 + metrics.ascent());
        const auto write = [&](QImage& image, const QPoint& at, const QColor& color) {
            QPainter painter(&image);
            painter.setFont(font);
            painter.setPen(color);
            painter.drawText(at, "AVATAR 12 gj");
        };
        for (int i = 0; i < 9; ++i)
            write(rims, base + QPoint(i % 3 - 1, i / 3 - 1), Qt::white);
        QPainter painter(&expected);
        painter.setOpacity(240 / 255.0);
        painter.drawImage(0, 0, rims);
        painter.end();
        write(expected, base, QColor(25, 25, 35));
        // The rims of two letters that meet are drawn one over the other.
        checkImage("name_sharp", shown.copy(area), expected.copy(area), {16, 0});
    }
}

TEST_F(LabelsTest, ThoseOfControlPointsLeaveTheBallFree)
{
    addCorners();
    FeatureElement& element = add("gj", {part(Part::Point, {{0, 0, 0}})});
    // of the letters, which stand above what is in the middle of the view
    const auto lowest = [this] { return lettersOf(frame().copy(0, 0, Width, Height / 2 - 3)).bottom(); };
    const int plain = lowest();
    element.setProperty("control", true);
    EXPECT_EQ(lowest(), plain - 6) << "9 pixels where there were 3";
    element.setProperty("marker-size", 30);
    EXPECT_EQ(lowest(), plain - 12);
    element.setProperty("check", true);
    element.setProperty("marker-size", 6);
    EXPECT_EQ(lowest(), plain);
}

TEST_F(LabelsTest, ThoseOfPointsAreADrawCallAGlyph)
{
    addCorners();
    std::vector<FeatureElement*> elements;
    for (int i = 0; i < 60; ++i)
        elements.push_back(
            &add(QStringLiteral("1%1").arg(i % 3), {part(Part::Point, {{5 * i - 150, i, 0}})}));
    frame();
    NameDrawer& names = LabelDrawer::find(*scene)->names();
    ASSERT_EQ(names.getItems().size(), 60u);
    const Drawable3dItem* second = names.getItems()[1];
    elements[1]->setName("a name");
    elements[1]->setProperty("name", "00");
    EXPECT_EQ(names.getItems()[1], second) << "a name that changes stays where it is";
    EXPECT_EQ(static_cast<const NameItem*>(second)->text(), "00");
    const auto target = makeTarget(renderer->makeCurrent(), {Width, Height}, 0);
    target->bind();
    GlCalls calls(*gl);
    names.draw(
        renderer->paintContext(viewpoint(), {Width, Height}, {0, 0, Width, Height}, scene->getDefaultVao()),
        {});
    EXPECT_EQ(calls.draws.size(), 2u * 3u) << "0, 1 and 2: rims and letters";
    EXPECT_EQ(calls.textureUploads, 0);
    target->release();
    elements[5]->setParts({part(Part::Line, {{0, 0, 0}, {50, 0, 0}})});
    EXPECT_EQ(names.getItems().size(), 59u);
    frame();
}

// A file with very many names opens as quickly as one without.
TEST_F(LabelsTest, NamesOfPointsAreLaidOutWhenTheyAreWritten)
{
    addCorners();
    LabelDrawer& labels = *LabelDrawer::find(*scene);
    labels.setShown(false);
    FeatureElement& element = add("WWWW", {part(Part::Point, {{0, 0, 0}})});
    add("MM", {part(Part::Point, {{5, 3, 0}})}); // there is no room for it
    frame();
    EXPECT_TRUE(labels.names().getGlyphs().empty());
    element.setProperty("name", "VVV");
    EXPECT_TRUE(labels.names().getGlyphs().empty());
    labels.setShown(true);
    frame();
    EXPECT_EQ(labels.names().getGlyphs().size(), 3u);
    element.setProperty("name", "XX");
    EXPECT_EQ(labels.names().getRanges()[0].first, 0) << "a shorter one has room where it was";
    EXPECT_EQ(labels.names().getRanges()[0].count, 2);
    element.setParts({part(Part::Point, {{0, 40, 0}})});
    frame();
    EXPECT_EQ(labels.names().getRanges()[1].count, 2) << "now there is room";
}

TEST_F(LabelsTest, LettersThatNoNameHasCanBeGivenUp)
{
    addCorners();
    LabelDrawer& labels = *LabelDrawer::find(*scene);
    const auto round = [&](const QString& name) {
        const LONGID id = add(name, {part(Part::Point, {{0, 0, 0}})}).getId();
        EXPECT_GT(countPixels(frame(), isDark), 10);
        labels.freeUnused();
        EXPECT_GE(TextureFactory::instance().getSize(), 2u * 3u) << "in use";
        manager().removeItem(id);
        scene->makeCurrent();
        labels.freeUnused();
        EXPECT_EQ(TextureFactory::instance().getSize(), 0u);
    };
    round("abc");
    const GlObjects before = GlObjects::count(*gl);
    for (int i = 0; i < 20; ++i)
        round(QString("xyz%1").arg(i));
    EXPECT_EQ(GlObjects::count(*gl), before);
}

TEST_F(LabelsTest, OfTwoThatWouldMeetTheFirstIsWritten)
{
    addCorners();
    add("WWWWWWWW", {part(Part::Point, {{0, 0, 0}})});
    const QImage alone = frame();
    FeatureElement& second = add("MMMM", {part(Part::Point, {{20, 5, 0}})});
    second.setProperty("marker-color", "#969696");
    EXPECT_EQ(countPixels(frame(), isDark), countPixels(alone, isDark));
    second.setParts({part(Part::Point, {{20, 30, 0}})});
    EXPECT_GT(countPixels(frame(), isDark), countPixels(alone, isDark));
}

TEST_F(LabelsTest, AreSeenBeforeWhatHidesTheirFeature)
{
    addCorners();
    add("Cellar", {part(Part::Point, {{0, 0, -50}})});
    const QImage open = frame();
    const glm::vec3 middle(scene->mapFromModel(origin));
    const auto side = static_cast<float>(50.0 * metre());
    const std::vector<glm::vec3> roof =
        squareVertices(middle.x - side, middle.y - side, middle.x + side, middle.y + side, middle.z);
    scene->addLocalItem(std::make_unique<VertexItem>(GL_TRIANGLES, roof, grey));
    EXPECT_EQ(countPixels(frame(), isDark), countPixels(open, isDark));
}

TEST_F(LabelsTest, FollowNamesPropertiesAndVisibility)
{
    addCorners();
    FeatureElement& element = add("Depot", {part(Part::Point, {{0, 0, 0}})});
    const int five = lettersOf(frame()).width();
    element.setProperty("name", "Depot of the railway");
    EXPECT_GT(lettersOf(frame()).width(), 3 * five);
    element.setVisible(false);
    EXPECT_EQ(countPixels(frame(), isDark), 0);
    element.setVisible(true);
    EXPECT_GT(countPixels(frame(), isDark), 0);
    LabelDrawer::find(*scene)->setShown(false);
    EXPECT_EQ(countPixels(frame(), isDark), 0);
    LabelDrawer::find(*scene)->setShown(true);
    LabelDrawer::find(*scene)->setProperty("ref");
    element.setProperty("name", "x");
    EXPECT_NEAR(lettersOf(frame()).width(), 2 * five, five) << "Depot ref";
    element.setProperty("ref", "");
    EXPECT_EQ(countPixels(frame(), isDark), 0) << "nothing to say";
}

// What a reader gives a name of its own, from an identifier, is not the feature's name.
TEST_F(LabelsTest, AnIdentifierIsNoName)
{
    addCorners();
    FeatureElement& element = add({}, {part(Part::Point, {{0, 0, 0}})});
    element.setSourceId("way/17");
    element.setName("way/17");
    EXPECT_EQ(countPixels(frame(), isDark), 0);
    element.setName("Mill");
    EXPECT_GT(countPixels(frame(), isDark), 0);
}

TEST_F(LabelsTest, TakeNoPartInSelectionAndDepth)
{
    addCorners();
    add("WWWWWWWW", {part(Part::Point, {{0, 0, 0}})});
    const QRect letters = lettersOf(frame());
    const QRectF area(letters.left(), letters.top(), 20, letters.height());
    const Viewpoint view = viewpoint();
    const PaintContext context = renderer->paintContext(view, {Width, Height}, {0, 0, Width, Height}, 0);
    for (const SelectionMode mode : {SelectionMode::Through, SelectionMode::Visible}) {
        SelectionOptions options;
        options.mode = mode;
        EXPECT_TRUE(scene->selectItems(context, area, options).empty());
    }
    EXPECT_FALSE(renderer->pointUnder(view, {Width, Height}, letters.topLeft() + QPoint(1, 1)));
    scene->makeCurrent();
}

// What a fence leaves out writes nothing, and leaves its place to others.
TEST_F(LabelsTest, ObeyTheFence)
{
    addCorners();
    add("WWWWWWWW", {part(Part::Point, {{0, 0, 0}})});
    FeatureElement& second = add("MMMM", {part(Part::Point, {{20, 5, 0}})});
    second.setProperty("marker-color", "#969696");
    const QRect first = lettersOf(frame());
    project->addProjectSettings(new COrdinaryItemCreator<Fence3dItem>, CProject::StoredSettings);
    Fence3dItem& fence = *Fence3dItem::find(project->getModel());
    const auto sphere =
        std::static_pointer_cast<SphereFence>(fence.getCreateFence(Fence3DObject::SphereFence));
    sphere->setFence(origin + glm::dvec3(20, 5, 0), 10.0);
    fence.notifyObservers();
    const QRect letters = lettersOf(frame());
    EXPECT_NEAR(letters.x() + letters.width() / 2.0, 170.0, 1.5);
    EXPECT_LT(letters.width(), first.width());
    sphere->setFence(origin + glm::dvec3(0, 40, 0), 10.0);
    fence.notifyObservers();
    EXPECT_EQ(countPixels(frame(), isDark), 0);
}

TEST_F(LabelsTest, LieOnTheSamePixelsInTilesOfAnyPlace)
{
    addCorners();
    for (int i = 0; i < 30; ++i)
        add(QStringLiteral("Street %1").arg(i),
            {part(Part::Point, {{-140.3 + 9.7 * i, -50.2 + 37.1 * i - 100 * (37 * i / 100), 0.1 * i}})});
    const QImage whole = frame();
    const Viewpoint view = viewpoint();
    for (const QRect& pixels : {QRect(0, 0, 150, 60), QRect(150, 0, 150, 60), QRect(37, 51, 171, 69)}) {
        const auto target = makeTarget(renderer->makeCurrent(), pixels.size(), 0);
        target->bind();
        renderer->drawTile(view, {Width, Height}, {pixels, pixels, pixels.adjusted(-8, -8, 8, 8)},
                           scene->getDefaultVao(), grey);
        const QImage image = target->toImage();
        target->release();
        checkImage("label_tile", image.convertToFormat(QImage::Format_RGB32), whole.copy(pixels), {2, 0});
    }
}

TEST_F(LabelsTest, AnyScriptIsWritten)
{
    addCorners();
    const char* const names[] = {"Главная улица", "רחוב הנביאים", "شارع الملك", "长安街", "🏠 家"};
    FeatureElement& element = add("x", {part(Part::Point, {{0, 0, 0}})});
    for (const char* name : names) {
        element.setProperty("name", QString::fromUtf8(name));
        EXPECT_GT(countPixels(frame(), Qt::white, 20), 60) << name;
    }
    element.setProperty("name", QString(1 << 20, 'M'));
    EXPECT_LT(lettersOf(frame()).width(), Width + 1);
}

TEST_F(LabelsTest, ManyComeAndGo)
{
    addCorners();
    // the letters, which are kept for the next names
    const LONGID letters = add("0123456789", {part(Part::Point, {{0, 0, 0}})}).getId();
    frame();
    manager().removeItem(letters);
    scene->makeCurrent();
    const GlObjects before = GlObjects::count(*gl);
    std::vector<LONGID> ids;
    scene->startGroupOperation();
    for (int i = 0; i < 3000; ++i)
        ids.push_back(
            add(QString::number(i), {part(Part::Point, {{i % 300 - 150, i / 300 * 12 - 60, 0}})}).getId());
    scene->finishGroupOperation(ksp::StagedProgress::dummy());
    const QImage shown = frame();
    EXPECT_GT(countPixels(shown, isDark), 1000);
    checkImage("labels_again", frame(), shown);
    for (const LONGID id : ids)
        manager().removeItem(id);
    scene->makeCurrent();
    EXPECT_EQ(GlObjects::count(*gl), before);
}

// --- the program
// -------------------------------------------------------------------------------------------------------

class LabelsOfTheProgram : public ViewerTest
{
};

TEST_F(LabelsOfTheProgram, RenderWritesThem)
{
    const QString file = write("mills.geojson", R"({"type": "FeatureCollection", "features": [
        {"type": "Feature", "properties": {"name": "Old Mill", "owner": "Miller and Sons", "stroke": "#c0c0c0"},
         "geometry": {"type": "Polygon", "coordinates": [[[0, 0], [90, 0], [90, 60], [0, 60], [0, 0]]]}}]})");
    const auto dark = [&](const QStringList& labels) {
        const ViewerRun run = runViewer(QStringList{"render", file, "-o", path("out.png"), "--size",
                                                    "300x200", "--view", "top", "--background", "#969696"} +
                                        labels);
        EXPECT_EQ(run.status, 0) << run.error.constData();
        EXPECT_EQ(run.error, "");
        return countPixels(QImage(path("out.png")), isDark);
    };
    EXPECT_EQ(dark({}), 0);
    const int name = dark({"--labels"});
    EXPECT_GT(name, 50);
    EXPECT_GT(dark({"--labels", "owner"}), name * 3 / 2);
}

TEST_F(LabelsOfTheProgram, TheWindowHasASwitch)
{
    Host host(Host::Settings::InMemory);
    MainWindow window(host);
    window.resize(500, 400);
    window.show();
    const auto dark = [&] {
        for (int i = 0; i < 5; ++i)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        return countPixels(window.view().grabFramebuffer(), isDark);
    };
    window.openFiles(
        {write("mill.geojson", R"({"type": "Feature", "properties": {"name": "Old Mill", "stroke": "#c0c0c0"},
         "geometry": {"type": "Polygon", "coordinates": [[[0, 0], [90, 0], [90, 60], [0, 60], [0, 0]]]}})")});
    EXPECT_EQ(dark(), 0);
    auto* action = window.findChild<QAction*>("labels");
    ASSERT_NE(action, nullptr);
    EXPECT_FALSE(action->isChecked());
    action->trigger();
    EXPECT_GT(dark(), 50);
    EXPECT_GT(countPixels(window.view().picture(), isDark), 50) << "in pictures of the view, too";
    action->trigger();
    EXPECT_EQ(dark(), 0);
    window.showLabels("name");
    EXPECT_TRUE(action->isChecked());
    EXPECT_GT(dark(), 50);
}

TEST_F(LabelsOfTheProgram, ANewProjectKeepsNoLetters)
{
    Host host(Host::Settings::InMemory);
    MainWindow window(host);
    window.resize(300, 200);
    window.show();
    window.showLabels("name");
    window.openFiles({write("mill.geojson", R"({"type": "Feature", "properties": {"name": "Old Mill"},
         "geometry": {"type": "Point", "coordinates": [3, 4]}})")});
    QCoreApplication::processEvents();
    EXPECT_GT(countPixels(window.view().grabFramebuffer(), isDark), 20);
    EXPECT_GT(TextureFactory::instance().getSize(), 6u);
    for (QAction* action : window.findChildren<QAction*>())
        if (action->shortcut() == QKeySequence(QKeySequence::New)) action->trigger();
    EXPECT_EQ(TextureFactory::instance().getSize(), 0u);
}
