#pragma once

#include <framework/HostFramework_export.h>
#include <framework/ksp/LONGID.h>

namespace ksp {

/// Something that is known by a LONGID.
class HOSTFRAMEWORK_EXPORT IIdentifiable
{
public:
    virtual ~IIdentifiable() = default;
    virtual LONGID getId() const = 0;
};

} // namespace ksp
