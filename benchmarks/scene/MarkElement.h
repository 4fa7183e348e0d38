#pragma once

#include <framework/model/CModelElement.h>

#include <glm/glm.hpp>

/// A point of the model that is shown by a mark.
class MarkElement : public CModelElement
{
public:
    static constexpr int Type = 0x20000B03;

    explicit MarkElement(const glm::vec3& place)
        : m_place(place)
    {
    }
    int getType() const override { return Type; }
    const glm::vec3& place() const { return m_place; }

private:
    glm::vec3 m_place;
};
