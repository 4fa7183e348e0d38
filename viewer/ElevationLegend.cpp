#include <viewer/ElevationLegend.h>

#include <QtGui/QFontMetrics>
#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int smallestFont = 8; // pixels
constexpr double largestShareOfPicture = 0.6;
constexpr int mostDecimals = 9;

QFont fontOf(int pixels)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(pixels);
    return font;
}

/// As many decimals as keep every height within a hundredth of the smallest gap of what is written.
int decimalsOf(const ElevationColors::Levels& levels)
{
    double gap = levels.size() == 1 ? 1e-6 : std::numeric_limits<double>::infinity();
    for (std::size_t i = 1; i < levels.size(); ++i)
        gap = std::min(gap, levels[i].first - levels[i - 1].first);
    const auto isGood = [&](int decimals) {
        const double unit = std::pow(10.0, -decimals);
        return std::all_of(levels.begin(), levels.end(), [&](const auto& level) {
            return std::abs(level.first - std::round(level.first / unit) * unit) <= 0.01 * gap;
        });
    };
    int decimals = 0;
    while (decimals < mostDecimals && !isGood(decimals))
        ++decimals;
    return decimals;
}

} // namespace

ElevationLegend::ElevationLegend(const ElevationColors& colors, const QSize& pictureSize)
    : m_colors(colors)
    , m_fontSize(std::max(smallestFont, std::min(pictureSize.width() / 60, pictureSize.height() / 40)))
{
    m_bar = QRect(0, 0, m_fontSize * 3 / 2, barHeight(pictureSize));
    placeLabels();
    const QFontMetrics metrics(fontOf(m_fontSize));
    int textWidth = 0;
    for (const Label& label : m_labels)
        textWidth = std::max(textWidth, metrics.horizontalAdvance(label.text));
    const QSize size(m_bar.width() + textWidth + m_fontSize * 5 / 2, m_bar.height() + 2 * m_fontSize);
    m_rect = QRect(QPoint(pictureSize.width() - size.width() - m_fontSize,
                          pictureSize.height() - size.height() - m_fontSize),
                   size);
    const QPoint shift = m_rect.topLeft() + QPoint(m_fontSize, m_fontSize);
    m_bar.translate(shift);
    for (Label& label : m_labels)
        label.row += shift.y();
    draw();
}

int ElevationLegend::barHeight(const QSize& pictureSize) const
{
    const double rowsOfLevels = 1.7 * static_cast<double>(m_colors.levels().size());
    const double wanted = m_fontSize * std::max(m_colors.isDiscrete() ? 2.0 : 12.0, rowsOfLevels);
    const double room = largestShareOfPicture * pictureSize.height() - 2 * m_fontSize;
    return static_cast<int>(std::max(std::min(wanted, room), 2.0));
}

/// How far up the bar a level lies, 0 to 1.
double ElevationLegend::shareOf(std::size_t level) const
{
    const ElevationColors::Levels& levels = m_colors.levels();
    if (m_colors.isDiscrete()) return static_cast<double>(level) / static_cast<double>(levels.size());
    if (levels.size() == 1) return 0.5;
    const double lowest = levels.front().first;
    return (levels[level].first - lowest) / (levels.back().first - lowest);
}

QColor ElevationLegend::colorAtRow(int row) const
{
    const double share = (m_bar.bottom() + 0.5 - row) / m_bar.height();
    const ElevationColors::Levels& levels = m_colors.levels();
    const auto count = static_cast<double>(levels.size());
    if (m_colors.isDiscrete()) return levels[static_cast<std::size_t>(share * count)].second;
    return m_colors.at(levels.front().first + share * (levels.back().first - levels.front().first));
}

// From below, and where there is not room for all, those that come too close to the one before are left out;
// the uppermost one stays in any case.
void ElevationLegend::placeLabels()
{
    const ElevationColors::Levels& levels = m_colors.levels();
    const int decimals = decimalsOf(levels);
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const double row = m_bar.height() * (1.0 - shareOf(i));
        const bool isLast = i + 1 == levels.size();
        while (isLast && m_labels.size() > 1 && m_labels.back().row - row < 1.2 * m_fontSize)
            m_labels.pop_back();
        if (!m_labels.empty() && m_labels.back().row - row < 1.2 * m_fontSize) continue;
        m_labels.push_back({QString::number(levels[i].first, 'f', decimals), row});
    }
}

void ElevationLegend::draw()
{
    m_image = QImage(m_rect.size(), QImage::Format_ARGB32_Premultiplied);
    m_image.fill(Qt::transparent);
    QPainter painter(&m_image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 255, 255, 216));
    painter.drawRoundedRect(m_image.rect(), m_fontSize * 0.3, m_fontSize * 0.3);
    painter.translate(-m_rect.topLeft());
    for (int row = m_bar.top(); row <= m_bar.bottom(); ++row)
        painter.fillRect(QRect(m_bar.left(), row, m_bar.width(), 1), colorAtRow(row));
    const QColor ink(30, 30, 30);
    painter.setFont(fontOf(m_fontSize));
    for (const Label& label : m_labels) {
        painter.setPen(QPen(ink, std::max(1.0, m_fontSize * 0.08), Qt::SolidLine, Qt::FlatCap));
        painter.drawLine(QPointF(m_bar.right() + 1, label.row),
                         QPointF(m_bar.right() + 1 + m_fontSize * 0.3, label.row));
        const QRectF box(m_bar.right() + 1 + m_fontSize * 0.5, label.row - m_fontSize, m_rect.width(),
                         2 * m_fontSize);
        painter.drawText(box, Qt::AlignLeft | Qt::AlignVCenter, label.text);
    }
}

void ElevationLegend::drawOn(QImage& part, const QPoint& place) const
{
    if (!m_rect.intersects(QRect(place, part.size()))) return;
    QPainter painter(&part);
    painter.drawImage(m_rect.topLeft() - place, m_image);
}
