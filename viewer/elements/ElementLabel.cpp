#include <viewer/elements/ElementLabel.h>

#include <viewer/elements/LabelDrawer.h>

#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/host/Graphics3dItem.h>

#include <QtGui/QFontMetricsF>
#include <QtGui/QPainter>

#include <cmath>

namespace {

constexpr int longestName = 60; // characters
constexpr int fontSize = 12;    // pixels, which makes lines of 14
constexpr int rim = 2;          // pixels
const QColor letterColor(25, 25, 35);
const QColor rimColor(255, 255, 255, 200);

QFont labelFont()
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(fontSize);
    return font;
}

QImage paintLabel(const QString& text)
{
    const QFontMetricsF metrics(labelFont());
    QImage image(static_cast<int>(std::ceil(metrics.horizontalAdvance(text))) + 2 * rim,
                 static_cast<int>(std::ceil(metrics.height())) + 2 * rim, QImage::Format_RGBA8888);
    image.fill(QColor(255, 255, 255, 0));
    QPainter painter(&image);
    painter.setFont(labelFont());
    painter.setLayoutDirection(Qt::LayoutDirectionAuto);
    const auto write = [&](int dx, int dy, const QColor& color) {
        painter.setPen(color);
        painter.drawText(QRect(rim + dx, rim + dy, image.width(), image.height()),
                         Qt::AlignLeft | Qt::AlignTop | Qt::TextDontClip, text);
    };
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx)
            write(dx, dy, rimColor);
    write(0, 0, letterColor);
    return image;
}

} // namespace

ElementLabel::ElementLabel(const Graphics3dItem& owner, LabelDrawer& drawer, const QString& text, Place place,
                           std::optional<float> lift)
    : CaptionsDrawable3dItem(LabelDrawer::VisibilityType)
    , m_owner(owner)
    , m_text(shownText(text))
    , m_findPlace(std::move(place))
    , m_lift(lift)
{
    setSceneDrawer(drawer.scene());
}

ElementLabel::~ElementLabel() = default;

QString ElementLabel::shownText(const QString& text)
{
    const QString line = text.left(16 * longestName).simplified();
    if (line.size() <= longestName) return line;
    const bool splits = line.at(longestName - 2).isHighSurrogate();
    return line.left(longestName - (splits ? 2 : 1)) + QChar(0x2026);
}

LONGID ElementLabel::elementId() const
{
    return m_owner.getId();
}

const glm::dvec3& ElementLabel::place()
{
    if (!m_place) m_place = m_findPlace();
    return *m_place;
}

glm::dvec3 ElementLabel::scenePlace()
{
    return glm::dvec3(glm::dmat4(getTransform()) * glm::dvec4(glm::vec3(place()), 1.0));
}

const QImage& ElementLabel::image()
{
    if (m_image.isNull()) m_image = paintLabel(m_text);
    m_size = m_image.size();
    return m_image;
}

QRect ElementLabel::rectAt(const glm::dvec2& pixel)
{
    if (m_size.isEmpty()) image();
    const double bottom =
        m_lift ? pixel.y - static_cast<double>(*m_lift) + rim : pixel.y + m_size.height() / 2.0;
    return QRect(QPoint(static_cast<int>(std::lround(pixel.x - m_size.width() / 2.0)),
                        static_cast<int>(std::lround(bottom)) - m_size.height()),
                 m_size);
}

// The program puts the place where its floats put it; from there the offset leads to whole pixels, on which
// letters are sharp.
void ElementLabel::draw(const PaintContext& context)
{
    if (captions().empty()) {
        addCaption(glm::vec3(place()), image());
        m_image = QImage();
    }
    const glm::dvec4 clip = glm::dmat4(context.projection) * glm::dmat4(context.view) *
                            glm::dmat4(getTransform()) * glm::dvec4(glm::vec3(place()), 1.0);
    const glm::dvec4 pixel = glm::dmat4(context.viewport) * (clip / clip.w);
    captions().front()->setOffset(glm::vec2(m_corner.x - pixel.x, pixel.y - m_corner.y));
    CaptionsDrawable3dItem::draw(context);
}
