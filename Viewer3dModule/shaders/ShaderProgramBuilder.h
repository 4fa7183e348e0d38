#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

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

/// What a program can leave out; see the shader sources Viewer3dFences/*.glsl.
enum class ProgramFence {
    None,
    Sphere, ///< compiled with RX_USE_SPHERE_FENCE
    Swept   ///< a polygon swept into depth, compiled with RX_USE_SWEPT_FENCE
};

/// Compiles and links a program of buildShaderProgram again as one with such a fence, or as one that knows
/// nothing of fences, which it is at first. It stays the same program, and its uniforms keep their values;
/// their locations may be others. Does nothing to a program that is so already, and to one whose fragment
/// stages do not ask for these defines.
///
/// There are variants because a fence costs every fragment some time on drivers that run both sides of a
/// condition; switching costs the time of a build, and happens when a fence comes, goes or becomes another
/// kind.
///
/// The program's context must be current. False when the program cannot have the fence. One that cannot be
/// built with it is logged, once, and is one without fence from then on.
VIEWER3DMODULE_EXPORT bool setProgramFence(QOpenGLShaderProgram& program, ProgramFence fence);
