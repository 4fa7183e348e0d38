#include <viewer/cli/Commands.h>

#include <viewer/ElevationDrawers.h>
#include <viewer/ElevationLegend.h>
#include <viewer/FileOpener.h>
#include <viewer/Host.h>
#include <viewer/InputFiles.h>
#include <viewer/OutputFile.h>
#include <viewer/PictureFile.h>
#include <viewer/PictureWriter.h>
#include <viewer/WorldFile.h>
#include <viewer/cli/CameraList.h>
#include <viewer/cli/FenceOption.h>
#include <viewer/cli/ProgressBar.h>
#include <viewer/cli/requireDistinct.h>
#include <viewer/elements/LabelDrawer.h>
#include <viewer/printable.h>

#include <Viewer3dModule/host/Fence3dDisplay.h>
#include <Viewer3dModule/host/Fence3dItem.h>
#include <Viewer3dModule/host/View3dSettings.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/ksp/CommonError.h>
#include <framework/model/CProject.h>

#include <QtCore/QFileInfo>

namespace {

constexpr double shareOfReading = 30.0; // percent of the work

/// The files that a camera's picture becomes.
QStringList filesOf(const CameraList::Entry& entry)
{
    QStringList files(entry.output);
    if (entry.camera.gsd) files.append(WorldFile::pathFor(entry.output));
    return files;
}

std::vector<CameraList::Entry> readEntries(const RenderOptions& options)
{
    if (options.cameras.isEmpty()) return {{options.camera, options.output, {}}};
    return CameraList::read(options.cameras, options.output, PictureWriter::extensions());
}

/// Colours by height as they are asked for: those of a file are read at once, so that a bad one keeps nobody
/// waiting.
class Elevation
{
public:
    explicit Elevation(const ElevationOptions& options)
        : m_options(options)
    {
        if (!options.file.isEmpty()) m_colors = ElevationColors::read(options.file, options.isDiscrete);
    }
    /// Before there are elements.
    void prepare(Scene3d& scene)
    {
        if (m_options.isAsked) m_drawers.emplace(scene);
    }
    /// visible: the box of what there is to see, scene coordinates.
    void colour(const Scene3d& scene, const gmx::BoundingBox& visible)
    {
        if (!m_drawers) return;
        if (!m_colors)
            m_colors = ElevationColors::over(scene.mapToModel(visible.getMin()).z,
                                             scene.mapToModel(visible.getMax()).z, m_options.isDiscrete);
        m_drawers->setColors(*m_colors);
    }
    /// What belongs over a picture of this size.
    PicturePainter::Overlay legend(const QSize& size) const
    {
        if (!m_colors || !m_options.hasLegend) return {};
        return [legend = ElevationLegend(*m_colors, size)](QImage& tile, const QPoint& place) {
            legend.drawOn(tile, place);
        };
    }

private:
    ElevationOptions m_options;
    std::optional<ElevationColors> m_colors;
    std::optional<ElevationDrawers> m_drawers;
};

/// Draws pictures of one scene, one after the other.
class Drawing
{
public:
    /// None is owned.
    Drawing(Scene3d& scene, const RenderOptions& options, const InputFiles& inputs, Elevation& elevation,
            ProgressBar& bar)
        : m_scene(scene)
        , m_renderer(scene)
        , m_visible(m_renderer.visibleBounds())
        , m_background(options.background.isValid() ? options.background
                                                    : View3dSettings::getInstance()->getBackgroundColor())
        , m_inputs(inputs)
        , m_elevation(elevation)
        , m_bar(bar)
    {
        m_renderer.setEyeDomeShading(options.eyeDome);
        m_elevation.colour(scene, m_visible);
    }

    /// What the cameras see. Throws when it cannot be drawn.
    CameraOptions::View see(const CameraList::Entry& entry) const
    {
        const CameraOptions::View view = entry.camera.see(m_scene, m_visible);
        const QString refused = TileGrid::refuse(view.size);
        if (!refused.isEmpty())
            throw ksp::CommonError(QStringLiteral("%1: not drawn: %2 x %3 pixels: %4")
                                       .arg(shownName(entry.output))
                                       .arg(view.size.width())
                                       .arg(view.size.height())
                                       .arg(refused));
        return view;
    }

