#include <viewer/FileOpener.h>

#include <viewer/Host.h>
#include <viewer/InputFiles.h>
#include <viewer/ModelFolder.h>
#include <viewer/SceneGroup.h>
#include <viewer/elements/ElementTypes.h>
#include <viewer/elements/MeshElement.h>
#include <viewer/printable.h>

#include <Viewer3dModule/drawables/DrawableNode3dFactory.h>
#include <framework/app/IModelReader.h>
#include <framework/ksp/Canceled.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>
#include <framework/model/CityObjectElement.h>
#include <framework/model/OrthophotoElement.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace {

QString extensionOf(const QString& path)
{
    return QFileInfo(path).suffix().toLower();
}

/// An error with the file's name in front, once.
ksp::CommonError fileError(const QString& path, QString reason)
{
    while (reason.startsWith(path + QStringLiteral(": ")))
        reason = reason.mid(path.size() + 2);
    return ksp::CommonError(shownName(path) + QStringLiteral(": ") + reason.trimmed());
}

void requireReadable(const QString& path)
{
    const QFileInfo file(path);
    if (!file.exists()) throw fileError(path, QStringLiteral("there is no such file"));
    if (file.isDir() && QFileInfo(QDir(path), QStringLiteral("images.bin")).exists())
        throw fileError(path,
                        QStringLiteral("is a folder with a binary COLMAP model; readable are those that "
                                       "are exported as text"));
    if (file.isDir())
        throw fileError(path,
                        QStringLiteral("is a folder, but not with cameras.txt, images.txt and points3D.txt"));
    if (!file.isReadable()) throw fileError(path, QStringLiteral("may not be read (permission denied)"));
    if (file.isFile() && file.size() == 0) throw fileError(path, QStringLiteral("is empty"));
}

/// Runs the reading of a file; whatever goes wrong comes out as one error that names the file.
template <typename Work>
auto readGuarded(const QString& path, Work work)
{
    try {
        return work();
    } catch (const ksp::Canceled&) {
        throw;
    } catch (const ksp::CommonError& error) {
        throw fileError(path, error.text());
    } catch (const std::bad_alloc&) {
        throw fileError(path, QStringLiteral("there is not enough memory to read it"));
    } catch (const std::exception& error) {
        throw fileError(path, QString::fromUtf8(error.what()));
    }
}

/// The parts of a file of geometry: the parts that it hands out, or itself.
std::vector<std::unique_ptr<IDrawableNode3d>> readParts(const QString& path, ksp::StagedProgress progress)
{
    std::unique_ptr<IDrawableNode3d> node =
        DrawableNode3dFactory::instance().createDrawableNode3d(path, std::move(progress));
    if (!node) throw fileError(path, QStringLiteral("is no file of this format, or holds nothing to draw"));
    std::vector<std::unique_ptr<IDrawableNode3d>> parts = node->takeChildren();
    if (parts.empty()) parts.push_back(std::move(node));
    return parts;
}

template <typename Element>
QString findSource(const Element& element, const QString& projectPath)
{
    const QDir folder = QFileInfo(projectPath).absoluteDir();
    const QString beside = QDir::cleanPath(folder.absoluteFilePath(element.getRelativePath()));
    if (!element.getRelativePath().isEmpty() && QFileInfo::exists(beside)) return beside;
    return element.getPath();
}

template <typename Element, typename Visit>
void forEachOf(CProject& project, int type, Visit visit)
{
    if (const CModelElementManager* manager = project.getModel()->getItemManager(type))
        for (CModelElement* element : manager->getItems())
            visit(static_cast<Element&>(*element));
}

template <typename Visit>
void forEachMesh(CProject& project, Visit visit)
{
    forEachOf<MeshElement>(project, element_types::Mesh, visit);
}

template <typename Visit>
void forEachOrthophoto(CProject& project, Visit visit)
{
    forEachOf<OrthophotoElement>(project, element_types::Orthophoto, visit);
}

