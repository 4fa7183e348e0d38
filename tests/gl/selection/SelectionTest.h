#pragma once

#include "DrawnItem.h"

#include "tests/support/SceneTest.h"
#include "tests/support/VertexItem.h"

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/scene/SelectionOptions.h>

#include <QtGui/QPolygonF>

#include <memory>
#include <set>
#include <vector>

/// A test with a scene of items that draw plain vertices, in scene coordinates.
class SelectionTest : public SceneTest
{
protected:
    using Ids = std::set<LONGID>;

    void TearDown() override;

    /// An item that draws vertices in one colour, by the Mono drawer; its box is theirs.
    DrawnItem* add(LONGID id, GLenum mode, std::vector<glm::vec3> vertices, const QColor& color = Qt::white,
                   int elementType = TestElement::Type);
    /// A square of two triangles, in pixels of a view of identity matrices of this size, at depth z.
    DrawnItem* addSquare(LONGID id, const QRectF& pixels, float z = 0.0f, const QColor& color = Qt::white);
    /// The corners of such a square.
    static std::vector<glm::vec3> square(const QRectF& pixels, float z = 0.0f);
    /// An item that draws nothing yet; it goes with the scene.
    DrawnItem* addItem(LONGID id, int drawerType, int elementType = TestElement::Type);
    TestElement& elementOf(const DrawnItem* item);

    /// What the scene selects in the area of the view of Size; each identifier must be there once.
    template <typename Area>
    Ids select(const Area& area, SelectionMode mode = SelectionMode::Through,
               SelectionRule rule = SelectionRule::Touching)
    {
        SelectionOptions options;
        options.mode = mode;
        options.rule = rule;
        return select(area, options);
    }
    template <typename Area>
    Ids select(const Area& area, const SelectionOptions& options)
    {
        return once(scene->selectItems(view(), area, options));
    }
    static Ids once(const std::vector<LONGID>& ids);

    PaintContext view() { return paintContext(Size.width(), Size.height()); }

    static constexpr SelectionMode Through = SelectionMode::Through;
    static constexpr SelectionMode Visible = SelectionMode::Visible;
    static constexpr SelectionRule Touching = SelectionRule::Touching;
    static constexpr SelectionRule Inside = SelectionRule::Inside;
    static constexpr QSize Size{64, 48};

private:
    std::vector<std::unique_ptr<TestElement>> m_elements;
    std::vector<std::unique_ptr<VertexItem>> m_parts;
};
