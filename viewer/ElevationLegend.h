#pragma once

#include <viewer/ElevationColors.h>

#include <QtCore/QRect>
#include <QtGui/QImage>

/// The legend of colours by height, for the lower right corner of a picture: a bar with its lowest colour at
/// the bottom and the heights of the levels beside it, of those that there is room for. Between discrete
/// levels all steps are of one height; else they are as the levels lie. Larger in larger pictures.
///
/// Needs a QGuiApplication.
class ElevationLegend
{
public:
    /// pictureSize: in pixels, of all of the picture.
    ElevationLegend(const ElevationColors& colors, const QSize& pictureSize);

    /// Where the legend lies, and its bar alone, pixels of the picture. A small picture may cut it.
    const QRect& rect() const { return m_rect; }
    const QRect& bar() const { return m_bar; }
    /// Heights beside the bar: the text and the row of the picture that it is about, from below.
    struct Label
    {
        QString text;
        double row;
    };
    const std::vector<Label>& labels() const { return m_labels; }

    /// Draws what of the legend lies on a part of the picture, given where that begins. The parts of a
    /// picture show together what all of it would.
    void drawOn(QImage& part, const QPoint& place) const;

private:
    int barHeight(const QSize& pictureSize) const;
    double shareOf(std::size_t level) const;
    QColor colorAtRow(int row) const;
    void placeLabels();
    void draw();

    ElevationColors m_colors;
    int m_fontSize; // pixels, of which all lengths are multiples
    QRect m_rect;
    QRect m_bar;
    std::vector<Label> m_labels;
    QImage m_image; // the legend
};
