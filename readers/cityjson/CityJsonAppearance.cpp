#include <readers/cityjson/CityJsonAppearance.h>

#include <framework/ksp/Log.h>
#include <readers/common/JsonHandler.h>
#include <readers/common/JsonReader.h>
#include <readers/common/MeshAssembler.h>
#include <readers/common/reading.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace readers {

namespace {

// Of "none", beyond the borders is nothing, as with a border that nobody sees; a texture that says nothing,
// or what nobody knows, repeats.
CityGeometry::Look::Wrapping wrappingOf(const std::string& mode)
{
    using Look = CityGeometry::Look;
    if (mode == "mirror") return Look::Mirror;
    if (mode == "clamp") return Look::Clamp;
    return mode == "border" || mode == "none" ? Look::Border : Look::Repeat;
}

// Counts what stands within each other: root, list of materials or textures, one of them, its colour.
class AppearanceHandler : public JsonHandler
{
public:
    AppearanceHandler(CityJsonTables& tables, MemoryBudget& budget)
        : m_tables(tables)
        , m_budget(budget)
    {
    }

    void onNull() override {}
    void onBoolean(bool) override {}
    void onInteger(std::int64_t value) override { onNumber(static_cast<double>(value)); }
    void onNumber(double value) override
    {
        const bool isMaterial = m_list == "materials";
        if (isMaterial && m_depth == 3 && m_key == "transparency") m_opacity = 1.0 - value;
        if (m_depth != 4 || m_key != (isMaterial ? "diffuseColor" : "borderColor")) return;
        if (m_channel < (isMaterial ? 3 : 4)) m_color[m_channel++] = value;
    }
    void onString(std::string& text) override
    {
        if (m_depth == 1 && m_root == "default-theme-material") m_tables.materialTheme = text;
        if (m_depth == 1 && m_root == "default-theme-texture") m_tables.textureTheme = text;
        if (m_depth != 3 || m_list != "textures") return;
        if (m_key == "wrapMode") m_tables.textures.back().wrapping = wrappingOf(text);
        if (m_key != "image") return;
        m_budget.charge(MemoryBudget::ofText(text.size()));
        m_tables.textures.back().image = QString::fromStdString(text);
    }
    void onObject() override { begin(); }
    void onArray() override { begin(); }
    void onKey(std::string& name) override
    {
        if (m_depth == 1) m_root = name;
        if (m_depth == 3) m_key = name;
    }
    void onObjectEnd() override { end(); }
    void onArrayEnd() override { end(); }

private:
    void begin()
    {
        ++m_depth;
        if (m_depth == 2) m_list = m_root;
        if (m_depth == 4) m_channel = 0;
        if (m_depth != 3) return;
        m_key.clear();
        m_channel = 0;
        m_opacity = 1.0;
        if (m_list != "materials" && m_list != "textures") return;
        m_budget.charge(4 * sizeof(QColor));
        if (m_list == "textures") m_tables.textures.emplace_back();
    }
    void end()
    {
        if (m_depth == 3 && m_list == "materials") m_tables.materials.push_back(color());
        if (m_depth == 4 && m_list == "textures" && m_key == "borderColor" && m_channel >= 3)
            m_tables.textures.back().border =
                toQColor(m_color[0], m_color[1], m_color[2], m_channel == 4 ? m_color[3] : 1.0);
        --m_depth;
    }
    QColor color() const
    {
        if (m_channel == 3) return toQColor(m_color[0], m_color[1], m_color[2], m_opacity);
        return m_opacity < 1.0 ? toQColor(0.8, 0.8, 0.8, m_opacity) : QColor();
    }

    CityJsonTables& m_tables;
    MemoryBudget& m_budget;
    int m_depth = 0;
    std::string m_root; // the member under way of the root, its list, and the member of one in that
    std::string m_list;
    std::string m_key;
    double m_color[4] = {};
    int m_channel = 0;
    double m_opacity = 1.0;
};

} // namespace

void readAppearance(const QByteArray& text, CityJsonTables& tables, MemoryBudget& budget)
{
    AppearanceHandler handler(tables, budget);
    JsonReader(text, ksp::StagedProgress::dummy()).read(handler);
}

void findPictures(const QString& path, std::vector<CityJsonTexture>& textures)
{
    constexpr int mostWarnings = 10;
    const QDir folder = QFileInfo(path).absoluteDir();
    int warnings = 0;
    for (CityJsonTexture& texture : textures) {
        QString& name = texture.image;
        const QString given = name;
        const QFileInfo file(folder, QString(name).replace(QLatin1Char('\\'), QLatin1Char('/')));
        name = !name.isEmpty() && file.isFile() ? file.absoluteFilePath() : QString();
        if (name.isEmpty() && ++warnings <= mostWarnings)
            ksp::Log::warning(QStringLiteral("%1: the texture %2 is missing, plain colours are used")
                                  .arg(path, inQuotes(given.toUtf8().constData())));
    }
    if (warnings > mostWarnings)
        ksp::Log::warning(
            QStringLiteral("%1: %2 more textures are missing").arg(path).arg(warnings - mostWarnings));
}

} // namespace readers
