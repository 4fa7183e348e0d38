#include <viewer/cli/Commands.h>

#include <viewer/DepthPreview.h>
#include <viewer/DepthRenderer.h>
#include <viewer/DepthWriter.h>
#include <viewer/FileOpener.h>
#include <viewer/FrameRenderer.h>
#include <viewer/Host.h>
#include <viewer/InputFiles.h>
#include <viewer/OutputFile.h>
#include <viewer/WorldFile.h>
#include <viewer/cli/FenceOption.h>
#include <viewer/cli/ProgressBar.h>
#include <viewer/cli/requireDistinct.h>
#include <viewer/printable.h>

#include <Viewer3dModule/host/View3dSettings.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/ksp/CommonError.h>
#include <framework/model/CProject.h>

#include <QtCore/QFileInfo>
#include <QtGui/QImageWriter>

#include <cmath>
#include <functional>
#include <limits>
#include <optional>

namespace {

constexpr double shareOfReading = 30.0; // percent of the work

double pixelCount(const QSize& size)
{
    return static_cast<double>(size.width()) * size.height();
}

CameraOptions::View see(const DepthOptions::Map& map, const Scene3d& scene, const gmx::BoundingBox& visible)
{
    CameraOptions::View view = map.camera.see(scene, visible);
    const QString refused = TileGrid::refuse(view.size);
    if (!refused.isEmpty())
        throw ksp::CommonError(QStringLiteral("%1: not drawn: %2 x %3 pixels: %4")
                                   .arg(shownName(map.output))
                                   .arg(view.size.width())
                                   .arg(view.size.height())
                                   .arg(refused));
    return view;
}

DepthCamera makeCamera(const CameraOptions::View& view, const Scene3d& scene, const gmx::BoundingBox& visible)
{
    const glm::dmat4 toModel = scene.sceneToModelTransform();
    const double smallestNear =
        View3dSettings::getInstance()->getNearPlaneDist() * glm::length(glm::dvec3(toModel[0]));
    return DepthCamera(view.viewpoint.transformed(toModel), view.size, visible.transformed(toModel),
                       smallestNear);
}

/// The files of one map: all are written before the first gets its name.
class DepthOutputs
{
public:
    DepthOutputs(const DepthOptions::Map& map, const QSize& size)
        : m_map(map.output)
        , m_writer(DepthWriter::create(m_map, size))
    {
        if (!map.preview.isEmpty()) {
            m_previewFile.emplace(map.preview);
            m_preview.emplace(size);
        }
        if (!map.cameraFile.isEmpty()) m_cameraFile.emplace(map.cameraFile);
        if (!map.worldFile().isEmpty()) m_worldFile.emplace(map.worldFile());
    }
    /// The next rows, from the top.
    void write(const std::vector<float>& band, int rowCount)
    {
        m_writer->write(band.data(), rowCount);
        if (m_preview) m_preview->add(band.data(), rowCount);
    }
    /// All rows have been written; what is left.
    void write(const DepthCamera& camera, const std::optional<OrthoFrame>& ortho)
    {
        m_writer->finish();
        if (m_preview) {
            QImageWriter png(&m_previewFile->device(), "png");
            if (!png.write(m_preview->image())) m_previewFile->fail(png.errorString());
        }
        if (m_cameraFile) writeText(*m_cameraFile, camera.toJson());
        if (m_worldFile && ortho)
            writeText(*m_worldFile, WorldFile::content(ortho->pixel, ortho->left, ortho->top));
    }
    void commit(const InputFiles& inputs)
    {
        const auto given = [](std::optional<OutputFile>& file) { return file ? &*file : nullptr; };
        OutputFile::commit({&m_map, given(m_previewFile), given(m_cameraFile), given(m_worldFile)});
        if (!m_worldFile) WorldFile::removeOld(m_map.path(), inputs);
        if (m_previewFile) WorldFile::removeOld(m_previewFile->path(), inputs);
    }

private:
    static void writeText(OutputFile& file, const QByteArray& text)
    {
        file.write(text.constData(), text.size());
    }

    OutputFile m_map;
    std::unique_ptr<DepthWriter> m_writer;
    std::optional<OutputFile> m_previewFile;
    std::optional<DepthPreview> m_preview;
    std::optional<OutputFile> m_cameraFile;
    std::optional<OutputFile> m_worldFile;
};

/// Draws all of a map, band by band.
class Pass
{
public:
    using TakeBand = std::function<void(const std::vector<float>& band, int rowCount)>;

