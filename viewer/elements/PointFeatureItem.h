#pragma once

#include <viewer/elements/FeatureItem.h>

/// Shows a feature that is one point: as a mark where it has no look of its own. A control point, which has
/// the property "control", has a translucent ball around it that keeps its size on the screen; one with the
/// property "check" a ball of lines of the size that its property "accuracy" tells, 1 model unit without.
class PointFeatureItem : public FeatureItem
{
public:
    /// See FeatureItem.
    explicit PointFeatureItem(FeatureElement* element, std::optional<float> pointSize = {});
    ~PointFeatureItem() override;

    /// Whether the feature is one point.
    static bool fits(const FeatureElement& element);
    /// How points look that say nothing of their own.
    static FeatureStyle plainStyle(std::optional<float> pointSize);

    void updateDataImpl() override;
    void updateVisibility() override;
    int getDefaultDrawerType() const override;

protected:
    float markReach() const override;

private:
    class Ball;
    enum class Kind { Plain, Control, Checked };
    static Kind kindOf(const FeatureElement& element);
    void renewNode(const FeatureElement& element);
    bool isPlain(const FeatureElement& element) const;

    std::optional<float> m_pointSize;
    bool m_isPlain;
    std::unique_ptr<Ball> m_node; // null without
};
