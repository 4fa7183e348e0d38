#include <readers/cityjson/CityJsonPlugin.h>

#include <readers/cityjson/readCityJson.h>

#include <QtCore/QFileInfo>

bool CityJsonPlugin::extendApplication(Application*, const std::vector<int>&)
{
    return true;
}

QStringList CityJsonPlugin::getExtensions() const
{
    return {QStringLiteral("json"), QStringLiteral("jsonl")};
}

bool CityJsonPlugin::recognizes(const QString& path) const
{
    const QString suffix = QFileInfo(path).completeSuffix().toLower();
    return suffix.endsWith(QLatin1String("jsonl")) || suffix.endsWith(QLatin1String("city.json")) ||
           readers::isCityJson(path);
}

void CityJsonPlugin::setOption(const QString& name, const QVariant& value)
{
    if (name != QLatin1String("lod")) return;
    m_lod.reset();
    if (value.isValid()) m_lod = value.toDouble();
}

std::vector<std::unique_ptr<CModelElement>> CityJsonPlugin::read(const QString& path,
                                                                 ksp::StagedProgress progress)
{
    std::vector<std::unique_ptr<CModelElement>> elements;
    for (auto& object : readers::readCityJson(path, m_lod, std::move(progress)))
        elements.push_back(std::move(object));
    return elements;
}
