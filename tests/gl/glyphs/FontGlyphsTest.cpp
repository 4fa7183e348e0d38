#include "GlyphsTest.h"

#include <Viewer3dModule/drawables/TextureFactory.h>
#include <Viewer3dModule/drawers/FontGlyphTextureFactory.h>

#include <QtGui/QGlyphRun>
#include <QtGui/QPainter>
#include <QtGui/QRawFont>
#include <QtGui/QTextLayout>

#include <cmath>
#include <cstdio>
#include <set>

// Texts of glyphs, beside the same texts as Qt paints them.
namespace {

constexpr int textMargin = 1;

QFont textFont(int pixels, QFont::HintingPreference hinting = QFont::PreferFullHinting)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(pixels);
    font.setHintingPreference(hinting);
    return font;
}

struct NamedText
{
    const char* name;
    const char* text;
};

const NamedText namedTexts[] = {
    {"kerning", "AVATAR To. Ty"},
    {"combining marks", "e\u0301a\u0302o\u0308 n\u0303\u0323"},
    {"Hebrew", "\u05e9\u05dc\u05d5\u05dd 12 \u05e2\u05d5\u05dc\u05dd"},
    {"Arabic", "\u0633\u0644\u0627\u0645 \u0639\u0644\u064a\u0643\u0645"},
    {"Chinese", "\u6d4b\u91cf\u70b9"},
    {"Cyrillic", "\u0422\u043e\u0447\u043a\u0430 7"},
    {"emoji", "\U0001F600 ok"},
    {"both ways", "gate \u05e9\u05e2\u05e8 3b"},
    {"ligatures", "fi ffl W1_(j)"},
};

class FontGlyphsTest : public GlyphsTest
{
protected:
    static constexpr int Width = 400, Height = 80, Left = 40, Base = 50;

    /// White on black, as drawn by the drawer, the baseline beginning at (Left, Base).
    QImage drawn(const QString& text, const QFont& font, int margin = textMargin)
    {
        items.clear();
        LabelledItem& item = add(1, {});
        item.anchor = {2.0f * Left / Width - 1.0f, 1.0f - 2.0f * Base / Height, 0.0f};
        for (auto& [place, texture] : FontGlyphTextureFactory::get(text, font, margin))
            item.glyphs.emplace_back(glm::vec2(float(place.x()), float(-place.y())), texture);
        drawer->updateItem(&item);
        drawer->setColor(Qt::white);
        const QImage image = shown(paintContext(Width, Height));
        return image.convertToFormat(QImage::Format_RGB32); // alpha says nothing here
    }
    static QImage painted(const QString& text, const QFont& font)
    {
        QImage image(Width, Height, QImage::Format_RGB32);
        image.fill(Qt::black);
        QPainter painter(&image);
        painter.setFont(font);
        painter.setPen(Qt::white);
        painter.setLayoutDirection(Qt::LayoutDirectionAuto);
        painter.drawText(QPointF(Left, Base), text);
        return image;
    }
    static QRect inkOf(const QImage& image)
    {
        QRect ink;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (qGray(image.pixel(x, y)) > 40) ink |= QRect(x, y, 1, 1);
        return ink;
    }
    static double sumOf(const QImage& image)
    {
        double sum = 0.0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                sum += qGray(image.pixel(x, y));
        return sum;
    }
    std::size_t distinctTextures(const std::vector<FontGlyphTextureFactory::Glyph>& glyphs)
    {
        std::set<unsigned int> names;
        for (const auto& glyph : glyphs)
            names.insert(glyph.second->getTextureId());
        return names.size();
    }
};

TEST_F(FontGlyphsTest, HintedTextsLookAsQtPaintsThem)
{
    for (const int pixels : {10, 12, 17, 32})
        for (const NamedText& named : namedTexts) {
            const QString text = QString::fromUtf8(named.text);
            const QFont font = textFont(pixels);
            const QImage expected = painted(text, font);
            ASSERT_FALSE(inkOf(expected).isEmpty());
            SCOPED_TRACE(std::string(named.name) + ", " + std::to_string(pixels) + " pixels");
            // One step of 255 for the blending in another precision.
            checkImage("glyphs_hinted", drawn(text, font), expected, {1, 0});
        }
}

