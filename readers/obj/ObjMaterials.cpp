#include <readers/obj/ObjMaterials.h>

#include <framework/ksp/Log.h>
#include <readers/common/numbers.h>
#include <readers/common/reading.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#define TINYOBJLOADER_USE_DOUBLE
#include <tiny_obj_loader.h>

#include <sstream>

namespace readers {

namespace {

constexpr qint64 largestLibrary = 64 * 1024 * 1024; // bytes

} // namespace

ObjMaterials::ObjMaterials(const QString& path)
    : m_path(path)
    , m_folder(QFileInfo(path).path())
    , m_textures(path)
{
}

void ObjMaterials::addLibraries(std::string_view text)
{
    text = trimmed(text);
    if (addLibrary(QString::fromUtf8(text.data(), static_cast<int>(text.size())))) return;
    bool found = false;
    for (std::string_view rest = text;;) {
        const std::string_view name = takeToken(rest);
        if (name.empty()) break;
        if (addLibrary(QString::fromUtf8(name.data(), static_cast<int>(name.size())))) found = true;
    }
    if (found || m_hasWarned) return;
    m_hasWarned = true;
    ksp::Log::warning(QStringLiteral("%1: the material library %2 is missing, the default colour is used")
                          .arg(m_path, inQuotes(text)));
}

bool ObjMaterials::addLibrary(const QString& name)
{
    const QFileInfo info(QDir(m_folder), QString(name).replace(QLatin1Char('\\'), QLatin1Char('/')));
    if (name.isEmpty() || !info.isFile() || info.size() > largestLibrary) return false;
    if (!m_libraries.insert(info.filePath()).second) return true;
    QFile file(info.filePath());
    if (!file.open(QIODevice::ReadOnly)) return false;
    std::istringstream stream(file.readAll().toStdString());

    std::map<std::string, int> numbers;
    std::vector<tinyobj::material_t> materials;
    std::string warnings;
    std::string errors;
    tinyobj::LoadMtl(&numbers, &materials, &stream, &warnings, &errors);
    for (const tinyobj::material_t& material : materials) {
        const double* diffuse = material.diffuse;
        Entry entry;
        entry.material.color = toQColor(diffuse[0], diffuse[1], diffuse[2], material.dissolve);
        entry.texture = QString::fromStdString(material.diffuse_texname);
        entry.folder = info.path();
        m_entries.emplace(trimmed(material.name), std::move(entry));
    }
    return true;
}

const Material* ObjMaterials::find(std::string_view name)
{
    const auto found = m_entries.find(trimmed(name));
    if (found == m_entries.end()) return nullptr;
    Entry& entry = found->second;
    if (!entry.texture.isEmpty()) {
        Material& material = entry.material;
        material.image = m_textures.load(entry.texture, {entry.folder, m_folder});
        // the picture is the colour then; files often leave black beside it
        if (!material.image.isNull()) material.color = toQColor(1.0, 1.0, 1.0, material.color.alphaF());
        entry.texture.clear();
    }
    return &entry.material;
}

} // namespace readers
