#include <readers/obj/ObjPlugin.h>

#include <readers/obj/ObjParser.h>

namespace {

std::vector<MeshData> parse(QIODevice& device, const QString& path, ksp::StagedProgress progress)
{
    return readers::ObjParser(device, path, std::move(progress)).parse();
}

} // namespace

ObjPlugin::ObjPlugin()
    : MeshPlugin({QStringLiteral("obj")}, &parse)
{
}
