// Feeds one reader with whatever libFuzzer makes up. READER names the parser's class, see README.md beside
// this file.
#include <framework/ksp/CommonError.h>
#include <framework/ksp/Log.h>
#include <readers/cityjson/CityJsonParser.h>
#include <readers/colmap/ColmapImagesParser.h>
#include <readers/colmap/ColmapPointsParser.h>
#include <readers/geojson/GeoJsonParser.h>
#include <readers/gltf/GltfParser.h>
#include <readers/obj/ObjParser.h>
#include <readers/off/OffParser.h>
#include <readers/ply/PlyParser.h>
#include <readers/stl/StlParser.h>

#include <QtCore/QBuffer>

#include <cmath>
#include <cstdlib>

namespace {

void check(const MeshData& mesh)
{
    for (std::uint32_t index : mesh.indices) {
        if (index >= mesh.positions.size()) std::abort();
    }
    for (const glm::vec3& position : mesh.positions) {
        if (!std::isfinite(position.x + position.y + position.z)) std::abort();
    }
}

template <typename Parser>
void read(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    for (const MeshData& mesh :
         Parser(buffer, QStringLiteral("/nowhere/file"), ksp::StagedProgress::dummy()).parse())
        check(mesh);
}

template <>
void read<readers::GeoJsonParser>(const QByteArray& bytes)
{
    readers::GeoJsonParser(ksp::StagedProgress::dummy()).parse(bytes);
}

template <>
void read<readers::CityJsonParser>(const QByteArray& bytes)
{
    readers::CityJsonParser parser(QStringLiteral("/nowhere/file"), {}, ksp::StagedProgress::dummy());
    for (const auto& object : parser.parse(bytes))
        if (!object->getGeometry().isSound()) std::abort();
}

// Cameras and pictures are one format of lines to the fuzzer; of cameras, pictures have one without
// anything.
template <>
void read<readers::ColmapImagesParser>(const QByteArray& bytes)
{
    const auto parse = [&bytes](const auto& work) {
        QBuffer buffer;
        buffer.setData(bytes);
        buffer.open(QIODevice::ReadOnly);
        try {
            work(buffer);
        } catch (const ksp::CommonError&) {
            // refused
        }
    };
    parse([](QIODevice& device) {
        readers::ColmapCamerasParser(device, ksp::StagedProgress::dummy()).parse();
    });
    parse([](QIODevice& device) {
        const readers::ColmapCamerasParser::Cameras cameras = {{1, {}}};
        for (const auto& station :
             readers::ColmapImagesParser(device, cameras, ksp::StagedProgress::dummy()).parse())
            if (!std::isfinite(glm::length(station->getCenter()))) std::abort();
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const int quiet = ksp::Log::addHandler([](ksp::Log::MessageType, const QString&) {});
    static_cast<void>(quiet);
    try {
        read<readers::READER>(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    } catch (const ksp::CommonError&) {
        // refused
    }
    return 0;
}