    void write(const CameraList::Entry& entry, ksp::StagedProgress progress)
    {
        const CameraOptions::View view = see(entry);
        OutputFile picture(entry.output);
        std::optional<OutputFile> world;
        if (view.ortho) {
            const QByteArray lines = WorldFile::content(view.ortho->pixel, view.ortho->left, view.ortho->top);
            world.emplace(WorldFile::pathFor(entry.output));
            world->write(lines.constData(), lines.size());
        }
        PicturePainter painter(m_renderer, view.viewpoint, view.size, m_background);
        painter.setOverlay(m_elevation.legend(view.size));
        const auto draw = [this](const std::function<QImage()>& tile) { return m_bar.runSilent(tile); };
        const auto report = [&](double done) {
            progress.setPercentage(100.0 * done);
            m_bar.throwIfInterrupted();
        };
        PictureFile::write(picture, painter, {draw, report});
        m_bar.runSilent([&] {
            OutputFile::commit({world ? &*world : nullptr, &picture});
            if (!world) WorldFile::removeOld(entry.output, m_inputs);
        });
    }

private:
    Scene3d& m_scene;
    FrameRenderer m_renderer;
    gmx::BoundingBox m_visible;
    QColor m_background;
    const InputFiles& m_inputs;
    Elevation& m_elevation;
    ProgressBar& m_bar;
};

/// Draws them all, in stages as long as they have pixels.
void writeAll(const std::vector<CameraList::Entry>& entries, Drawing& drawing, ksp::StagedProgress progress)
{
    std::vector<double> pixels;
    double all = 0.0;
    for (const CameraList::Entry& entry : entries) {
        const QSize size = drawing.see(entry).size;
        pixels.push_back(static_cast<double>(size.width()) * size.height());
        all += pixels.back();
    }
    for (std::size_t i = 0; i < entries.size(); ++i)
        drawing.write(entries[i], progress.startStage(100.0 * pixels[i] / all,
                                                      printable(QFileInfo(entries[i].output).fileName())));
}

} // namespace

void commands::render(const RenderOptions& options)
{
    const std::vector<CameraList::Entry> entries = readEntries(options);
    QStringList files;
    for (const CameraList::Entry& entry : entries)
        files += filesOf(entry);
    for (const QString& file : files)
        OutputFile::requireWritable(file);
    requireDistinct(files);
    Elevation elevation(options.elevation);
    const FenceShape fence = FenceOption::load(options.fence);
    ProgressBar bar;
    Host host(Host::Settings::InMemory);
    host.setPointSize(options.pointSize);
    options.reading.applyTo(host);
    const std::unique_ptr<CProject> project = host.createProject();
    const std::unique_ptr<Scene3d> scene = host.createScene(*project);
    elevation.prepare(*scene);
    if (options.labels) LabelDrawer::addTo(*scene, *options.labels);
    FileOpener opener(host, *project, scene.get());
    ksp::StagedProgress progress = bar.progress();
    opener.open(options.files, progress.startStage(shareOfReading));
    FenceOption::apply(fence, *project);
    std::optional<Fence3dDisplay> outline;
    if (options.previewsFence) {
        fenceElement(*project).setInteractionMode(true);
        outline.emplace(*scene);
    }
    QStringList read = options.files + opener.getMeshFiles();
    for (const QString& file : {options.cameras, options.elevation.file, options.fence})
        if (!file.isEmpty()) read.append(file);
    const InputFiles inputs(read);
    for (const QString& file : files)
        OutputFile::requireNoInput(file, inputs);

    scene->flushBounds();
    Drawing drawing(*scene, options, inputs, elevation, bar);
    writeAll(entries, drawing, progress.startStage(100.0));
}
