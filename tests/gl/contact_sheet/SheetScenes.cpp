#include "SheetScenes.h"

#include <algorithm>

const std::vector<SheetScenes::Scene>& SheetScenes::scenes()
{
    constexpr std::uint64_t high = 0x100000000u;
    const auto numbers = [](int count, std::uint64_t step, std::uint64_t first) {
        std::set<std::uint64_t> ids;
        for (int i = 0; i < count; ++i)
            ids.insert(static_cast<unsigned>(i) * step + first);
        return ids;
    };
    std::set<std::uint64_t> instances = numbers(9, high, 90);
    instances.erase(6 * high + 90); // hidden
    using S = SheetScenes;
    const std::set<std::uint64_t> faces = {60 * high + 1, 61 * high + 1, 62 * high + 1};
    static const std::vector<Scene> all = {
        {"Mono", Kind::Item, &S::drawMono, {1, 2, high + 3}},
        {"VertexColor", Kind::Item, &S::drawVertexColor, {8, 2 * high + 6}},
        {"Texture", Kind::Item, &S::drawTexture, {7, 3 * high + 7}},
        {"WideLines", Kind::Item, &S::drawWideLines, numbers(12, high, 10)},
        {"DashedLines", Kind::Item, &S::drawDashedLines, {20, 21, 22}},
        {"SolidRegularLines", Kind::Item, &S::drawSolidLines, {30 * high + 30, 31 * high + 31}},
        {"Caption", Kind::Item, &S::drawCaptions, {40, high + 41, 42}},
        {"Mesh", Kind::Item, &S::drawMeshes, {50, 51 * high, 52 * high + 52}},
        {"Sphere", Kind::Item, &S::drawSpheres, faces},
        {"SmoothSphere", Kind::Item, &S::drawSpheres, faces},
        {"Cylinder", Kind::Item, &S::drawCylinders, faces},
        {"GlyphCaption", Kind::Item, &S::drawGlyphs, {70, high + 71}},
        {"Points", Kind::Item, &S::drawPoints, numbers(20, high, 80)},
        {"InstancedPoints", Kind::Item, &S::drawInstances, instances},
        {"EditNodes", Kind::Item, &S::drawEditNodes, {100, high + 101}},
        {"EditNodePoints", Kind::Item, &S::drawEditPoints, {102, high + 103}},
        {"SelectFaceNodes", Kind::Item, &S::drawFaceNodes, {110, high + 111}},
        {"SelectLineNodes", Kind::Item, &S::drawLineNodes, {112, high + 113}},
        {"GluePoints", Kind::Glue, &S::drawGluePoints, {5, 8, 9}},
        {"GlueLineNodes", Kind::Glue, &S::drawGlueLines, {7, 8}},
        {"GlueFaceNodes", Kind::Glue, &S::drawGlueFaces, {4}},
        {"GlueLines", Kind::Glue, &S::drawGlueLines, {6}},
        {"GlueFaceEdges", Kind::Glue, &S::drawGlueFaces, {3}},
        {"GlueFaces", Kind::Glue, &S::drawGlueFaces, {1, 2}},
        {"EyeDome", Kind::EyeDome, nullptr, {}},
    };
    return all;
}

const SheetScenes::Scene& SheetScenes::sceneOf(const std::string& program)
{
    return *std::find_if(scenes().begin(), scenes().end(),
                         [&program](const Scene& scene) { return scene.program == program; });
}

CellDrawing::Output SheetScenes::drawScene(const Scene& scene, Mode mode)
{
    return drawPass(mode, [this, &scene] { (this->*scene.draw)(); });
}

Strip SheetScenes::stripOf(const Scene& scene)
{
    Strip strip{scene.program, {}};
    if (scene.kind == Kind::EyeDome) {
        const char* captions[] = {"off", "further ones darken", "nearer ones darken"};
        for (int shading = 0; shading < 3; ++shading)
            strip.cells.push_back({captions[shading], picture(drawEyeDome(shading), Mode::Ordinary)});
        return strip;
    }
    select(scene.program);
    if (scene.kind == Kind::Glue) {
        strip.cells.push_back({"glue mask", layerPicture(drawScene(scene, Mode::GlueMask))});
        return strip;
    }
    strip.cells.push_back({"ordinary", picture(drawScene(scene, Mode::Ordinary), Mode::Ordinary)});
    strip.cells.push_back(
        {"selection mask", picture(drawScene(scene, Mode::SelectionMask), Mode::SelectionMask)});
    const Output glue = drawScene(scene, Mode::GlueMask);
    strip.cells.push_back({"glue mask: ids", picture(glue, Mode::GlueMask)});
    strip.cells.push_back({"glue mask: layers", layerPicture(glue)});
    return strip;
}
