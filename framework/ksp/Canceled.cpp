#include <framework/ksp/Canceled.h>

namespace ksp {

Canceled::Canceled()
    : CommonError(QStringLiteral("Canceled"))
{
}

Canceled::~Canceled() = default;

} // namespace ksp
