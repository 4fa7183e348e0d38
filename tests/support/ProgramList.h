#pragma once

#include <QtCore/QDir>
#include <QtCore/QStringList>

#include <string>
#include <vector>

/// What a program is built from.
struct ProgramRecipe
{
    std::string name;
    QStringList files;
    std::vector<std::string> defines;
};

/// The path of a shader source by its name without ".glsl".
inline QString shaderPath(const QString& name)
{
    return QStringLiteral("shader:Viewer3dModule/%1.glsl").arg(name);
}

/// A recipe by the names of its stages without ".glsl".
inline ProgramRecipe recipe(const char* name, const QStringList& stages,
                            std::vector<std::string> defines = {})
{
    QStringList files;
    for (const QString& stage : stages)
        files.append(shaderPath(stage));
    return ProgramRecipe{name, files, std::move(defines)};
}

/// The eight programs that every scene has, in the order of their drawer types, written out here once more.
inline const std::vector<ProgramRecipe>& defaultPrograms()
{
    static const std::vector<ProgramRecipe> programs = {
        recipe("Mono", {"common.vertex", "mono.fragment"}, {}),
        recipe("VertexColor", {"common.vertex", "mono.fragment"}, {"RX_USE_PER_VERTEX_COLOR"}),
        recipe("Texture", {"common.vertex", "texture.fragment"}, {"RX_USE_PER_VERTEX_TEX_COORDS"}),
        recipe("WideLines", {"common.vertex", "WideLines.geom", "mono.fragment"}, {}),
        recipe("DashedLines", {"dashedLines.vertex", "dashedLines.fragment"}, {}),
        recipe("SolidRegularLines", {"dummy.vertex", "SolidRegularLines.geom", "mesh.fragment"},
               {"RX_USE_PER_VERTEX_NORMAL"}),
        recipe("Caption", {"common.vertex", "caption.geom", "texture.fragment"}, {}),
        recipe("Mesh", {"common.vertex", "mesh.fragment"},
               {"RX_USE_PER_VERTEX_COLOR", "RX_USE_PER_VERTEX_NORMAL", "RX_USE_PER_VERTEX_TEX_COORDS"}),
    };
    return programs;
}

/// The programs that are built on demand, for spheres, labels, markers, nodes and the masks.
inline const std::vector<ProgramRecipe>& furtherPrograms()
{
    static const std::vector<ProgramRecipe> programs = {
        recipe("Sphere", {"sphere.vertex", "sphereCube.tesc", "sphereCube.tese", "sphereCube.geom",
                          "sphereCube.fragment"}),
        recipe("SmoothSphere",
               {"sphere.vertex", "sphereCube.tesc", "sphereCube.tese", "sphereCube.fragment"}),
        recipe("Cylinder", {"sphere.vertex", "cylinder.geom", "sphereCube.fragment"}),
        recipe("GlyphCaption", {"PerGlyphCaption.vertex", "PerGlyphCaption.geom", "texture.fragment"},
               {"RX_USE_INSTANCED_DRAW", "RX_USE_TEXTURE_AS_BITMAP"}),
        recipe("Points", {"common.vertex", "mono.point.fragment"}),
        recipe("InstancedPoints", {"common.vertex", "mono.point.fragment"},
               {"RX_USE_INSTANCED_DRAW", "RX_USE_INSTANCE_POSITION"}),
        recipe("EditNodes", {"common.vertex", "EditNodes.geom", "EditNodes.fragment"}),
        recipe("EditNodePoints", {"common.vertex", "EditNodes.points.geom", "EditNodes.fragment"}),
        recipe("SelectFaceNodes", {"common.vertex", "Selection.face2points.geom", "mono.point.fragment"}),
        recipe("SelectLineNodes", {"common.vertex", "Selection.line2points.geom", "mono.point.fragment"}),
        recipe("GluePoints", {"GlueMask.vertex", "GlueMask.points.geom", "GlueMask.fragment"}),
        recipe("GlueLineNodes", {"GlueMask.vertex", "GlueMask.line2points.geom", "GlueMask.fragment"}),
        recipe("GlueFaceNodes", {"GlueMask.vertex", "GlueMask.face2points.geom", "GlueMask.fragment"}),
        recipe("GlueLines", {"GlueMask.vertex", "GlueMask.line2line.geom", "GlueMask.line2line.fragment"}),
        recipe("GlueFaceEdges",
               {"GlueMask.vertex", "GlueMask.face2line.geom", "GlueMask.line2line.fragment"}),
        recipe("GlueFaces", {"GlueMask.vertex", "GlueMask.face2face.geom", "GlueMask.face2face.fragment"}),
        recipe("EyeDome", {"common.vertex", "edl.fragment"}, {"RX_USE_PER_VERTEX_TEX_COORDS"}),
    };
    return programs;
}

/// Lets paths such as "shader:Viewer3dModule/mono.fragment.glsl" reach the resources. Where the environment
/// names a folder in V3D_TEST_SHADER_FOLDER, its sources take the place of those: so altered sources are
/// tested without a rebuild.
inline void mapShaderPrefix()
{
    QStringList folders{QStringLiteral(":/")};
    const QString altered = qEnvironmentVariable("V3D_TEST_SHADER_FOLDER");
    if (!altered.isEmpty()) folders.prepend(altered);
    QDir::setSearchPaths(QStringLiteral("shader"), folders);
}
