#include "SheetLayout.h"

#include <QtGui/QPainter>

namespace {

constexpr int Columns = 8;
constexpr int Margin = 12;
constexpr int Gap = 6;
constexpr int NameHeight = 18;
constexpr int CaptionHeight = 15;
constexpr int LineGap = 14;

QFont fontOf(int pixels, bool isBold)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(pixels);
    font.setBold(isBold);
    return font;
}

} // namespace

SheetLayout::SheetLayout(const std::vector<Strip>& strips, int cellSize)
    : m_strips(strips)
    , m_cellSize(cellSize)
{
    int column = 0;
    int line = 0;
    const auto placeOf = [&] {
        const int lineHeight = NameHeight + CaptionHeight + cellSize + LineGap;
        return QPoint(Margin + column * (cellSize + Gap), Margin + line * lineHeight);
    };
    for (const Strip& strip : strips) {
        const int count = static_cast<int>(strip.cells.size());
        if (column + count > Columns) {
            column = 0;
            ++line;
        }
        m_places.push_back(placeOf());
        column += count;
    }
    m_end = placeOf();
}

QRect SheetLayout::cellRect(std::size_t strip, std::size_t cell) const
{
    const QPoint shift(static_cast<int>(cell) * (m_cellSize + Gap), NameHeight + CaptionHeight);
    return QRect(m_places[strip] + shift, QSize(m_cellSize, m_cellSize));
}

QImage SheetLayout::compose(const Legend& legend) const
{
    const int width = 2 * Margin + Columns * (m_cellSize + Gap) - Gap;
    QImage sheet(width, cellRect(m_strips.size() - 1, 0).bottom() + 1 + Margin, QImage::Format_RGB32);
    sheet.fill(QColor(245, 245, 242));
    QPainter painter(&sheet);
    for (std::size_t i = 0; i < m_strips.size(); ++i)
        drawStrip(painter, i);
    drawLegend(painter, legend);
    return sheet;
}

void SheetLayout::drawStrip(QPainter& painter, std::size_t strip) const
{
    painter.setPen(QColor(30, 30, 30));
    painter.setFont(fontOf(13, true));
    painter.drawText(m_places[strip] + QPoint(0, 13), QString::fromStdString(m_strips[strip].program));
    painter.setFont(fontOf(10, false));
    for (std::size_t i = 0; i < m_strips[strip].cells.size(); ++i) {
        const QRect rect = cellRect(strip, i);
        painter.drawText(rect.topLeft() - QPoint(0, 4),
                         QString::fromStdString(m_strips[strip].cells[i].caption));
        painter.drawImage(rect.topLeft(), m_strips[strip].cells[i].image);
    }
}

void SheetLayout::drawLegend(QPainter& painter, const Legend& legend) const
{
    const QPoint corner = m_end + QPoint(Gap, 0);
    painter.setFont(fontOf(13, true));
    painter.drawText(corner + QPoint(0, 13), QStringLiteral("Layers of the glue mask"));
    painter.setFont(fontOf(10, false));
    int i = 0;
    for (const auto& [color, name] : legend) {
        const QPoint at = corner + QPoint(i / 5 * 190, NameHeight + CaptionHeight + i % 5 * 24);
        painter.fillRect(QRect(at, QSize(30, 18)), color);
        painter.drawText(at + QPoint(38, 13), QString::fromUtf8(name));
        ++i;
    }
}
