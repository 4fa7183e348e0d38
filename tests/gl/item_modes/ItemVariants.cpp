#include "ItemVariants.h"

namespace {

const std::string color = "RX_USE_PER_VERTEX_COLOR";
const std::string normal = "RX_USE_PER_VERTEX_NORMAL";
const std::string texture = "RX_USE_PER_VERTEX_TEX_COORDS";
const std::string bitmap = "RX_USE_TEXTURE_AS_BITMAP";
const std::string instanced = "RX_USE_INSTANCED_DRAW";
const std::vector<std::string> all = {color, normal, texture};

// Those whose item comes in uniforms only.
std::vector<ItemVariant> singleItems()
{
    const QStringList dashed = {"dashedLines.vertex", "dashedLines.fragment"};
    const QStringList solid = {"dummy.vertex", "SolidRegularLines.geom", "mesh.fragment"};
    const QStringList solidMono = {"dummy.vertex", "SolidRegularLines.geom", "mono.fragment"};
    const QStringList solidTexture = {"dummy.vertex", "SolidRegularLines.geom", "texture.fragment"};
    const QStringList facets = {"sphere.vertex", "sphereCube.tesc", "sphereCube.tese", "sphereCube.geom",
                                "sphereCube.fragment"};
    const QStringList smooth = {"sphere.vertex", "sphereCube.tesc", "sphereCube.tese", "sphereCube.fragment"};
    const QStringList cylinder = {"sphere.vertex", "cylinder.geom", "sphereCube.fragment"};
    const std::string emulation = "RX_USE_ADJACENCY_EMULATION";
    return {
        {"Dashed", dashed, {}, Shape::Line, Colors::Item},
        {"Solid", solid, {normal}, Shape::Solid, Colors::Item},
        {"SolidVertexColor", solid, all, Shape::Solid, Colors::Vertices, 1},
        {"SolidTexture", solid, all, Shape::Solid, Colors::Texture, 2},
        {"SolidMono", solidMono, {}, Shape::Solid, Colors::Item},
        {"SolidMonoVertexColor", solidMono, {color}, Shape::Solid, Colors::Vertices},
        {"SolidPlainTexture", solidTexture, {texture}, Shape::Solid, Colors::Texture},
        {"EmulatedSolid", solid, {normal, emulation}, Shape::EmulatedSolid, Colors::Item},
        {"EmulatedSolidVertexColor",
         solid,
         {normal, color, emulation},
         Shape::EmulatedSolid,
         Colors::Vertices,
         1},
        {"Sphere", facets, {}, Shape::Sphere, Colors::Item},
        {"SphereTexture", facets, {}, Shape::Sphere, Colors::Texture, 2},
        {"SphereWires", facets, {}, Shape::Sphere, Colors::Item, 2},
        {"SmoothSphere", smooth, {}, Shape::Sphere, Colors::Item},
        {"SmoothSphereTexture", smooth, {}, Shape::Sphere, Colors::Texture, 2},
        {"Cylinder", cylinder, {}, Shape::Cylinder, Colors::Item},
        {"CylinderTexture", cylinder, {}, Shape::Cylinder, Colors::Texture, 2},
        {"EditedLine",
         {"common.vertex", "EditNodes.geom", "EditNodes.fragment"},
         {},
         Shape::EditedLine,
         Colors::Item},
        {"EditedPoint",
         {"common.vertex", "EditNodes.points.geom", "EditNodes.fragment"},
         {},
         Shape::EditedPoint,
         Colors::Item},
    };
}

// Those whose item comes in uniforms or in attributes of its instance.
std::vector<ItemVariant> singleItemsAndInstances()
{
    const QStringList mono = {"common.vertex", "mono.fragment"};
    const QStringList wide = {"common.vertex", "WideLines.geom", "mono.fragment"};
    const QStringList textured = {"common.vertex", "texture.fragment"};
    const QStringList caption = {"common.vertex", "caption.geom", "texture.fragment"};
    const QStringList captionMono = {"common.vertex", "caption.geom", "mono.fragment"};
    const QStringList mesh = {"common.vertex", "mesh.fragment"};
    const QStringList point = {"common.vertex", "mono.point.fragment"};
    const QStringList faceNodes = {"common.vertex", "Selection.face2points.geom", "mono.point.fragment"};
    const QStringList lineNodes = {"common.vertex", "Selection.line2points.geom", "mono.point.fragment"};
    return {
        {"Mono", mono, {}, Shape::Rectangle, Colors::Item},
        {"VertexColor", mono, {color}, Shape::Rectangle, Colors::Vertices},
        {"Texture", textured, {texture}, Shape::Rectangle, Colors::Texture},
        {"Bitmap", textured, {texture, bitmap}, Shape::Rectangle, Colors::Bitmap},
        {"Wide", wide, {}, Shape::Line, Colors::Item},
        {"WideVertexColor", wide, {color}, Shape::Line, Colors::Vertices},
        {"Caption", caption, {}, Shape::Caption, Colors::Texture},
        {"CaptionBitmap", caption, {bitmap}, Shape::Caption, Colors::Bitmap},
        {"CaptionMono", captionMono, {}, Shape::Caption, Colors::Item},
        {"CaptionVertexColor", captionMono, {color}, Shape::Caption, Colors::Vertices},
        {"Mesh", mesh, all, Shape::Rectangle, Colors::Item},
        {"MeshVertexColor", mesh, all, Shape::Rectangle, Colors::Vertices, 1},
        {"MeshTexture", mesh, all, Shape::Rectangle, Colors::Texture, 2},
        {"MeshWithoutAttributes", mesh, {}, Shape::Rectangle, Colors::Item, 2},
        {"Point", point, {}, Shape::Point, Colors::Item},
        {"PointVertexColor", point, {color}, Shape::Point, Colors::Vertices},
        {"FaceNodes", faceNodes, {}, Shape::FaceNodes, Colors::Item},
        {"FaceNodesVertexColor", faceNodes, {color}, Shape::FaceNodes, Colors::Vertices},
        {"LineNodes", lineNodes, {}, Shape::LineNodes, Colors::Item},
        {"LineNodesVertexColor", lineNodes, {color}, Shape::LineNodes, Colors::Vertices},
    };
}

} // namespace

std::vector<ItemVariant> itemVariants()
{
    std::vector<ItemVariant> list = singleItems();
    for (const ItemVariant& variant : singleItemsAndInstances())
        for (const Instances instances : {Instances::None, Instances::Positions, Instances::Matrices}) {
            ItemVariant one = variant;
            one.instances = instances;
            if (instances != Instances::None) one.defines.emplace_back(instanced);
            if (instances == Instances::Positions) one.defines.emplace_back("RX_USE_INSTANCE_POSITION");
            if (instances == Instances::Positions) one.name += "AtPositions";
            if (instances == Instances::Matrices) one.name += "ByMatrices";
            list.push_back(one);
        }
    const QStringList glyph = {"PerGlyphCaption.vertex", "PerGlyphCaption.geom", "texture.fragment"};
    list.push_back({"Glyph", glyph, {bitmap}, Shape::Glyph, Colors::Bitmap, 0, Instances::Glyphs});
    list.push_back({"GlyphTexture", glyph, {}, Shape::Glyph, Colors::Texture, 0, Instances::Glyphs});
    return list;
}
