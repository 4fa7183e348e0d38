#include <viewer/elements/NameItem.h>

#include <viewer/elements/NameDrawer.h>

#include <Viewer3dModule/drawers/FontGlyphTextureFactory.h>

#include <QtGui/QFontMetrics>

#include <cmath>

namespace {

constexpr int fontSize = 12; // pixels, as other labels
constexpr int rim = 1;       // pixels
constexpr int margin = 1;    // transparent pixels of a glyph's image

// Hinted, so that letters stand on whole pixels by themselves.
QFont nameFont()
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(fontSize);
    font.setHintingPreference(QFont::PreferFullHinting);
    return font;
}

/// Texts are laid out with y down, glyphs of labels placed with y up.
MultiGlyphItem3dDrawer::GlyphList placed(std::vector<FontGlyphTextureFactory::Glyph> glyphs,
                                         const QPoint& origin)
{
    MultiGlyphItem3dDrawer::GlyphList list;
    list.reserve(glyphs.size());
    for (auto& [place, texture] : glyphs) {
        const QPointF corner = place + origin;
        list.emplace_back(glm::vec2(corner.x(), -corner.y()), std::move(texture));
    }
    return list;
}

} // namespace

NameItem::NameItem(CModelElement* element, NameDrawer& drawer, const QString& text, float lift)
    : Graphics3dItem(element)
    , m_text(text)
    , m_lift(lift)
{
    setDrawer(&drawer);
}

NameItem::~NameItem() = default;

void NameItem::setText(const QString& text, float lift)
{
    if (text == m_text && lift == m_lift) return;
    m_text = text;
    m_lift = lift;
    m_layout.reset();
    if (Item3dDrawer* drawer = getDrawer()) drawer->updateItem(this);
}

void NameItem::setPlace(const glm::dvec3& place)
{
    if (place == m_place) return;
    m_place = place;
    if (Item3dDrawer* drawer = getDrawer()) drawer->updateItem(this);
}

const NameItem::Layout& NameItem::layout()
{
    if (m_layout) return *m_layout;
    const QFont font = nameFont();
    const QFontMetrics metrics(font);
    const QSize size(metrics.horizontalAdvance(m_text) + 2 * rim, metrics.height() + 2 * rim);
    const int bottom = rim - static_cast<int>(std::lround(m_lift));
    const QPoint origin(rim - size.width() / 2, bottom - rim - metrics.descent());
    m_layout = Layout{placed(FontGlyphTextureFactory::get(m_text, font, margin), origin),
                      placed(FontGlyphTextureFactory::getRims(m_text, font, margin, rim), origin),
                      QRect(QPoint(-size.width() / 2, bottom - size.height()), size)};
    return *m_layout;
}

// Glyphs stand on the corner of pixels that is next to the point, as their program finds it.
QRect NameItem::rectAt(const glm::dvec2& pixel)
{
    constexpr double nearlyHalf = 0.5 - 1.0 / 64.0;
    return layout().rect.translated(static_cast<int>(std::floor(pixel.x + nearlyHalf)),
                                    static_cast<int>(std::floor(pixel.y + nearlyHalf)));
}

const MultiGlyphItem3dDrawer::GlyphList& NameItem::letters()
{
    return layout().letters;
}

const MultiGlyphItem3dDrawer::GlyphList& NameItem::rims()
{
    return layout().rims;
}
