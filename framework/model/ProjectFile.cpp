#include <framework/model/ProjectFile.h>

#include <framework/ksp/CFileException.h>
#include <framework/model/CProjectModel.h>

#include <algorithm>
#include <set>
#include <unordered_set>

namespace {

constexpr std::uint32_t projectMark = 0x4A504D50; // "PMPJ"
// The least that entries take: their numbers and the length of what follows.
constexpr std::size_t smallestSettings = 8;
constexpr std::size_t smallestType = 8;
constexpr std::size_t smallestElement = 12;

[[noreturn]] void failDamaged(const QString& reason)
{
    throw ksp::CFileException(ksp::CFileException::Damaged, reason);
}

template <typename Container>
std::uint32_t countOf(const Container& container)
{
    return static_cast<std::uint32_t>(container.size());
}

void storeEntry(CQtArchive& archive, QByteArray bytes)
{
    archive.value(bytes);
}

void storeSettings(CQtArchive& archive, const ProjectFile::Source& source,
                   const ProjectFile::UnknownSettings& unknown)
{
    archive.writeUInt(countOf(source.settings) + countOf(unknown));
    for (CModelElement* element : source.settings) {
        archive.writeInt(element->getType());
        storeEntry(archive, ProjectFile::storeElement(*element));
    }
    for (const auto& [type, bytes] : unknown) {
        archive.writeInt(type);
        storeEntry(archive, bytes);
    }
}

std::size_t totalOf(const ProjectFile::Source& source)
{
    std::size_t total = 0;
    for (const auto& entry : source.elements)
        total += entry.second.size();
    return total;
}

void storeElements(CQtArchive& archive, const ProjectFile::Source& source,
                   const ProjectFile::UnknownElements& unknown, ksp::StagedProgress& progress)
{
    std::set<int> types;
    for (const auto& entry : source.elements)
        types.insert(entry.first);
    for (const auto& entry : unknown)
        types.insert(entry.first);

    const double total = double(totalOf(source));
    double done = 0.0;
    archive.writeUInt(countOf(types));
    for (int type : types) {
        const auto live = source.elements.find(type);
        const auto kept = unknown.find(type);
        archive.writeInt(type);
        archive.writeUInt((live == source.elements.end() ? 0 : countOf(live->second)) +
                          (kept == unknown.end() ? 0 : countOf(kept->second)));
        if (kept != unknown.end()) {
            for (const ProjectFile::UnknownElement& element : kept->second) {
                archive.writeInt64(element.id);
                storeEntry(archive, element.bytes);
            }
        }
        if (live == source.elements.end()) continue;
        for (CModelElement* element : live->second) {
            progress.throwIfCanceled();
            archive.writeInt64(element->getId());
            storeEntry(archive, ProjectFile::storeElement(*element));
            progress.setDone(++done, total);
        }
    }
}

} // namespace

QByteArray ProjectFile::storeElement(CModelElement& element)
{
    CQtArchive archive;
    element.serialize(archive);
    return archive.data();
}

void ProjectFile::loadElement(CModelElement& element, const QByteArray& bytes)
{
    CQtArchive archive(bytes);
    element.serialize(archive);
}

QByteArray ProjectFile::store(const Source& source, const UnknownSettings& unknownSettings,
                              const UnknownElements& unknownElements, ksp::StagedProgress progress)
{
    CQtArchive archive;
    archive.beginObject();
    archive.writeUInt(projectMark);
    archive.writeInt64(source.nextId);
    storeSettings(archive, source, unknownSettings);
    storeElements(archive, source, unknownElements, progress);
    archive.endObject(1);
    archive.finish();
    return archive.data();
}

ProjectFile ProjectFile::load(const QByteArray& bytes, const Maker& makeSettings, const Maker& makeElement,
                              ksp::StagedProgress progress)
{
    CQtArchive archive(bytes);
    ProjectFile content;
    archive.beginObject();
    if (archive.readUInt() != projectMark) failDamaged("it is not a project");
    content.nextId = archive.readInt64();
    if (content.nextId < 1 || content.nextId > CProjectModel::largestId() + 1)
        failDamaged("the next identifier is out of range");
    content.loadSettings(archive, makeSettings);
    content.loadElements(archive, makeElement, progress);
    archive.endObject(1);
    archive.finish();
    return content;
}

void ProjectFile::loadSettings(CQtArchive& archive, const Maker& makeSettings)
{
    const std::uint32_t count = archive.readCount(smallestSettings);
    for (std::uint32_t i = 0; i < count; ++i) {
        const int type = archive.readInt();
        QByteArray bytes;
        archive.value(bytes);
        if (settings.count(type) > 0 || unknownSettings.count(type) > 0)
            failDamaged(
                QString("settings of type 0x%1 are there twice").arg(static_cast<unsigned>(type), 0, 16));
        if (std::unique_ptr<CModelElement> element = makeSettings(type)) {
            loadElement(*element, bytes);
            settings.emplace(type, std::move(element));
        } else {
            unknownSettings.emplace(type, bytes);
        }
    }
}

void ProjectFile::loadElements(CQtArchive& archive, const Maker& makeElement, ksp::StagedProgress& progress)
{
    std::unordered_set<LONGID> ids;
    const double whole = double(archive.remaining());
    const std::uint32_t types = archive.readCount(smallestType);
    for (std::uint32_t i = 0; i < types; ++i) {
        const int type = archive.readInt();
        const std::uint32_t count = archive.readCount(smallestElement);
        for (std::uint32_t k = 0; k < count; ++k) {
            progress.throwIfCanceled();
            const LONGID id = archive.readInt64();
            if (id < 1 || id > CProjectModel::largestId())
                failDamaged(QString("the identifier %1 is out of range").arg(id));
            if (!ids.insert(id).second) failDamaged(QString("the identifier %1 is there twice").arg(id));
            nextId = std::max(nextId, id + 1);
            QByteArray bytes;
            archive.value(bytes);
            if (std::unique_ptr<CModelElement> element = makeElement(type)) {
                loadElement(*element, bytes);
                element->m_id = id;
                elements[type].push_back(std::move(element));
            } else {
                unknownElements[type].push_back({id, bytes});
            }
            progress.setDone(whole - double(archive.remaining()), whole);
        }
    }
}
