#pragma once

#include <Viewer3dModule/host/Graphics3dItem.h>

#include <memory>

class NameItem;
class StationElement;

/// Shows a station: a small camera that faces the viewer, in the size of a picture in a text, at its centre
/// of projection; and its name, where the scene has labels.
class StationItem : public Graphics3dItem
{
public:
    explicit StationItem(StationElement* element);
    /// A context of the share group must be current: the last one frees what all share.
    ~StationItem() override;

    void updateDataImpl() override;
    void updateVisibility() override;
    /// That of captions.
    int getDefaultDrawerType() const override;
    /// One, the centre.
    std::vector<glm::vec3> getVertices() override { return {glm::vec3(0.0f)}; }
    int getNodePointsCount() const override { return 1; }
    gmx::BoundingBox sceneBoundingBox() const override;

protected:
    using Graphics3dItem::draw;
    void draw(const PaintContext& context) override;

private:
    class Sign;
    static std::shared_ptr<Sign> sharedSign();
    void renewName(const StationElement& element);

    std::shared_ptr<Sign> m_sign;     // null before the first update
    std::unique_ptr<NameItem> m_name; // null without
};
