#pragma once

#include <tests/support/ProgramList.h>

#include <Viewer3dModule/shaders/ShaderPreprocessor.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QRegularExpression>

#include <set>
#include <string>
#include <vector>

/// The shader sources as a whole. mapShaderPrefix() must have been called.
namespace shader_sources {

/// All sources of the resources, with ".glsl", in order.
inline QStringList names()
{
    return QDir(QStringLiteral("shader:Viewer3dModule")).entryList(QDir::Files, QDir::Name);
}

inline QString pathOf(const QString& name)
{
    return QStringLiteral("shader:Viewer3dModule/") + name;
}

/// Whether a source is a stage; the others are included by stages.
inline bool isStage(const QString& name)
{
    QFile file(pathOf(name));
    return file.open(QIODevice::ReadOnly) && file.readAll().startsWith("#version");
}

/// Every set of the RX_ defines that a source asks about, with its includes; those of fences, of which a
/// program has one at most, with no others and with all others.
inline std::vector<std::vector<std::string>> defineSets(const QString& name)
{
    static const QRegularExpression use(QStringLiteral("#if[^\\n]*\\b(RX_\\w+)"));
    std::set<std::string> defines, fences;
    auto matches = use.globalMatch(preprocessShader(pathOf(name), {}));
    while (matches.hasNext()) {
        const QString define = matches.next().captured(1);
        (define.endsWith(QLatin1String("_FENCE")) ? fences : defines).insert(define.toStdString());
    }
    std::vector<std::vector<std::string>> sets{{}};
    for (const std::string& define : defines)
        for (std::size_t i = 0, count = sets.size(); i < count; ++i) {
            sets.push_back(sets[i]);
            sets.back().push_back(define);
        }
    for (const std::string& fence : fences) {
        sets.push_back({fence});
        if (defines.empty()) continue;
        sets.emplace_back(defines.begin(), defines.end());
        sets.back().push_back(fence);
    }
    return sets;
}

/// A stage with one set of the defines that it asks about.
struct StageVariant
{
    QString name; ///< with ".glsl"
    std::vector<std::string> defines;
};

/// All stages, each under all of its sets.
inline std::vector<StageVariant> stageVariants()
{
    std::vector<StageVariant> variants;
    for (const QString& name : names())
        if (isStage(name))
            for (const auto& defines : defineSets(name))
                variants.push_back({name, defines});
    return variants;
}

} // namespace shader_sources