    /// None is owned.
    Pass(DepthRenderer& renderer, ProgressBar& bar)
        : m_renderer(renderer)
        , m_bar(bar)
    {
    }
    void run(const TakeBand& take, ksp::StagedProgress progress)
    {
        const TileGrid& grid = m_renderer.grid();
        int done = 0;
        for (int i = 0; i < grid.bandCount(); ++i) {
            const QRect rows = grid.bandRows(i);
            m_band.resize(static_cast<std::size_t>(rows.width()) * static_cast<std::size_t>(rows.height()));
            for (const Tile& tile : grid.tiles(i)) {
                m_bar.runSilent([&] { m_renderer.draw(tile, m_band.data()); });
                progress.setDone(++done, grid.tileCount());
            }
            m_bar.runSilent([&] { take(m_band, rows.height()); });
        }
    }

private:
    DepthRenderer& m_renderer;
    ProgressBar& m_bar;
    std::vector<float> m_band;
};

/// Draws the map of the renderer's camera.
void write(DepthRenderer& renderer, const DepthOptions::Map& map, const CameraOptions::View& view,
           const InputFiles& inputs, ProgressBar& bar, ksp::StagedProgress progress)
{
    Pass pass(renderer, bar);
    if (renderer.wantsNearest()) {
        float nearest = std::numeric_limits<float>::infinity();
        pass.run(
            [&nearest](const std::vector<float>& band, int) {
                for (const float distance : band)
                    nearest = std::fmin(nearest, distance); // which passes NaN over
            },
            progress.startStage(50.0));
        if (std::isfinite(nearest)) renderer.setNearest(nearest);
    }
    DepthOutputs outputs(map, view.size);
    pass.run([&outputs](const std::vector<float>& band, int rowCount) { outputs.write(band, rowCount); },
             progress.startStage(100.0));
    bar.runSilent([&] {
        outputs.write(renderer.camera(), view.ortho);
        outputs.commit(inputs);
    });
}

/// Draws them all, in stages as long as they have pixels.
void writeAll(const std::vector<DepthOptions::Map>& maps, Scene3d& scene, const InputFiles& inputs,
              ProgressBar& bar, ksp::StagedProgress progress)
{
    const gmx::BoundingBox visible = FrameRenderer(scene).visibleBounds();
    std::vector<CameraOptions::View> views;
    double pixels = 0.0;
    for (const DepthOptions::Map& map : maps) {
        views.push_back(see(map, scene, visible));
        pixels += pixelCount(views.back().size);
    }
    DepthRenderer renderer(scene, makeCamera(views.front(), scene, visible));
    for (std::size_t i = 0; i < maps.size(); ++i) {
        renderer.setCamera(makeCamera(views[i], scene, visible));
        write(renderer, maps[i], views[i], inputs, bar,
              progress.startStage(100.0 * pixelCount(views[i].size) / pixels,
                                  printable(QFileInfo(maps[i].output).fileName())));
    }
}

} // namespace

void commands::depth(const DepthOptions& options)
{
    const std::vector<DepthOptions::Map> maps = options.maps();
    QStringList names;
    for (const DepthOptions::Map& map : maps)
        names += map.outputs();
    for (const QString& name : names)
        OutputFile::requireWritable(name);
    requireDistinct(names);
    const FenceShape fence = FenceOption::load(options.fence);
    ProgressBar bar;
    Host host(Host::Settings::InMemory);
    host.setPointSize(options.pointSize);
    options.reading.applyTo(host);
    const std::unique_ptr<CProject> project = host.createProject();
    const std::unique_ptr<Scene3d> scene = host.createScene(*project);
    FileOpener opener(host, *project, scene.get());
    ksp::StagedProgress progress = bar.progress();
    opener.open(options.files, progress.startStage(shareOfReading));
    FenceOption::apply(fence, *project);
    QStringList read = options.files + opener.getMeshFiles();
    for (const QString& file : {options.cameras, options.fence})
        if (!file.isEmpty()) read.append(file);
    const InputFiles inputs(read);
    for (const QString& name : names)
        OutputFile::requireNoInput(name, inputs);

    scene->flushBounds();
    writeAll(maps, *scene, inputs, bar, progress.startStage(100.0));
}
