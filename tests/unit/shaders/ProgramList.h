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

/// The eight programs that every scene has, in the order of their drawer types, written out here once more.
inline const std::vector<ProgramRecipe>& defaultPrograms()
{
    static const auto recipe = [](const char* name, const QStringList& stages,
                                  std::vector<std::string> defines) {
        QStringList files;
        for (const QString& stage : stages)
            files.append(shaderPath(stage));
        return ProgramRecipe{name, files, std::move(defines)};
    };
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

/// Lets paths such as "shader:Viewer3dModule/mono.fragment.glsl" reach the resources.
inline void mapShaderPrefix()
{
    QDir::setSearchPaths(QStringLiteral("shader"), {QStringLiteral(":/")});
}