// Without hinting Qt puts glyphs on quarters of pixels, and here they stand on whole ones.
TEST_F(FontGlyphsTest, OtherTextsDifferByHalfAPixelAGlyph)
{
    double mostInk = 0.0;
    for (const int pixels : {12, 17, 32})
        for (const NamedText& named : namedTexts) {
            const QString text = QString::fromUtf8(named.text);
            const QFont font = textFont(pixels, QFont::PreferNoHinting);
            const QImage actual = drawn(text, font), expected = painted(text, font);
            SCOPED_TRACE(std::string(named.name) + ", " + std::to_string(pixels) + " pixels");
            const QRect a = inkOf(actual), b = inkOf(expected);
            EXPECT_LE(std::abs(a.left() - b.left()), 1);
            EXPECT_LE(std::abs(a.right() - b.right()), 1);
            EXPECT_LE(std::abs(a.top() - b.top()), 1) << "marks";
            EXPECT_LE(std::abs(a.bottom() - b.bottom()), 1);
            const double ink = std::abs(sumOf(actual) / sumOf(expected) - 1.0);
            EXPECT_LT(ink, 0.01);
            mostInk = std::max(mostInk, ink);
        }
    std::printf("unhinted texts: ink differs by at most %.1f %%\n", 100.0 * mostInk);
}

TEST_F(FontGlyphsTest, AnotherMarginShowsTheSame)
{
    const QString text = QStringLiteral("Agjy 1");
    const QImage expected = drawn(text, textFont(17), 1);
    for (const int margin : {0, 2, 5})
        checkImage("glyphs_margin", drawn(text, textFont(17), margin), expected);
}

TEST_F(FontGlyphsTest, ImagesHaveTheMarginAroundTheInk)
{
    const QFont font = textFont(20);
    const auto bare = FontGlyphTextureFactory::get(QStringLiteral("gT"), font, 0);
    const auto wide = FontGlyphTextureFactory::get(QStringLiteral("gT"), font, 3);
    ASSERT_EQ(bare.size(), 2u);
    ASSERT_EQ(wide.size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(wide[i].second->size(), bare[i].second->size() + QSize(6, 6));
        EXPECT_EQ(wide[i].first, bare[i].first + QPointF(-3, 3)) << "the lower left corner, y down";
        EXPECT_NE(wide[i].second, bare[i].second);
    }
    EXPECT_GT(bare[0].first.y(), 0.0) << "below the baseline";
    EXPECT_EQ(bare[1].first.y(), 0.0) << "on the baseline";
}

TEST_F(FontGlyphsTest, KerningBringsLettersTogether)
{
    QFont kerned = textFont(40), apart = textFont(40);
    apart.setKerning(false);
    const auto together = FontGlyphTextureFactory::get(QStringLiteral("AV"), kerned, 0);
    const auto separate = FontGlyphTextureFactory::get(QStringLiteral("AV"), apart, 0);
    EXPECT_EQ(together[0].first, separate[0].first);
    EXPECT_LT(together[1].first.x(), separate[1].first.x());
}

TEST_F(FontGlyphsTest, RightToLeftTextsReadFromTheRight)
{
    // alef, then bet with a dot: the first character is the rightmost
    const auto glyphs = FontGlyphTextureFactory::get(QString::fromUtf8("\u05d0\u05d1"), textFont(20), 0);
    const auto alef = FontGlyphTextureFactory::get(QString::fromUtf8("\u05d0"), textFont(20), 0);
    ASSERT_EQ(glyphs.size(), 2u);
    double alefX = -1.0, betX = -1.0;
    for (const auto& [place, texture] : glyphs)
        (texture == alef[0].second ? alefX : betX) = place.x();
    EXPECT_GE(betX, 0.0);
    EXPECT_GT(alefX, betX);
    EXPECT_LT(alefX, 100.0) << "from the beginning of the line on";
}

TEST_F(FontGlyphsTest, TextsWithoutInkHaveNoGlyphs)
{
    for (const char* text : {"", " ", "   ", "\t", "\u00a0\u2003", "\u200b"})
        EXPECT_TRUE(FontGlyphTextureFactory::get(QString::fromUtf8(text), textFont(12), 1).empty()) << text;
    EXPECT_EQ(FontGlyphTextureFactory::get(QStringLiteral("a b"), textFont(12), 1).size(), 2u);
}

