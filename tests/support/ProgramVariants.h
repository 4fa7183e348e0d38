#pragma once

#include <tests/support/ProgramList.h>

/// Programs that nothing in the module builds by itself but that a drawer may: the same stages under other
/// defines, and other stages together.
inline const std::vector<ProgramRecipe>& programVariants()
{
    static const std::string color = "RX_USE_PER_VERTEX_COLOR";
    static const std::string normal = "RX_USE_PER_VERTEX_NORMAL";
    static const std::string texture = "RX_USE_PER_VERTEX_TEX_COORDS";
    static const std::string instanced = "RX_USE_INSTANCED_DRAW";
    static const std::string positions = "RX_USE_INSTANCE_POSITION";
    static const std::string noCoords = "RX_NO_USE_PER_VERTEX_COORDS";
    static const std::string emulation = "RX_USE_ADJACENCY_EMULATION";
    static const std::string elevation = "RX_USE_ELEVATION_COLOR";
    static const std::string bitmap = "RX_USE_TEXTURE_AS_BITMAP";
    static const std::string records = "RX_USE_ITEM_RECORDS";

    static const QStringList mono = {"common.vertex", "mono.fragment"};
    static const QStringList point = {"common.vertex", "mono.point.fragment"};
    static const QStringList wide = {"common.vertex", "WideLines.geom", "mono.fragment"};
    static const QStringList caption = {"common.vertex", "caption.geom", "texture.fragment"};
    static const QStringList monoCaption = {"common.vertex", "caption.geom", "mono.fragment"};
    static const QStringList textured = {"common.vertex", "texture.fragment"};
    static const QStringList mesh = {"common.vertex", "mesh.fragment"};
    static const QStringList dashed = {"dashedLines.vertex", "dashedLines.fragment"};
    static const QStringList solid = {"dummy.vertex", "SolidRegularLines.geom", "mesh.fragment"};
    static const QStringList solidMono = {"dummy.vertex", "SolidRegularLines.geom", "mono.fragment"};
    static const QStringList solidTexture = {"dummy.vertex", "SolidRegularLines.geom", "texture.fragment"};
    static const QStringList sphere = {"sphere.vertex", "sphereCube.tesc", "sphereCube.tese",
                                       "sphereCube.geom", "sphereCube.fragment"};
    static const QStringList cylinder = {"sphere.vertex", "cylinder.geom", "sphereCube.fragment"};
    static const QStringList faceNodes = {"common.vertex", "Selection.face2points.geom",
                                          "mono.point.fragment"};
    static const QStringList lineNodes = {"common.vertex", "Selection.line2points.geom",
                                          "mono.point.fragment"};

    static const std::vector<ProgramRecipe> programs = {
        recipe("MonoInstances", mono, {instanced}),
        recipe("MonoInstancePositions", mono, {instanced, positions}),
        recipe("MonoInstancePoints", mono, {instanced, positions, noCoords}),
        recipe("MonoColoredInstances", mono, {instanced, color}),
        recipe("PointsColored", point, {color}),
        recipe("PointsColoredInstances", point, {instanced, color}),
        recipe("WideLinesColored", wide, {color}),
        recipe("WideLinesInstances", wide, {instanced}),
        recipe("WideLinesColoredInstances", wide, {instanced, positions, color}),
        recipe("CaptionInstances", caption, {instanced, positions, noCoords}),
        recipe("CaptionBitmap", caption, {bitmap}),
        recipe("CaptionBitmapInstances", caption, {bitmap, instanced}),
        recipe("CaptionColored", caption, {color}),
        recipe("CaptionPlainColored", monoCaption, {color}),
        recipe("TextureBitmapInstances", textured, {texture, bitmap, instanced}),
        recipe("TextureColored", textured, {texture, color}),
        recipe("MeshPlain", mesh, {}),
        recipe("MeshNormals", mesh, {normal}),
        recipe("MeshColored", mesh, {color}),
        recipe("MeshColoredNormals", mesh, {color, normal}),
        recipe("MeshTextured", mesh, {texture}),
        recipe("MeshTexturedNormals", mesh, {texture, normal}),
        recipe("MeshInstances", mesh, {instanced, normal, color, texture}),
        recipe("MeshInstancePositions", mesh, {instanced, positions, normal, color, texture}),
        recipe("MonoElevation", mono, {color, elevation}),
        recipe("MonoElevationInstances", mono, {instanced, positions, color, elevation}),
        recipe("WideLinesElevation", wide, {color, elevation}),
        recipe("DashedLinesElevation", dashed, {color, elevation}),
        recipe("MeshElevation", mesh, {normal, color, texture, elevation}),
        recipe("SolidElevation", solid, {normal, color, elevation}),
        recipe("SphereElevation", sphere, {color, elevation}),
        recipe("CylinderElevation", cylinder, {color, elevation}),
        recipe("SolidColored", solid, {normal, color}),
        recipe("SolidTextured", solid, {normal, texture}),
        recipe("SolidAll", solid, {normal, color, texture}),
        recipe("SolidEmulated", solid, {normal, emulation}),
        recipe("SolidEmulatedAll", solid, {normal, color, texture, emulation}),
        recipe("SolidPlain", solidMono, {}),
        recipe("SolidPlainColored", solidMono, {color}),
        recipe("SolidPlainTexture", solidTexture, {texture}),
        recipe("MonoRecords", mono, {records}),
        recipe("VertexColorRecords", mono, {records, color}),
        recipe("WideLinesRecords", wide, {records}),
        recipe("MeshRecords", mesh, {records, normal, color, texture}),
        recipe("SelectFaceNodesInstances", faceNodes, {instanced}),
        recipe("SelectLineNodesColored", lineNodes, {color}),
    };
    return programs;
}
