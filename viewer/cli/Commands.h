#pragma once

#include <viewer/cli/CommandLine.h>

#include <QtCore/QByteArray>

class CProject;
class Host;
class Scene3d;

/// The commands of the program. Each throws ksp::CommonError when its work fails, with a text that names the
/// file.
namespace commands {

/// Makes the picture and writes it, whole or not at all. Needs a QGuiApplication and OpenGL.
void render(const RenderOptions& options);
/// Writes a depth map and what was asked for beside it, whole or not at all. Needs a QGuiApplication and
/// OpenGL.
void depth(const DepthOptions& options);
/// The elements in an area of a picture, as lines or JSON. Needs a QGuiApplication and OpenGL.
QByteArray select(const SelectOptions& options);
/// Writes what the scene draws, whole or not at all. Needs a QGuiApplication and OpenGL.
void exportScene(const ExportOptions& options);
/// What the files hold, as text or JSON. Needs no display.
QByteArray info(const InfoOptions& options);
/// The plug-ins and the extensions that can be opened.
QByteArray plugins();

} // namespace commands
