#pragma once

#include <framework/model/OrthophotoElement.h>

#include <memory>

namespace readers {

/// Reads where a picture lies: of the picture its size, of the world file beside it the six numbers.
/// groundHeight is the height at which it lies. Throws ksp::CommonError, "path: reason": when there is no
/// world file or it has not six numbers that span an area, and when the picture cannot be read or has more
/// than 400 million pixels.
std::unique_ptr<OrthophotoElement> readOrthophoto(const QString& path, double groundHeight);

} // namespace readers
