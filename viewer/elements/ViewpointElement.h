#pragma once

#include <viewer/EyeDomeShading.h>
#include <viewer/Viewpoint.h>

#include <framework/model/CModelElement.h>

/// A named viewpoint that is kept with the project, in model coordinates, and how frames are shaded there.
class ViewpointElement : public CModelElement
{
public:
    explicit ViewpointElement(CModelElement* owner = nullptr);
    ~ViewpointElement() override;

    int getType() const override;

    /// In model coordinates.
    const Viewpoint& getViewpoint() const { return m_viewpoint; }
    void setViewpoint(const Viewpoint& viewpoint);

    EyeDomeShading getEyeDomeShading() const { return m_shading; }
    void setEyeDomeShading(EyeDomeShading shading) { m_shading = shading; }

    void serialize(CQtArchive& archive) override;

private:
    Viewpoint m_viewpoint;
    EyeDomeShading m_shading = EyeDomeShading::Off;
};
