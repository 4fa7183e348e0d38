#pragma once

#include <viewer/elements/FeatureDrawers.h>
#include <viewer/elements/FeatureItem.h>

#include <Viewer3dModule/drawables/DrawableShaderCylinder.h>
#include <Viewer3dModule/drawables/DrawableShaderSphere.h>

/// Shows a feature of lines with the property "radius" (model units): pipes and poles, a cylinder a segment
/// and a ball where two meet. What is captured of it are its lines.
class PipeItem : public FeatureItem
{
public:
    static constexpr int Type = 0x36FFD111; ///< of drawers

    /// See FeatureItem.
    explicit PipeItem(FeatureElement* element, std::optional<float> pointSize = {});
    ~PipeItem() override;

    /// The property, of a feature that has nothing but lines; 0 without it, and where it is no length.
    static double radiusOf(const FeatureElement& element);
    /// Sees to it that the scene has the drawer for such items, before the first one comes.
    static void addDrawerTo(Scene3d& scene);
    /// A drawer for such items, of one for the cylinders and one for the balls.
    static std::unique_ptr<Item3dDrawer> makeDrawer(Scene3d& scene, std::unique_ptr<Item3dDrawer> cylinders,
                                                    std::unique_ptr<Item3dDrawer> balls);

    void updateDataImpl() override;
    int getDefaultDrawerType() const override;
    gmx::BoundingBox sceneBoundingBox() const override;

protected:
    using FeatureItem::draw;
    void draw(const PaintContext& context) override;

private:
    // As features count them: what is captured are the lines, once.
    enum Stage { Cylinders = feature_drawers::LineStage, Balls = feature_drawers::PointStage };

    QColor m_color;
    double m_radius = 0.0;             // scene units
    std::vector<glm::mat4> m_segments; // unit cylinders to the scene
    std::vector<glm::mat4> m_joints;   // unit balls to the scene
    DrawableShaderCylinder m_cylinder;
    DrawableShaderSphere m_ball;
};
