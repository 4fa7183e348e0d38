#pragma once

#include <framework/HostFramework_export.h>

class CModelElement;

/// Decides which elements take part in something.
class HOSTFRAMEWORK_EXPORT IElementFilter
{
public:
    virtual ~IElementFilter() = default;
    /// Whether elements of this type (visibility type, in a scene) take part at all.
    virtual bool isTypeAccepted(int type) const = 0;
    /// Whether this element takes part; independent of isTypeAccepted.
    virtual bool isAccepted(const CModelElement& element) const = 0;
};
