#include <viewer/cli/Commands.h>

#include <viewer/FileOpener.h>
#include <viewer/Host.h>
#include <viewer/InputFiles.h>
#include <viewer/OutputFile.h>
#include <viewer/PictureFile.h>
#include <viewer/WorldFile.h>
#include <viewer/cli/CameraList.h>
#include <viewer/cli/ProgressBar.h>
#include <viewer/printable.h>

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
    return CameraList::read(options.cameras, options.output);
}

/// Draws pictures of one scene, one after the other.
class Drawing
{
public:
    Drawing(Scene3d& scene, const QColor& background, ProgressBar& bar)
        : m_scene(scene)
        , m_renderer(scene)
        , m_visible(m_renderer.visibleBounds())
        , m_background(background)
        , m_bar(bar)
    {
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
        const auto draw = [this](const std::function<QImage()>& tile) { return m_bar.runSilent(tile); };
        const auto report = [&](double done) {
            progress.setPercentage(100.0 * done);
            m_bar.throwIfInterrupted();
        };
        PictureFile::write(picture, painter, {draw, report});
        m_bar.runSilent([&] {
            if (world) world->commit();
            picture.commit();
        });
    }

private:
    Scene3d& m_scene;
    FrameRenderer m_renderer;
    gmx::BoundingBox m_visible;
    QColor m_background;
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
    for (const CameraList::Entry& entry : entries)
        for (const QString& file : filesOf(entry))
            OutputFile::requireWritable(file);
    ProgressBar bar;
    Host host(Host::Settings::InMemory);
    host.setPointSize(options.pointSize);
    const std::unique_ptr<CProject> project = host.createProject();
    const std::unique_ptr<Scene3d> scene = host.createScene(*project);
    FileOpener opener(host, *project, scene.get());
    ksp::StagedProgress progress = bar.progress();
    opener.open(options.files, progress.startStage(shareOfReading));
    QStringList read = options.files + opener.getMeshFiles();
    if (!options.cameras.isEmpty()) read.append(options.cameras);
    const InputFiles inputs(read);
    for (const CameraList::Entry& entry : entries)
        for (const QString& file : filesOf(entry))
            OutputFile::requireNoInput(file, inputs);

    scene->flushBounds();
    const QColor background = options.background.isValid()
                                  ? options.background
                                  : View3dSettings::getInstance()->getBackgroundColor();
    Drawing drawing(*scene, background, bar);
    writeAll(entries, drawing, progress.startStage(100.0));
}
