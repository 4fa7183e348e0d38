#include <Viewer3dModule/camera/IProjection.h>

#include <framework/ksp/IArchive.h>

IProjection::~IProjection() = default;

void IProjection::serializeNumber(ksp::IArchive& archive, double& number)
{
    double stored = number;
    archive.beginObject();
    archive.value(stored);
    archive.endObject(1);
    archive.finish();
    number = stored;
}
