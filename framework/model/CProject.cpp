#include <framework/model/CProject.h>

#include <framework/ksp/CFileException.h>
#include <framework/ksp/Canceled.h>
#include <framework/ksp/Log.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProjectModel.h>
#include <framework/model/ProjectFile.h>

#include <new>
#include <unordered_map>

struct CProject::Private
{
    struct Settings
    {
        std::unique_ptr<ModelElementCreator> creator;
        int flags;
        std::unique_ptr<CModelElement> element;

        bool isStored() const { return (flags & StoredSettings) != 0; }
    };

    std::vector<int> settingsOrder;
    std::unordered_map<int, Settings> settings;
    ProjectFile::UnknownSettings unknownSettings;
    ProjectFile::UnknownElements unknownElements;
};

namespace {

// Loads settings that waited for somebody to know their type; the log tells when they cannot be read.
bool loadSettings(CModelElement& element, const QByteArray& bytes)
{
    try {
        ProjectFile::loadElement(element, bytes);
        return true;
    } catch (const ksp::CommonError& error) {
        ksp::Log::error(QString("The stored project settings of type 0x%1 are replaced by new ones: %2")
                            .arg(static_cast<unsigned>(element.getType()), 0, 16)
                            .arg(error.text()));
        return false;
    }
}

// Runs work on a file; every error comes out as a CFileException that names the file.
template <typename Work>
auto withFileName(const QString& path, Work work)
{
    const auto text = [&path](const QString& reason) { return path + ": " + reason; };
    try {
        return work();
    } catch (const ksp::Canceled&) {
        throw;
    } catch (const ksp::CFileException& error) {
        throw ksp::CFileException(error.code(), text(error.text()));
    } catch (const ksp::CommonError& error) {
        throw ksp::CFileException(ksp::CFileException::Generic, text(error.text()));
    } catch (const std::bad_alloc&) {
        throw ksp::CFileException(ksp::CFileException::Limit, text("there is not enough memory"));
    } catch (const std::exception& error) {
        throw ksp::CFileException(ksp::CFileException::Generic, text(QString::fromUtf8(error.what())));
    }
}

} // namespace

CProject::CProject(QObject* parent)
    : QObject(parent)
    , m_model(std::make_unique<CProjectModel>(this))
    , m_private(std::make_unique<Private>())
{
}

CProject::~CProject()
{
    m_model->clear(); // while everything is still there for those who are told
    m_model.reset();
}

void CProject::addProjectSettings(ModelElementCreator* creator, int flags)
{
    std::unique_ptr<ModelElementCreator> owned(creator);
    if (!creator || m_private->settings.count(creator->getType()) > 0) return;
    const int type = creator->getType();
    std::unique_ptr<CModelElement> element = creator->create();
    if (!element) return;
    const auto stored = m_private->unknownSettings.find(type);
    if ((flags & StoredSettings) != 0 && stored != m_private->unknownSettings.end()) {
        if (!loadSettings(*element, stored->second)) element = creator->create();
        m_private->unknownSettings.erase(stored);
    }
    m_private->settings[type] = {std::move(owned), flags, std::move(element)};
    m_private->settingsOrder.push_back(type);
}

CModelElement* CProject::getProjectSettings(int type) const
{
    const auto found = m_private->settings.find(type);
    return found == m_private->settings.end() ? nullptr : found->second.element.get();
}

int CProject::getProjectSettingsFlags(int type) const
{
    const auto found = m_private->settings.find(type);
    return found == m_private->settings.end() ? 0 : found->second.flags;
}

std::vector<CModelElement*> CProject::getAllProjectSettings() const
{
    std::vector<CModelElement*> all;
    for (int type : m_private->settingsOrder)
        all.push_back(getProjectSettings(type));
    return all;
}

void CProject::save(const QString& path, ksp::StagedProgress progress)
{
    ProjectFile::Source source;
    source.nextId = m_model->getNextId();
    for (int type : m_private->settingsOrder) {
        const Private::Settings& settings = m_private->settings.at(type);
        if (settings.isStored()) source.settings.push_back(settings.element.get());
    }
    for (const CModelElementManager* manager : m_model->getItemManagers()) {
        if (manager->getItemsCount() > 0) source.elements.emplace(manager->getType(), manager->getItems());
    }
    const QByteArray bytes = withFileName(path, [&] {
        return ProjectFile::store(source, m_private->unknownSettings, m_private->unknownElements,
                                  progress.startStage(90.0));
    });
    progress.throwIfCanceled();
    CQtArchive::writeFile(path, bytes);
    m_path = path;
    progress.setPercentage(100.0);
}

void CProject::open(const QString& path, ksp::StagedProgress progress)
{
    progress.throwIfCanceled();
    const QByteArray bytes = CQtArchive::readFile(path);
    const auto makeSettings = [this](int type) {
        const auto known = m_private->settings.find(type);
        const bool wanted = known != m_private->settings.end() && known->second.isStored();
        return wanted ? known->second.creator->create() : nullptr;
    };
    const auto makeElement = [this](int type) {
        const ModelElementCreator* creator = m_model->getCreator(type);
        return creator ? creator->create() : nullptr;
    };
    ProjectFile content = withFileName(path, [&] {
        ProjectFile loaded = ProjectFile::load(bytes, makeSettings, makeElement, progress.startStage(60.0));
        for (const auto& [type, known] : m_private->settings) {
            if (loaded.settings.count(type) == 0) loaded.settings.emplace(type, known.creator->create());
        }
        return loaded;
    });
    progress.throwIfCanceled();
    replaceContent(std::move(content), progress);
    m_path = path;
    progress.setPercentage(100.0);
}

void CProject::clear()
{
    ProjectFile fresh;
    for (const auto& [type, known] : m_private->settings)
        fresh.settings.emplace(type, known.creator->create());
    replaceContent(std::move(fresh), ksp::StagedProgress::dummy());
    m_path.clear();
}

// From here on nothing fails. The identifiers of the file, those of unknown elements among them, are out of
// reach first: those who are told that the old elements go may add elements of their own.
void CProject::replaceContent(ProjectFile content, ksp::StagedProgress progress)
{
    m_model->skipIdsBelow(content.nextId);
    m_model->clear();
    m_private->unknownElements = std::move(content.unknownElements);
    m_private->unknownSettings = std::move(content.unknownSettings);

    replaceSettings(content);
    for (auto& [type, elements] : content.elements) {
        ksp::StagedProgress stage = progress.startStage(40.0 / double(content.elements.size()));
        m_model->getCreateItemManager(type)->addItems(std::move(elements), std::move(stage));
    }
}

void CProject::replaceSettings(ProjectFile& content)
{
    std::vector<int> replaced;
    for (auto& [type, element] : content.settings) {
        if (!element) continue;
        std::unique_ptr<CModelElement>& current = m_private->settings.at(type).element;
        current.swap(element);
        replaced.push_back(type);
    }
    content.settings.clear(); // the old ones
    for (int type : replaced)
        Q_EMIT projectSettingsReplaced(type);
}