TEST_F(FontGlyphsTest, TexturesAreMadeOnce)
{
    const QFont font = textFont(23);
    GlCalls calls(*gl);
    const auto first = FontGlyphTextureFactory::get(QStringLiteral("abcab"), font, 1);
    EXPECT_EQ(calls.textureUploads, 3);
    const auto second = FontGlyphTextureFactory::get(QStringLiteral("cab"), font, 1);
    EXPECT_EQ(calls.textureUploads, 3);
    EXPECT_EQ(first[0].second, first[3].second);
    EXPECT_EQ(second[0].second, first[2].second);
    QFont bold = font;
    bold.setBold(true);
    QFont stretched = font;
    stretched.setStretch(150);
    for (const QFont& other : {bold, stretched, textFont(24), textFont(23, QFont::PreferNoHinting)})
        EXPECT_NE(FontGlyphTextureFactory::get(QStringLiteral("a"), other, 1)[0].second, first[0].second);
}

TEST_F(FontGlyphsTest, KeysAreThoseOfTheRunAndTheGlyph)
{
    QTextLayout layout(QStringLiteral("W"), textFont(21));
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    const QGlyphRun run = layout.glyphRuns().front();
    const auto glyphs = FontGlyphTextureFactory::get(run, QStringLiteral("a key of its own/"), 1);
    ASSERT_EQ(glyphs.size(), 1u);
    const QString key = QStringLiteral("a key of its own/") + QString::number(run.glyphIndexes().front());
    EXPECT_EQ(TextureFactory::instance().find(key), glyphs[0].second);
    EXPECT_EQ(FontGlyphTextureFactory::get(run, QStringLiteral("another/"), 1)[0].second->size(),
              glyphs[0].second->size());
    EXPECT_NE(FontGlyphTextureFactory::get(run, QStringLiteral("another/"), 1)[0].second, glyphs[0].second);
}

TEST_F(FontGlyphsTest, TexturesNobodyUsesCanBeGivenUp)
{
    TextureFactory& factory = TextureFactory::instance();
    factory.removeUnused();
    const std::size_t before = factory.getSize();
    {
        const auto used = FontGlyphTextureFactory::get(QStringLiteral("xyz"), textFont(19), 1);
        factory.removeUnused();
        EXPECT_EQ(factory.getSize(), before + 3);
    }
    factory.removeUnused();
    EXPECT_EQ(factory.getSize(), before);
}

TEST_F(FontGlyphsTest, WithoutContextGlyphsAreLaidOutAndNotKept)
{
    TextureFactory& factory = TextureFactory::instance();
    const std::size_t before = factory.getSize();
    scene->getContext().doneCurrent();
    const auto without = FontGlyphTextureFactory::get(QStringLiteral("Q"), textFont(27), 1);
    ASSERT_TRUE(scene->makeCurrent());
    ASSERT_EQ(without.size(), 1u);
    EXPECT_EQ(without[0].second->getTextureId(), 0u);
    EXPECT_EQ(factory.getSize(), before);
    const auto with = FontGlyphTextureFactory::get(QStringLiteral("Q"), textFont(27), 1);
    EXPECT_NE(with[0].second->getTextureId(), 0u);
    EXPECT_EQ(with[0].first, without[0].first);
}

TEST_F(FontGlyphsTest, ThreeHundredGlyphsAreThreeHundredTextures)
{
    QString text;
    for (ushort code = 0x21; text.size() < 300; ++code)
        if (QRawFont::fromFont(textFont(12)).supportsCharacter(QChar(code)) && QChar(code).isPrint() &&
            !QChar(code).isSpace() && !QChar(code).isMark() && code != 0xAD)
            text.append(QChar(code));
    const auto glyphs = FontGlyphTextureFactory::get(text, textFont(12), 1);
    const std::size_t textureCount = distinctTextures(glyphs);
    EXPECT_GE(glyphs.size(), 290u) << "but for what is joined";
    EXPECT_GE(textureCount, 290u);
    LabelledItem& item = add(1, {});
    for (const auto& [place, texture] : glyphs)
        item.glyphs.emplace_back(glm::vec2(float(place.x()), float(-place.y())), texture);
    drawer->updateItem(&item);
    EXPECT_EQ(drawsOf(view()).size(), textureCount);
}

} // namespace
