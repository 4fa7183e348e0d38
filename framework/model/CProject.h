#pragma once

#include <framework/HostFramework_export.h>
#include <framework/ksp/StagedProgress.h>
#include <framework/model/ModelElementCreator.h>

#include <QtCore/QObject>

#include <memory>
#include <vector>

class CModelElement;
class CProjectModel;
class ProjectFile;

/// A project: its model and its settings elements, in one file.
class HOSTFRAMEWORK_EXPORT CProject : public QObject
{
    Q_OBJECT
public:
    /// Flags of settings elements.
    enum SettingsFlags {
        HiddenSettings = 1,   ///< not shown to the user
        VolatileSettings = 2, ///< not stored with the project
        StoredSettings = 4    ///< stored with the project
    };

    explicit CProject(QObject* parent = nullptr);
    ~CProject() override;

    CProjectModel* getModel() const { return m_model.get(); }
    /// The file that the project was opened from or saved to last; empty for a new project.
    const QString& getPath() const { return m_path; }

    /// Adds a settings element made by the creator; the project owns the creator (a plain pointer, because
    /// modules hand it over with `new`) and the element. A type that is there already keeps its element.
    /// Stored settings that were in the opened file before anybody knew their type are read now; when that
    /// fails, the element is a fresh one and the log says so.
    void addProjectSettings(ModelElementCreator* creator, int flags);
    /// The project's first settings element of the type, or null. Does not search: O(1).
    CModelElement* getProjectSettings(int type) const;
    /// The flags that the settings element of the type was added with; 0 when there is none.
    int getProjectSettingsFlags(int type) const;
    std::vector<CModelElement*> getAllProjectSettings() const;

    /// Writes everything to a file, which appears whole or not at all. Throws ksp::CFileException, which
    /// names the file, or ksp::Canceled.
    void save(const QString& path, ksp::StagedProgress progress = ksp::StagedProgress::dummy());
    /// Replaces what the project holds by what the file holds. Elements and settings of types that nobody
    /// here knows are kept as they are and written again by save. Settings that the file does not hold are
    /// fresh ones afterwards. Elements keep the identifiers that they had in the file; each type's come to
    /// its manager in one batch, after the settings. Throws ksp::CFileException, which names the file, or
    /// ksp::Canceled, and then nothing has changed: all is read before anything is replaced. Once replacing
    /// has begun it goes through; cancelling comes too late, and those who are told of it must not throw.
    void open(const QString& path, ksp::StagedProgress progress = ksp::StagedProgress::dummy());
    /// Makes it a new project: no elements, fresh settings elements, no path.
    void clear();

Q_SIGNALS:
    /// A settings element was replaced (by open or clear); pointers to the old one are dead.
    void projectSettingsReplaced(int type);

private:
    struct Private;
    void replaceContent(ProjectFile content, ksp::StagedProgress progress);
    void replaceSettings(ProjectFile& content);

    std::unique_ptr<CProjectModel> m_model;
    std::unique_ptr<Private> m_private;
    QString m_path;
};