/// Reads what the elements draw, parts of the same file all of them. A part that several elements draw is
/// read once for each, since nodes cannot be shared.
void readNodesOf(std::vector<MeshElement*> elements, const QString& path,
                 std::map<LONGID, std::unique_ptr<IDrawableNode3d>>& nodes, ksp::StagedProgress progress)
{
    requireReadable(path);
    bool isComplete = true, isFruitful = true;
    while (!elements.empty() && isFruitful) {
        auto parts = readGuarded(path, [&] {
            progress.throwIfCanceled();
            return readParts(path, progress);
        });
        std::vector<MeshElement*> others;
        isFruitful = false;
        for (MeshElement* element : elements) {
            const auto number = static_cast<std::size_t>(element->getPart());
            if (number >= parts.size()) {
                isComplete = false;
            } else if (parts[number]) {
                nodes[element->getId()] = std::move(parts[number]);
                isFruitful = true;
            } else {
                others.push_back(element);
            }
        }
        elements = std::move(others);
    }
    if (!isComplete || !elements.empty())
        throw fileError(path, QStringLiteral("has fewer parts than when the project was saved"));
}

} // namespace

FileOpener::FileOpener(Host& host, CProject& project, Scene3d* scene)
    : m_host(host)
    , m_project(project)
    , m_scene(scene)
{
}

bool FileOpener::isProject(const QString& path)
{
    return extensionOf(path) == QLatin1String("v3d");
}

void FileOpener::open(const QStringList& asked, ksp::StagedProgress progress)
{
    const QStringList paths = ModelFolder::inputs(asked);
    QString project;
    Elements elements;
    for (const QString& path : paths) {
        requireReadable(path);
        if (isProject(path) && !project.isEmpty())
            throw fileError(path,
                            QStringLiteral("only one project can be open; %1 is one already").arg(project));
        if (isProject(path)) project = path;
    }
    const double share = 90.0 / static_cast<double>(paths.size() + 2);
    for (const QString& path : paths) {
        if (path == project) continue;
        progress.throwIfCanceled();
        Elements read = this->read(path, progress.startStage(share, QFileInfo(path).fileName()));
        std::move(read.begin(), read.end(), std::back_inserter(elements));
    }
    ProjectMeshes meshes;
    if (!project.isEmpty()) {
        meshes = readProjectMeshes(project, progress.startStage(share, QFileInfo(project).fileName()));
        if (!meshes.problems.isEmpty()) throw ksp::CommonError(meshes.problems.first());
    }
    progress.throwIfCanceled();
    const SceneGroup group(m_scene);
    if (!project.isEmpty()) replaceProject(project, std::move(meshes), progress.startStage(share));
    add(std::move(elements), progress.startStage(5.0));
}

FileOpener::Elements FileOpener::read(const QString& path, ksp::StagedProgress progress) const
{
    requireReadable(path);
    const QString extension = extensionOf(path);
    const bool mayHoldNodes = DrawableNode3dFactory::instance().isExtensionSupported(extension);
    return readGuarded(path, [&]() -> Elements {
        IModelReader* reader = m_host.findModelReader(extension, path);
        if (reader && (!mayHoldNodes || reader->recognizes(path)))
            return reader->read(path, std::move(progress));
        if (mayHoldNodes) return readNodes(path, std::move(progress));
        const QString known = m_host.getExtensions().join(QStringLiteral(", "));
        throw ksp::CommonError(QStringLiteral("unknown file format; readable are: ") + known);
    });
}

FileOpener::Elements FileOpener::readNodes(const QString& path, ksp::StagedProgress progress) const
{
    std::vector<std::unique_ptr<IDrawableNode3d>> parts = readParts(path, std::move(progress));
    Elements elements;
    elements.reserve(parts.size());
    const QFileInfo file(path);
    for (std::unique_ptr<IDrawableNode3d>& part : parts) {
        auto element = std::make_unique<MeshElement>();
        const int number = static_cast<int>(elements.size());
        const QString plain = parts.size() == 1
                                  ? file.completeBaseName()
                                  : QStringLiteral("%1 %2").arg(file.completeBaseName()).arg(number + 1);
        element->setName(part->getName().isEmpty() ? plain : part->getName());
        element->setSource(file.absoluteFilePath(), number);
        element->setNode(std::move(part));
        elements.push_back(std::move(element));
    }
    return elements;
}

