#pragma once

#include <Viewer3dModule/drawables/MeshData.h>
#include <framework/ksp/StagedProgress.h>

#include <QtCore/QIODevice>
#include <QtCore/QString>

#include <functional>
#include <string_view>
#include <vector>

namespace readers {

/// Meshes that one file becomes at most; what goes beyond is joined to the last. Each is an element with
/// buffers of its own, and a small file can name very many.
constexpr std::size_t mostMeshes = 10000;

/// Opens a file and calls the function with it. Whatever fails, in opening it or in the function, leaves as
/// one ksp::CommonError of one line, "path: reason"; ksp::Canceled passes.
void withFile(const QString& path, const std::function<void(QIODevice&)>& function);

/// Reads one file into meshes: the device stands at the front, the path is for messages and for finding the
/// files that lie beside it. Reasons for the user are thrown as ksp::CommonError without the path.
using MeshParser = std::function<std::vector<MeshData>(QIODevice& device, const QString& path,
                                                       ksp::StagedProgress progress)>;

/// Opens and reads a file; one without anything to draw is refused. Errors as in withFile.
std::vector<MeshData> readMeshFile(const QString& path, const MeshParser& parse,
                                   ksp::StagedProgress progress);

/// Text of a file as it may stand in a message: printable, on one line, not longer than a line.
QString inQuotes(std::string_view text);

/// What a reader had to leave out of a file that it read otherwise, told in one line of the log a kind.
struct LeftOut
{
    std::size_t notFinite = 0; ///< primitives at vertices that are not finite or beyond 1e15
    std::size_t tooFew = 0;    ///< faces with fewer than three corners, lines with fewer than two
    std::size_t fanned = 0;    ///< polygons too large and winding to be divided properly
    void log(const QString& path) const;
    /// Throws ksp::CommonError that says why there is nothing to draw.
    [[noreturn]] void refuse() const;
};

} // namespace readers
