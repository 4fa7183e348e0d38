#include "SheetLayout.h"
#include "SheetScenes.h"

#include <tests/support/ImageCheck.h>

#include <QtCore/QFileInfo>

namespace {

class ContactSheetTest : public SheetScenes
{
protected:
    std::vector<Strip> allStrips()
    {
        std::vector<Strip> strips;
        for (const Scene& scene : scenes()) {
            strips.push_back(stripOf(scene));
            if (scene.program == "GlueFaces")
                strips.push_back({"all six", {{"the highest layer wins", layerPicture(drawAllGlue())}}});
        }
        return strips;
    }
    static SheetLayout::Legend legend()
    {
        SheetLayout::Legend entries;
        for (const auto& [layer, name] : layerNames())
            entries.emplace_back(layerColor(layer), name);
        entries.emplace_back(noLayerColor(), "item without a layer");
        return entries;
    }
};

// To take over a sheet that is meant to be another: copy test-output/shaders.png of the build folder to the
// documents, having looked at it. A run on a second driver, which may go on beside that on the usual one,
// leaves no sheet.
TEST_F(ContactSheetTest, DocumentsShowWhatTheProgramsDraw)
{
    const std::vector<Strip> strips = allStrips();
    const SheetLayout layout(strips, CellSize);
    const QImage sheet = layout.compose(legend());
    if (qEnvironmentVariableIsEmpty("V3D_RENDERER")) saveTestImage("shaders", sheet);

    const QString path = QStringLiteral(V3D_SOURCE_DIR "/docs/images/shaders.png");
    const QImage shown(path);
    ASSERT_EQ(shown.size(), sheet.size()) << "docs/images/shaders.png against test-output/shaders.png";
    EXPECT_LT(QFileInfo(path).size(), 500000);
    // Only the cells: names and captions are for the reader. Another driver may put the edges of lines and
    // points elsewhere; a shape, a colour or a letter that is wrong is of more pixels.
    constexpr ImageTolerance tolerance{48, CellSize * CellSize / 100};
    for (std::size_t i = 0; i < strips.size(); ++i)
        for (std::size_t k = 0; k < strips[i].cells.size(); ++k) {
            const std::string name = "shaders." + strips[i].program + "." + std::to_string(k);
            const QImage expected = shown.copy(layout.cellRect(i, k));
            checkImage(name.c_str(), strips[i].cells[k].image, expected, tolerance);
        }
}

TEST_F(ContactSheetTest, ShowsEveryProgram)
{
    std::vector<std::string> programs;
    for (const auto* list : {&defaultPrograms(), &furtherPrograms()})
        for (const ProgramRecipe& listed : *list)
            programs.push_back(listed.name);
    std::vector<std::string> shown;
    for (const Scene& scene : scenes())
        shown.push_back(scene.program);
    EXPECT_EQ(shown, programs);
}

// What each picture shows, not only that it is the one of before.
class SheetCellsTest : public SheetScenes, public ::testing::WithParamInterface<std::string>
{
protected:
    const Scene& scene() const { return sceneOf(GetParam()); }
};

TEST_P(SheetCellsTest, MasksHoldTheItemsThatAreToBeSeen)
{
    if (scene().kind != Kind::Item) return;
    select(GetParam());
    EXPECT_EQ(drawScene(scene(), Mode::SelectionMask).ids(), scene().shown);
    const bool takesPart = GetParam() != "DashedLines";
    EXPECT_EQ(drawScene(scene(), Mode::GlueMask).ids(),
              takesPart ? scene().shown : std::set<std::uint64_t>{});
}

TEST_P(SheetCellsTest, ModesCoverTheSamePixels)
{
    if (scene().kind != Kind::Item) return;
    select(GetParam());
    const Output ordinary = drawScene(scene(), Mode::Ordinary);
    const Output selection = drawScene(scene(), Mode::SelectionMask);
    const Output glue = drawScene(scene(), Mode::GlueMask);
    int ordinaryOnly = 0;
    int selectionOnly = 0;
    int glueOnly = 0;
    for (int y = 0; y < CellSize; ++y)
        for (int x = 0; x < CellSize; ++x) {
            ordinaryOnly += ordinary.isCovered(x, y) && !selection.isCovered(x, y);
            selectionOnly += !ordinary.isCovered(x, y) && selection.isCovered(x, y);
            glueOnly += glue.isCovered(x, y) && !ordinary.isCovered(x, y);
        }
    EXPECT_GT(selection.coveredCount(), 500);
    EXPECT_EQ(glueOnly, 0);
    // texts have pixels of little alpha, which cannot be selected; dashes have gaps, which can
    const bool isText = GetParam() == "Caption" || GetParam() == "GlyphCaption";
    const bool isDashed = GetParam() == "DashedLines";
    EXPECT_EQ(ordinaryOnly > 0, isText);
    EXPECT_EQ(selectionOnly > 0, isDashed);
}

TEST_P(SheetCellsTest, GlueMasksHoldTheirLayers)
{
    if (scene().kind != Kind::Glue) return;
    select(GetParam());
    std::set<std::uint64_t> layers;
    for (const int layer : drawScene(scene(), Mode::GlueMask).layers())
        layers.insert(static_cast<unsigned>(layer));
    EXPECT_EQ(layers, scene().shown);
}

INSTANTIATE_TEST_SUITE_P(Programs, SheetCellsTest, ::testing::ValuesIn([] {
                             std::vector<std::string> names;
                             for (const auto* list : {&defaultPrograms(), &furtherPrograms()})
                                 for (const ProgramRecipe& program : *list)
                                     names.push_back(program.name);
                             return names;
                         }()),
                         [](const auto& program) { return program.param; });

TEST_F(ContactSheetTest, AllGlueProgramsShareOnePicture)
{
    EXPECT_EQ(drawAllGlue().layers(), (std::set<int>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST_F(ContactSheetTest, EyeDomeDarkensOnlyWhenItIsOn)
{
    const auto brightness = [](const Output& output) {
        double sum = 0.0;
        for (int y = 0; y < CellSize; ++y)
            for (int x = 0; x < CellSize; ++x)
                sum += output.attachments[0].pixelColor(x, y).lightnessF();
        return sum;
    };
    const double off = brightness(drawEyeDome(0));
    EXPECT_LT(brightness(drawEyeDome(1)), 0.99 * off);
    EXPECT_LT(brightness(drawEyeDome(2)), 0.99 * off);
}

} // namespace
