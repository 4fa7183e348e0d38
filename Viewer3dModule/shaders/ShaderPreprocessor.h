#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <string>
#include <vector>

class QTextStream;

/// Shader sources share code through lines of the form
///     //#include "shader:Viewer3dModule/DrawModes.glsl"
/// (a comment to a GLSL compiler). Such a line starts with the word //#include, blanks before it aside, and
/// goes on with a second word longer than two characters: the file, in double quotes or without. The rest of
/// the line means nothing. Includes must not form a cycle. A file that cannot be opened reads as empty,
/// without a message.

/// The source of a file with its includes in place, depth first, and "#define X" lines for all defines right
/// after its "#version" line, in order. Included files get no defines. A file without a "#version" line
/// receives none either. Lines end with a line feed. A define is the text after "#define ": a name, or a
/// name, a blank and a value.
VIEWER3DMODULE_EXPORT QString preprocessShader(const QString& fileName,
                                               const std::vector<std::string>& defines);

/// The same in two steps, of which the first reads files and is done once for many lists of defines. In
/// UTF-8, as compilers take it.
QByteArray preprocessForDefines(const QString& fileName);
QByteArray withDefines(QByteArray source, const std::vector<std::string>& defines);

/// Whether some line of the file is an include line.
VIEWER3DMODULE_EXPORT bool doesContainInclude(const QString& fileName);

/// Appends to the stream what preprocessShader returns.
VIEWER3DMODULE_EXPORT void appendShaderSource(const QString& fileName, QTextStream& out,
                                              const std::vector<std::string>& defines);
