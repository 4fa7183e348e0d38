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
    m_rect = QRect();
    if (!m_isLaidOut) return;
    layOut();
    if (Item3dDrawer* drawer = getDrawer()) drawer->updateItem(this);
}

void NameItem::setPlace(const glm::dvec3& place)
{
    if (place == m_place) return;
    m_place = place;
    if (Item3dDrawer* drawer = getDrawer()) drawer->updateItem(this);
}

const QRect& NameItem::rect()
{
    if (!m_rect.isNull()) return m_rect;
    const QFontMetrics metrics(nameFont());
    const QSize size(metrics.horizontalAdvance(m_text) + 2 * rim, metrics.height() + 2 * rim);
    const int bottom = rim - static_cast<int>(std::lround(m_lift));
    m_rect = QRect(QPoint(-size.width() / 2, bottom - size.height()), size);
    return m_rect;
}

void NameItem::layOut()
{
    const QFont font = nameFont();
    // of the baseline, within the rectangle
    const QPoint origin(rect().left() + rim,
                        rect().top() + rect().height() - rim - QFontMetrics(font).descent());
    m_letters = placed(FontGlyphTextureFactory::get(m_text, font, margin), origin);
    m_rims = placed(FontGlyphTextureFactory::getRims(m_text, font, margin, rim), origin);
    m_isLaidOut = true;
}

// Glyphs stand on the corner of pixels that is next to the point, as their program finds it.
QRect NameItem::rectAt(const glm::dvec2& pixel)
{
    constexpr double nearlyHalf = 0.5 - 1.0 / 64.0;
    return rect().translated(static_cast<int>(std::floor(pixel.x + nearlyHalf)),
                             static_cast<int>(std::floor(pixel.y + nearlyHalf)));
}

void NameItem::setCorner(const glm::dvec2&)
{
    if (m_isLaidOut) return;
    layOut();
    if (Item3dDrawer* drawer = getDrawer()) drawer->updateItem(this);
}
