#pragma once

#include <framework/model/ModelElementCreator.h>

/// Makes default-constructed elements of a class.
template <typename Element>
class COrdinaryItemCreator : public ModelElementCreator
{
public:
    int getType() const override { return Element().getType(); }
    std::unique_ptr<CModelElement> create() const override { return std::make_unique<Element>(); }
};
