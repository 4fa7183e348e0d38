#pragma once

#include <viewer/Viewpoint.h>

#include <framework/model/CModelElement.h>

/// A named viewpoint that is kept with the project, in model coordinates.
class ViewpointElement : public CModelElement
{
public:
    explicit ViewpointElement(CModelElement* owner = nullptr);
    ~ViewpointElement() override;

    int getType() const override;

    /// In model coordinates.
    const Viewpoint& getViewpoint() const { return m_viewpoint; }
    void setViewpoint(const Viewpoint& viewpoint);

    void serialize(CQtArchive& archive) override;

private:
    Viewpoint m_viewpoint;
};
