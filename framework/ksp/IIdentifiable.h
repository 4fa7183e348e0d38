#pragma once

#include <framework/ksp/LONGID.h>

namespace ksp {

/// Something that is known by a LONGID.
class IIdentifiable
{
public:
    virtual ~IIdentifiable() = default;
    virtual LONGID getId() const = 0;
};

} // namespace ksp
