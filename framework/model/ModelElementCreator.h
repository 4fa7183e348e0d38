#pragma once

#include <framework/HostFramework_export.h>
#include <framework/model/CModelElement.h>

#include <memory>

/// Makes elements of one type, for loading and for project settings.
class HOSTFRAMEWORK_EXPORT ModelElementCreator
{
public:
    virtual ~ModelElementCreator() = default;
    /// The type of the elements that create() makes.
    virtual int getType() const = 0;
    virtual std::unique_ptr<CModelElement> create() const = 0;
};
