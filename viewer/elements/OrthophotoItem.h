#pragma once

#include <Viewer3dModule/drawables/GlTexture.h>
#include <Viewer3dModule/drawables/Rect3dPrimitive.h>
#include <Viewer3dModule/host/Graphics3dItem.h>

#include <memory>

class OrthophotoElement;

/// Shows a picture from above on the ground, unlit. The unit square gets its place by the model matrix, which
/// is composed in doubles. What else lies at its height is drawn over it.
class OrthophotoItem : public Graphics3dItem
{
public:
    explicit OrthophotoItem(OrthophotoElement* element);
    /// Frees the texture; a context of the share group must be current.
    ~OrthophotoItem() override;

    void updateData(ISubject* subject) override;
    void updateDataImpl() override;
    int getDefaultDrawerType() const override;
    GeometryInfo getGeometryInfo() override;
    /// The corners of the unit square.
    std::vector<glm::vec3> getVertices() override;
    int getNodePointsCount() const override { return 4; }
    gmx::BoundingBox sceneBoundingBox() const override;

protected:
    using Graphics3dItem::draw;
    void draw(const PaintContext& context) override;

private:
    void loadPicture(const QString& path);

    std::unique_ptr<Rect3dPrimitive> m_square; // null before the first update
    GlTexture m_texture;
    QString m_path; // of the picture in the texture
    bool m_isChanged = true;
};
