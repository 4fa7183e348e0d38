#include <readers/geojson/readGeoJson.h>

#include <framework/ksp/CommonError.h>
#include <readers/common/reading.h>
#include <readers/geojson/GeoJsonParser.h>

namespace readers {

std::vector<std::unique_ptr<FeatureElement>> readGeoJson(const QString& path, ksp::StagedProgress progress)
{
    constexpr qint64 largest = 512 * 1024 * 1024; // bytes; the features may take several times as much
    std::vector<std::unique_ptr<FeatureElement>> features;
    withFile(path, [&](QIODevice& device) {
        if (device.size() > largest) throw ksp::CommonError(QStringLiteral("is larger than 512 MiB"));
        features = GeoJsonParser(progress).parse(device.readAll());
    });
    return features;
}

} // namespace readers
