#include <viewer/SceneExporter.h>

#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/CurrentContextGuard.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/ksp/CommonError.h>

#include <algorithm>
#include <array>

namespace {

constexpr std::uint64_t piece = 32 * 1024; // vertices that are mapped at once

/// The buffers of points, lines and triangles of one item, which delete themselves.
class CapturedGeometry
{
public:
    /// The scene's context becomes current, and must be at the end.
    CapturedGeometry(Scene3d& scene, Drawable3dItem& item)
    {
        std::tie(m_names[0], m_names[1], m_names[2]) = scene.generateItemGeometry(&item);
        m_gl = scene.getGLFunctions();
        if (!m_gl) throw ksp::CommonError(QStringLiteral("there is no OpenGL 4.3 core profile here"));
    }
    ~CapturedGeometry()
    {
        if (m_gl) m_gl->glDeleteBuffers(3, m_names.data());
    }
    CapturedGeometry(const CapturedGeometry&) = delete;
    CapturedGeometry& operator=(const CapturedGeometry&) = delete;

    /// How many a buffer has room for. Binds it.
    std::uint64_t countVertices(std::size_t buffer) const
    {
        GLint64 size = 0;
        m_gl->glBindBuffer(GL_COPY_READ_BUFFER, m_names[buffer]);
        if (m_names[buffer] != 0) m_gl->glGetBufferParameteri64v(GL_COPY_READ_BUFFER, GL_BUFFER_SIZE, &size);
        return static_cast<std::uint64_t>(size) / sizeof(glm::vec4);
    }
    /// Calls use(vertices, count) for the first vertices of a buffer, piece by piece.
    template <typename Use>
    void read(std::size_t buffer, std::uint64_t count, Use use) const
    {
        if (count == 0) return;
        requireVertices(buffer, count);
        for (std::uint64_t first = 0; first < count; first += piece) {
            const std::uint64_t some = std::min(piece, count - first);
            const void* mapped =
                m_gl->glMapBufferRange(GL_COPY_READ_BUFFER, static_cast<GLintptr>(first * sizeof(glm::vec4)),
                                       static_cast<GLsizeiptr>(some * sizeof(glm::vec4)), GL_MAP_READ_BIT);
            if (!mapped)
                throw ksp::CommonError(QStringLiteral("the driver gives captured geometry not back"));
            const Unmap unmap{*m_gl};
            use(static_cast<const glm::vec4*>(mapped), some);
        }
    }

private:
    struct Unmap
    {
        OpenGLFunctions& gl;
        ~Unmap() { gl.glUnmapBuffer(GL_COPY_READ_BUFFER); }
    };

    /// Binds the buffer.
    void requireVertices(std::size_t buffer, std::uint64_t count) const
    {
        if (countVertices(buffer) < count)
            throw ksp::CommonError(
                QStringLiteral("the driver has no memory to capture %1 vertices").arg(count));
    }

    std::array<GLuint, 3> m_names = {0, 0, 0};
    OpenGLFunctions* m_gl = nullptr;
};

} // namespace

SceneExporter::SceneExporter(Scene3d& scene)
    : m_scene(scene)
{
    const CurrentContextGuard callers;
    std::vector<std::pair<LONGID, Graphics3dItem*>> items(scene.getItems().begin(), scene.getItems().end());
    std::sort(items.begin(), items.end());
    for (const auto& entry : items) {
        addPart(*entry.second);
        for (Drawable3dItem* child : entry.second->getDrawableChildren())
            if (child) addPart(*child);
    }
    if (!scene.isFenced()) return;
    for (Part& part : m_parts)
        countWhatIsLeft(part);
    const auto isEmpty = [](const Part& part) { return part.counts.vertices() == 0; };
    m_parts.erase(std::remove_if(m_parts.begin(), m_parts.end(), isEmpty), m_parts.end());
}

// What a fence limits is captured into buffers that are just as large as what it leaves.
void SceneExporter::countWhatIsLeft(Part& part) const
{
    const CapturedGeometry geometry(m_scene, *part.item);
    part.counts.points = geometry.countVertices(0);
    part.counts.lines = geometry.countVertices(1) / 2;
    part.counts.triangles = geometry.countVertices(2) / 3;
}

void SceneExporter::addPart(Drawable3dItem& item)
{
    if (!item.isVisible()) return;
    const Drawable3dPrimitive::GeometryInfo info = item.getGeometryInfo();
    const PlyWriter::Counts counts = {info.pointCount, info.lineCount, info.triangleCount};
    if (counts.vertices() != 0) m_parts.push_back({&item, counts});
}

PlyWriter::Counts SceneExporter::counts() const
{
    PlyWriter::Counts sum;
    for (const Part& part : m_parts) {
        sum.points += part.counts.points;
        sum.lines += part.counts.lines;
        sum.triangles += part.counts.triangles;
    }
    return sum;
}

std::vector<PlyWriter::Counts> SceneExporter::partCounts() const
{
    std::vector<PlyWriter::Counts> counts;
    for (const Part& part : m_parts)
        counts.push_back(part.counts);
    return counts;
}

void SceneExporter::write(QIODevice& device, PlyWriter::Format format, ksp::StagedProgress progress)
{
    const CurrentContextGuard callers;
    const auto total = static_cast<double>(counts().vertices());
    std::uint64_t written = 0;
    PlyWriter writer(device, format, partCounts());
    ksp::StagedProgress vertices = progress.startStage(80.0);
    for (const Part& part : m_parts) {
        progress.throwIfCanceled();
        writeVertices(part, writer, [&](std::uint64_t count) {
            written += count;
            vertices.setDone(static_cast<double>(written), total);
            vertices.throwIfCanceled();
        });
    }
    vertices.close();
    writer.finish(progress.startStage(100.0));
}

void SceneExporter::writeVertices(const Part& part, PlyWriter& writer,
                                  const std::function<void(std::uint64_t)>& done)
{
    const CapturedGeometry geometry(m_scene, *part.item);
    const glm::dmat4 toModel = m_scene.sceneToModelTransform();
    const auto write = [&](const glm::vec4* vertices, std::uint64_t count) {
        for (std::uint64_t i = 0; i < count; ++i)
            writer.addVertex(glm::dvec3(toModel * glm::dvec4(vertices[i])));
        done(count);
    };
    geometry.read(0, part.counts.points, write);
    geometry.read(1, 2 * part.counts.lines, write);
    geometry.read(2, 3 * part.counts.triangles, write);
}
