#include "ElevationTexts.h"

#include "../../support/ImageCheck.h"

#include <viewer/ElevationLegend.h>

#include <gtest/gtest.h>

namespace {

QImage drawn(const ElevationLegend& legend, const QSize& size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(QColor(90, 90, 90));
    legend.drawOn(image, QPoint(0, 0));
    return image;
}

QStringList texts(const ElevationLegend& legend)
{
    QStringList all;
    for (const ElevationLegend::Label& label : legend.labels())
        all.append(label.text);
    return all;
}

const QSize usual(1280, 720);

} // namespace

TEST(ElevationLegend, BarRunsThroughTheColours)
{
    const ElevationColors colors = readText("100 #102030\n150 #30c040\n300 #f0e0d0\n", false);
    const ElevationLegend legend(colors, usual);
    const QImage image = drawn(legend, usual);
    const QRect bar = legend.bar();
    ASSERT_GT(bar.height(), 100);
    for (int row = bar.top(); row <= bar.bottom(); ++row) {
        const double height = 100.0 + 200.0 * (bar.bottom() + 0.5 - row) / bar.height();
        for (const int x : {bar.left(), bar.center().x(), bar.right()})
            ASSERT_EQ(image.pixelColor(x, row), colors.at(height)) << row;
    }
    EXPECT_EQ(texts(legend), QStringList({"100", "150", "300"}));
    EXPECT_DOUBLE_EQ(legend.labels()[1].row, bar.bottom() + 1 - bar.height() * 0.25);
}

TEST(ElevationLegend, DiscreteStepsAreOfOneHeight)
{
    const ElevationLegend legend(readText("0 red\n1 lime\n100 blue\n", true), usual);
    const QImage image = drawn(legend, usual);
    const QRect bar = legend.bar();
    int counts[3] = {0, 0, 0};
    for (int row = bar.top(); row <= bar.bottom(); ++row) {
        const QColor color = image.pixelColor(bar.center().x(), row);
        counts[0] += color == QColor(255, 0, 0);
        counts[1] += color == QColor(0, 255, 0);
        counts[2] += color == QColor(0, 0, 255);
    }
    EXPECT_EQ(counts[0] + counts[1] + counts[2], bar.height());
    for (const int count : counts)
        EXPECT_NEAR(count, bar.height() / 3.0, 1.0);
    EXPECT_EQ(image.pixelColor(bar.center().x(), bar.bottom()), QColor(255, 0, 0));
    EXPECT_EQ(texts(legend), QStringList({"0", "1", "100"}));
}

// Ink where the heights stand, none between them.
TEST(ElevationLegend, HeightsStandBesideTheirLevels)
{
    const ElevationLegend legend(readText("0 red\n50 lime\n100 blue\n", false), usual);
    const QImage image = drawn(legend, usual);
    const auto inkInRow = [&](double row) {
        int ink = 0;
        for (int x = legend.bar().right() + 8; x < legend.rect().right(); ++x)
            ink += qGray(image.pixel(x, static_cast<int>(row))) < 90;
        return ink;
    };
    for (const ElevationLegend::Label& label : legend.labels())
        EXPECT_GT(inkInRow(label.row), 1) << label.text.toStdString();
    EXPECT_EQ(inkInRow(0.5 * (legend.labels()[0].row + legend.labels()[1].row)), 0);
}

TEST(ElevationLegend, DecimalsTellTheLevelsApart)
{
    EXPECT_EQ(texts(ElevationLegend(readText("0.125 red\n0.25 lime\n", false), usual)),
              QStringList({"0.125", "0.250"}));
    EXPECT_EQ(texts(ElevationLegend(readText("350.5 red\n", false), usual)), QStringList("350.5"));
    EXPECT_EQ(texts(ElevationLegend(ElevationColors::over(305.76360, 390.99, false), usual)).first(),
              "305.8");
}

TEST(ElevationLegend, LiesInTheLowerRightCorner)
{
    for (const QSize& size : {QSize(640, 360), usual, QSize(4000, 3000)}) {
        const ElevationLegend legend(ElevationColors::over(0.0, 1.0, false), size);
        const QRect picture(QPoint(0, 0), size);
        EXPECT_TRUE(picture.contains(legend.rect()));
        EXPECT_TRUE(legend.rect().contains(legend.bar()));
        EXPECT_GT(legend.rect().right(), size.width() * 9 / 10);
        EXPECT_GT(legend.rect().bottom(), size.height() * 9 / 10);
        const QImage image = drawn(legend, size);
        EXPECT_EQ(image.pixelColor(2, 2), QColor(90, 90, 90));
    }
}

TEST(ElevationLegend, GrowsWithThePicture)
{
    const ElevationColors colors = ElevationColors::over(0.0, 1.0, false);
    EXPECT_EQ(ElevationLegend(colors, QSize(6000, 4000)).bar().width(),
              2 * ElevationLegend(colors, QSize(3000, 2000)).bar().width());
}

TEST(ElevationLegend, LevelsForWhichThereIsNoRoomAreLeftOut)
{
    QByteArray text;
    for (int i = 0; i < 200; ++i)
        text += QByteArray::number(i) + " red\n";
    const ElevationLegend legend(readText(text, false), usual);
    ASSERT_LT(legend.labels().size(), 60u);
    EXPECT_EQ(legend.labels().front().text, "0");
    EXPECT_EQ(legend.labels().back().text, "199");
    for (std::size_t i = 1; i < legend.labels().size(); ++i)
        EXPECT_GT(legend.labels()[i - 1].row - legend.labels()[i].row, 18.0);
}

TEST(ElevationLegend, PartsShowTogetherWhatTheWholeShows)
{
    const ElevationLegend legend(ElevationColors::over(0.0, 1.0, true), usual);
    const QImage whole = drawn(legend, usual);
    for (int top = 0; top < usual.height(); top += 91)
        for (int left = 0; left < usual.width(); left += 577) {
            QImage part(577, 91, QImage::Format_RGB32);
            part.fill(QColor(90, 90, 90));
            legend.drawOn(part, QPoint(left, top));
            const QRect inside = QRect(left, top, 577, 91) & whole.rect();
            EXPECT_EQ(part.copy(inside.translated(-left, -top)), whole.copy(inside)) << left << ", " << top;
        }
}

TEST(ElevationLegend, TinyPictureIsNoHarm)
{
    const ElevationLegend legend(ElevationColors::over(0.0, 1.0, false), QSize(1, 1));
    drawn(legend, QSize(1, 1));
}
