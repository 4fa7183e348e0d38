#include <benchmarks/scene/LabelItem.h>

#include <Viewer3dModule/drawers/FontGlyphTextureFactory.h>

#include <QtGui/QFont>

namespace {

QFont labelFont()
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(12);
    font.setHintingPreference(QFont::PreferFullHinting);
    return font;
}

LabelItem& labelOf(Graphics3dItem* item)
{
    return static_cast<LabelItem&>(*item);
}

} // namespace

const LabelItem::Glyphs& LabelItem::glyphs()
{
    if (!m_glyphs.empty()) return m_glyphs;
    static const QFont font = labelFont();
    constexpr int margin = 1; // pixels
    for (auto& [place, texture] : FontGlyphTextureFactory::get(m_element->text(), font, margin))
        m_glyphs.emplace_back(glm::vec2(place.x(), -place.y()), std::move(texture));
    return m_glyphs;
}

LabelItemDrawer::LabelItemDrawer(Scene3d* scene)
    : MultiGlyphItem3dDrawer(scene)
{
    setColor(Qt::white);
}

std::unique_ptr<Item3dDrawer> LabelItemDrawer::clone() const
{
    return std::make_unique<LabelItemDrawer>(scene());
}

glm::vec3 LabelItemDrawer::getAnchor(Graphics3dItem* item)
{
    return labelOf(item).anchor();
}

int LabelItemDrawer::getGlyphCount(Graphics3dItem* item)
{
    return static_cast<int>(labelOf(item).glyphs().size());
}

LabelItemDrawer::GlyphList LabelItemDrawer::getGlyphs(Graphics3dItem* item)
{
    return labelOf(item).glyphs();
}
