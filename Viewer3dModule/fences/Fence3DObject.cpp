#include <Viewer3dModule/fences/Fence3DObject.h>

Fence3DObject::~Fence3DObject() = default;
