#pragma once

#include <Viewer3dModule/drawables/IPolyline3dClipper.h>

/// The clipper that makePolyline3dClipper makes.
class Polyline3dClipper : public IPolyline3dClipper
{
public:
    void setBox(const glm::dvec3& min, const glm::dvec3& max) override;
    void clip(const std::vector<glm::dvec3>& polyline,
              std::function<void(const std::vector<glm::dvec3>&)> output) override;

private:
    bool isInside(const glm::dvec3& point) const;
    bool clipSegment(glm::dvec3& from, glm::dvec3& to) const;

    glm::dvec3 m_boxMin = glm::dvec3(-1.0);
    glm::dvec3 m_boxMax = glm::dvec3(1.0);
};
