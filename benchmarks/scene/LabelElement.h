#pragma once

#include <QtCore/QString>

#include <framework/model/CModelElement.h>

#include <glm/glm.hpp>

/// A point of the model with a text.
class LabelElement : public CModelElement
{
public:
    static constexpr int Type = 0x20000B04;

    LabelElement(const QString& text, const glm::vec3& place)
        : m_text(text)
        , m_place(place)
    {
    }
    int getType() const override { return Type; }
    const QString& text() const { return m_text; }
    const glm::vec3& place() const { return m_place; }

private:
    QString m_text;
    glm::vec3 m_place;
};
