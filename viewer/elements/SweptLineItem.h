#pragma once

#include <viewer/elements/CrossSection.h>
#include <viewer/elements/FeatureItem.h>

#include <Viewer3dModule/drawables/GlBuffer.h>

/// Shows a feature of lines with the property "section": walls and kerbs, the section swept along the lines
/// with mitred joints. What is captured of it are its lines.
class SweptLineItem : public FeatureItem
{
public:
    /// See FeatureItem.
    explicit SweptLineItem(FeatureElement* element, std::optional<float> pointSize = {});
    ~SweptLineItem() override;

    /// The property, of a feature that has nothing but lines; see CrossSection::of.
    static CrossSection sectionOf(const FeatureElement& element);

    void updateDataImpl() override;
    int getDefaultDrawerType() const override;
    gmx::BoundingBox sceneBoundingBox() const override;

protected:
    using FeatureItem::draw;
    void draw(const PaintContext& context) override;

private:
    void setPositions(OpenGLFunctions& gl, const PaintContext& context);

    CrossSection m_section;         // scene units
    double m_reach = 0.0;           // scene units, of the solid from its line
    std::vector<float> m_positions; // along the lines, one a vertex of them, scene units
    GlBuffer m_positionBuffer;      // made when a program first asks for it
};
