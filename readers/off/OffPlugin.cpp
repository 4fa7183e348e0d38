#include <readers/off/OffPlugin.h>

#include <readers/off/OffParser.h>

namespace {

std::vector<MeshData> parse(QIODevice& device, const QString& path, ksp::StagedProgress progress)
{
    return readers::OffParser(device, path, std::move(progress)).parse();
}

} // namespace

OffPlugin::OffPlugin()
    : MeshPlugin({QStringLiteral("off")}, &parse)
{
}
