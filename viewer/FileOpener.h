#pragma once

#include <Viewer3dModule/drawables/IDrawableNode3d.h>
#include <framework/ksp/LONGID.h>
#include <framework/ksp/StagedProgress.h>
#include <framework/model/CModelElement.h>

#include <QtCore/QStringList>

#include <map>
#include <memory>
#include <vector>

class CProject;
class Host;
class Scene3d;

/// Brings files into a project: files of geometry as mesh elements, what model readers read as their
/// elements, and project files. Errors are ksp::CommonError, whose text begins with the file's name.
class FileOpener
{
public:
    using Elements = std::vector<std::unique_ptr<CModelElement>>;

    /// None is owned; the scene may be null. With a scene its context is made current where needed.
    FileOpener(Host& host, CProject& project, Scene3d* scene);

    /// Whether the file is a project of the viewer, by its extension.
    static bool isProject(const QString& path);

    /// Opens files, and folders that are a model (see ModelFolder): all, or none when one of them fails or
    /// the progress is cancelled (ksp::Canceled). At most one of them is a project, which replaces what is
    /// open.
    void open(const QStringList& asked, ksp::StagedProgress progress);
    /// Saves the project; mesh elements keep where their files lie, as seen from the project's folder too.
    /// Throws ksp::CommonError, among others when the project would replace one of those files.
    void save(const QString& path, ksp::StagedProgress progress);

    /// Reads a file that is no project into elements of no model.
    Elements read(const QString& path, ksp::StagedProgress progress) const;
    /// Adds elements to the model, one batch a type, the scene's items updated once.
    void add(Elements elements, ksp::StagedProgress progress);
    /// Replaces what is open by a project's content and reads the files of its mesh elements. A file that is
    /// missing or does not fit any more leaves its elements without geometry; returns one line for each such
    /// file. Throws when the project itself cannot be opened or the progress is cancelled, and then nothing
    /// has changed: all files are read before anything is replaced.
    QStringList openProject(const QString& path, ksp::StagedProgress progress);

    /// The files that the project's mesh elements and orthophotos come from and the pictures of its city
    /// objects, each once.
    QStringList getMeshFiles() const;

private:
    Elements readNodes(const QString& path, ksp::StagedProgress progress) const;
    /// What the mesh elements of a project draw, by their identifiers, and what is wrong with their files.
    struct ProjectMeshes
    {
        std::map<LONGID, std::unique_ptr<IDrawableNode3d>> nodes;
        QStringList problems;
    };
    ProjectMeshes readProjectMeshes(const QString& path, ksp::StagedProgress progress) const;
    void replaceProject(const QString& path, ProjectMeshes meshes, ksp::StagedProgress progress);

    Host& m_host;
    CProject& m_project;
    Scene3d* m_scene;
};