void FileOpener::add(Elements elements, ksp::StagedProgress progress)
{
    std::map<int, Elements> byType;
    for (std::unique_ptr<CModelElement>& element : elements)
        byType[element->getType()].push_back(std::move(element));
    const SceneGroup group(m_scene);
    for (auto& [type, batch] : byType)
        m_project.getModel()->getCreateItemManager(type)->addItems(std::move(batch),
                                                                   progress.startStage(10.0));
}

QStringList FileOpener::openProject(const QString& path, ksp::StagedProgress progress)
{
    ProjectMeshes meshes = readProjectMeshes(path, progress.startStage(80.0));
    const QStringList problems = meshes.problems;
    replaceProject(path, std::move(meshes), progress.startStage(20.0));
    return problems;
}

// The project is read into one that nobody sees, to learn which files it wants: once what is open has been
// replaced it is too late to be cancelled.
FileOpener::ProjectMeshes FileOpener::readProjectMeshes(const QString& path,
                                                        ksp::StagedProgress progress) const
{
    requireReadable(path);
    const std::unique_ptr<CProject> project = m_host.createProject();
    readGuarded(path, [&] { project->open(path, progress.startStage(20.0)); });
    std::map<QString, std::vector<MeshElement*>> byFile;
    forEachMesh(*project,
                [&](MeshElement& element) { byFile[findSource(element, path)].push_back(&element); });
    ProjectMeshes meshes;
    for (const auto& [file, elements] : byFile) {
        const double share = 80.0 / static_cast<double>(byFile.size());
        try {
            readNodesOf(elements, file, meshes.nodes, progress.startStage(share, QFileInfo(file).fileName()));
        } catch (const ksp::Canceled&) {
            throw;
        } catch (const ksp::CommonError& error) {
            meshes.problems.append(error.text());
        }
    }
    forEachOrthophoto(*project, [&](const OrthophotoElement& element) {
        const QString file = findSource(element, path);
        if (!QFileInfo::exists(file))
            meshes.problems.append(fileError(file, QStringLiteral("there is no such file")).text());
    });
    progress.throwIfCanceled();
    return meshes;
}

void FileOpener::replaceProject(const QString& path, ProjectMeshes meshes, ksp::StagedProgress progress)
{
    const SceneGroup group(m_scene);
    readGuarded(path, [&] { m_project.open(path, std::move(progress)); });
    forEachMesh(m_project, [&](MeshElement& element) {
        element.setSource(findSource(element, path), element.getPart());
        const auto node = meshes.nodes.find(element.getId());
        if (node != meshes.nodes.end()) element.setNode(std::move(node->second));
    });
    forEachOrthophoto(m_project,
                      [&](OrthophotoElement& element) { element.setPath(findSource(element, path)); });
}

void FileOpener::save(const QString& path, ksp::StagedProgress progress)
{
    if (InputFiles(getMeshFiles()).contain(path))
        throw fileError(path, QStringLiteral("cannot be written: it is one of the files that are read"));
    const QDir folder = QFileInfo(path).absoluteDir();
    forEachMesh(m_project, [&](MeshElement& element) {
        element.setRelativePath(folder.relativeFilePath(element.getPath()));
    });
    forEachOrthophoto(m_project, [&](OrthophotoElement& element) {
        element.setRelativePath(folder.relativeFilePath(element.getPath()));
    });
    m_project.save(path, std::move(progress));
}

QStringList FileOpener::getMeshFiles() const
{
    QStringList files;
    forEachMesh(m_project, [&](const MeshElement& element) { files.append(element.getPath()); });
    forEachOrthophoto(m_project, [&](const OrthophotoElement& element) { files.append(element.getPath()); });
    forEachOf<CityObjectElement>(m_project, element_types::CityObject, [&](const CityObjectElement& element) {
        for (const CityGeometry::Look& look : element.getGeometry().looks)
            if (!look.image.isEmpty()) files.append(look.image);
    });
    files.removeDuplicates();
    return files;
}
