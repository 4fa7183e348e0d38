#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QStringList>

#include <string>
#include <vector>

class QObject;
class QOpenGLShaderProgram;

/// Builds a program in the context that is current and gives it to the parent.
/// @param files     paths of shader files, in the order in which they are compiled. The stage is told by the
///                  first of these words that occurs in the path: vertex, fragment, geom, tesc, tese, comp
/// @param defines   for the preprocessor of every file; see preprocessShader
/// @param varyings  names of outputs for transform feedback, written interleaved into one buffer in this
///                  order
/// @return          always a new program. When a stage did not compile or the program did not link, this is
///                  logged as an error and isLinked() is false. QOpenGLShaderProgram::bind() would try to
///                  link it again, each time: whoever draws asks isLinked() first and leaves such a program
///                  alone. A program whose sources declare more shader storage than the driver offers (see
///                  storageDeclared) is not compiled at all: one line names its files and the limit.
///
/// The program's property "primitives" (int, see PrimitiveBit) names the kinds that its geometry stage takes;
/// without a geometry stage, or where its input layout was not recognised, there is no such property.
VIEWER3DMODULE_EXPORT QOpenGLShaderProgram* buildShaderProgram(QObject* parent, const QStringList& files,
                                                               const std::vector<std::string>& defines,
                                                               const std::vector<std::string>& varyings);

/// What a program of buildShaderProgram is built from; empty for any other.
struct ProgramSources
{
    QStringList files;
    std::vector<std::string> defines;
};
/// Of each file what preprocessForDefines gives.
QList<QByteArray> textsOf(const QStringList& files);
ProgramSources sourcesOf(const QOpenGLShaderProgram& program);
void setSources(QOpenGLShaderProgram& program, const ProgramSources& sources);

/// What of its texts a program is compiled from: all, or what activeSource leaves of them, which takes
/// drivers less time.
enum class HandedText { Whole, Active };
/// Builds a program that has no stages yet from its sources. What fails is returned, one entry each for the
/// log, as buildShaderProgram writes them. The texts are those of the sources' files.
QStringList buildFromSources(QOpenGLShaderProgram& program, const std::vector<std::string>& varyings,
                             const QList<QByteArray>& texts, HandedText handed);
void logErrors(const QStringList& errors);
