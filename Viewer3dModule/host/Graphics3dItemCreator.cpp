#include <Viewer3dModule/host/Graphics3dItemCreator.h>

Graphics3dItemCreator::~Graphics3dItemCreator() = default;
