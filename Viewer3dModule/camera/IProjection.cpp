#include <Viewer3dModule/camera/IProjection.h>

IProjection::~IProjection() = default;
