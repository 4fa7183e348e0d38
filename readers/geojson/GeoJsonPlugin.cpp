#include <readers/geojson/GeoJsonPlugin.h>

#include <readers/geojson/readGeoJson.h>

bool GeoJsonPlugin::extendApplication(Application*, const std::vector<int>&)
{
    return true;
}

QStringList GeoJsonPlugin::getExtensions() const
{
    return {QStringLiteral("geojson"), QStringLiteral("json")};
}

std::vector<std::unique_ptr<CModelElement>> GeoJsonPlugin::read(const QString& path,
                                                                ksp::StagedProgress progress)
{
    std::vector<std::unique_ptr<CModelElement>> elements;
    for (auto& feature : readers::readGeoJson(path, std::move(progress)))
        elements.push_back(std::move(feature));
    return elements;
}
