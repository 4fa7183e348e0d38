#pragma once

#include <viewer/PlyWriter.h>

#include <framework/ksp/StagedProgress.h>

#include <vector>

class Drawable3dItem;
class Scene3d;

/// Writes what a scene draws: the points, lines and triangles of its visible items, as they are drawn but in
/// model coordinates. Coordinates come as the graphics adapter has them, in single precision near the scene's
/// origin, and are mapped to the model in doubles. Items without geometry, such as captions, give nothing.
///
/// Of what a fence limits, primitives that lie wholly outside of it are left out; those that it cuts are
/// written whole.
///
/// One item at a time is captured on the graphics adapter, at 16 bytes a vertex, and read back in small
/// pieces; twice where there is a fence, because a file begins with its counts.
class SceneExporter
{
public:
    /// The scene is not owned; its bounds must be up to date and stay so, and so must its fence. Throws
    /// ksp::CommonError when a fence is there and what it leaves cannot be counted. Leaves the caller's
    /// context current.
    explicit SceneExporter(Scene3d& scene);

    /// What there is to write, all together.
    PlyWriter::Counts counts() const;
    /// Writes it. Throws ksp::CommonError, which names no file, and ksp::Canceled. Leaves the caller's
    /// context current.
    void write(QIODevice& device, PlyWriter::Format format, ksp::StagedProgress progress);

private:
    struct Part
    {
        Drawable3dItem* item;
        PlyWriter::Counts counts;
    };
    void addPart(Drawable3dItem& item);
    void countWhatIsLeft(Part& part) const;
    std::vector<PlyWriter::Counts> partCounts() const;
    void writeVertices(const Part& part, PlyWriter& writer, const std::function<void(std::uint64_t)>& done);

    Scene3d& m_scene;
    std::vector<Part> m_parts; // by ascending identifier of their elements
};
