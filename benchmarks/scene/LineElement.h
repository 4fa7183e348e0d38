#pragma once

#include <benchmarks/data/LineSet.h>

#include <framework/model/CModelElement.h>

/// A polyline of the model. Its vertices lie in the set, which outlives it: so an element costs no more than
/// elements do, and who builds the scene finds them in memory, as the plain programs do.
class LineElement : public CModelElement
{
public:
    static constexpr int Type = 0x20000B01;

    /// width: of the pen, pixels
    LineElement(const LineSet& set, std::size_t index, float width)
        : m_set(&set)
        , m_index(index)
        , m_width(width)
        , m_color(set.lines[index].color)
    {
    }
    int getType() const override { return Type; }

    const glm::mat4& matrix() const { return m_set->lines[m_index].matrix; }
    std::vector<glm::vec3> vertices() const { return m_set->copyOf(m_index); }
    float width() const { return m_width; }
    QColor color() const { return m_color; }
    /// Tells the observers.
    void setColor(const QColor& color)
    {
        m_color = color;
        notifyObservers();
    }

private:
    const LineSet* m_set;
    std::size_t m_index;
    float m_width;
    QColor m_color;
};
