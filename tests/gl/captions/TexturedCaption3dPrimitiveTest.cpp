#include "CaptionTest.h"

#include <tests/support/GlObjects.h>

#include <Viewer3dModule/drawables/captionImages.h>
#include <framework/graphics/CGraphicsTextItem.h>

#include <QtCore/QElapsedTimer>
#include <QtGui/QAbstractTextDocumentLayout>
#include <QtGui/QFontMetricsF>
#include <QtGui/QTextDocument>
#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <cstdio>

using Primitive = TexturedCaption3dPrimitive;
using TexturedCaption3dPrimitiveTest = CaptionTest;

namespace {

struct Script
{
    const char* name;
    QString text;
};

std::vector<Script> scripts()
{
    return {{"Latin", QStringLiteral("Main Street 12 (gq)")},
            {"Cyrillic", QString::fromUtf8("Главная улица, 5")},
            {"Greek", QString::fromUtf8("Πλατεία Συντάγματος")},
            {"Hebrew", QString::fromUtf8("רחוב הנביאים 7!")},
            {"Arabic", QString::fromUtf8("شارع الملك 3")},
            {"Chinese", QString::fromUtf8("长安街 1 号")},
            {"Emoji", QString::fromUtf8("🏠 home 👩‍👩‍👧")},
            {"Combining", QString::fromUtf8("Ä e\u0301 ñ")},
            {"Mixed", QString::fromUtf8("Gate שער باب 门")}};
}

} // namespace

// --- sizes and offsets
// -----------------------------------------------------------------------------------------------

TEST_F(TexturedCaption3dPrimitiveTest, StartsWithABufferOfOnePointAndATexture)
{
    Primitive caption;
    EXPECT_NE(caption.getTextureId(), 0u);
    EXPECT_EQ(caption.getVertexCount(), 1);
    EXPECT_EQ(caption.offset(), glm::vec2(0.0f));
    EXPECT_EQ(caption.imageSize(), QSize(0, 0));
    GLint bytes = 0;
    gl->glBindBuffer(GL_ARRAY_BUFFER, caption.getVBO());
    gl->glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &bytes);
    EXPECT_EQ(bytes, 12);
    const Primitive::Data& data = caption.getData();
    EXPECT_TRUE(data.text.isEmpty());
    EXPECT_EQ(data.font, QFont());
    EXPECT_FALSE(data.color.isValid());
    EXPECT_EQ(data.size, 0.2);
    EXPECT_EQ(data.alignment, 0);
    caption.draw(view(), 1); // nothing, and no message of the driver
    caption.setPosition({1, 2, 3});
    EXPECT_EQ(caption.getVertex(0), glm::vec3(1, 2, 3));
}

TEST_F(TexturedCaption3dPrimitiveTest, ClearsAPendingErrorWhenItIsMade)
{
    gl->glEnable(GL_TEXTURE_2D + 12345u);
    Primitive caption;
    EXPECT_EQ(gl->glGetError(), 0u);
    debug->take();
}

TEST_F(TexturedCaption3dPrimitiveTest, SizeTenIsAPictureOfTwentyPixels)
{
    Primitive caption;
    caption.setText("Depot", font(), green, 10.0, Qt::AlignLeft | Qt::AlignTop);
    EXPECT_EQ(caption.imageSize().height(), 20);
    const Primitive::Data& data = caption.getData();
    EXPECT_EQ(data.size, 20.0);
    EXPECT_EQ(data.text, "Depot");
    EXPECT_EQ(data.font, font());
    EXPECT_EQ(data.color, green);
    EXPECT_EQ(data.alignment, int(Qt::AlignLeft | Qt::AlignTop));
}

TEST_F(TexturedCaption3dPrimitiveTest, SizesOfTextsFollowTheFormula)
{
    Primitive caption;
    const std::vector<Script> texts = scripts();
    for (int i = 0; i < 200; ++i) {
        const QString text = texts[std::size_t(i) % texts.size()].text.left(1 + i % 17);
        QFont used = font(5.0 + i % 23, i % 3 == 0 ? "DejaVu Serif" : "DejaVu Sans Mono");
        used.setBold(i % 4 == 0);
        used.setItalic(i % 5 == 0);
        const double size = 3.0 + 0.37 * i;
        caption.setText(text, used, green, size, Qt::AlignLeft);
        const QFontMetricsF metrics(used);
        const double scale = 2.0 * size / metrics.height();
        const QSize expected(int(metrics.horizontalAdvance(text) * scale), int(2.0 * size));
        EXPECT_EQ(caption.imageSize(), expected) << i;
        EXPECT_EQ(textureImage(caption.getTextureId()).size(), expected) << i;
    }
}

TEST_F(TexturedCaption3dPrimitiveTest, ACentredTextLiesHalfItsWidthToTheLeft)
{
    Primitive caption;
    double size = 8.0;
    while (caption.imageSize().width() != 101) {
        ASSERT_LT(size, 30.0);
        caption.setText("Main Street", font(), green, size += 0.01, Qt::AlignHCenter);
    }
    EXPECT_EQ(caption.offset(), glm::vec2(-50.5f, 0.0f));
    EXPECT_EQ(caption.getData().alignment, 4);
}

TEST_F(TexturedCaption3dPrimitiveTest, OtherAlignmentsLeaveTheOffset)
{
    Primitive caption;
    const Qt::Alignment others[] = {Qt::AlignLeft, Qt::AlignRight, Qt::AlignCenter,
                                    Qt::AlignHCenter | Qt::AlignTop};
    for (const Qt::Alignment alignment : others) {
        caption.setText("A", font(), green, 10.0, alignment);
        EXPECT_EQ(caption.offset(), glm::vec2(0.0f));
    }
    caption.setText("A", font(), green, 10.0, Qt::AlignHCenter);
    const glm::vec2 centred = caption.offset();
    caption.setText("AAAA", font(), green, 10.0, Qt::AlignLeft);
    EXPECT_EQ(caption.offset(), centred);
    caption.setOffset({3, 4});
    caption.setText("A", font(), green, 10.0, Qt::AlignHCenter);
    EXPECT_EQ(caption.offset(), glm::vec2(centred.x, 4.0f)) << "only x is the text's";
}

TEST_F(TexturedCaption3dPrimitiveTest, WhatHasNoPixelsShowsNothing)
{
    Primitive caption;
    const auto isEmpty = [&] {
        shown();
        caption.draw(view(), 1);
        return caption.imageSize().isEmpty() && textureImage(caption.getTextureId()).isNull();
    };
    caption.setImage(pattern(3, 3));
    EXPECT_FALSE(isEmpty());
    caption.setText({}, font(), green, 10.0, Qt::AlignHCenter);
    EXPECT_EQ(caption.imageSize().width(), 0);
    EXPECT_EQ(caption.offset(), glm::vec2(0.0f));
    EXPECT_TRUE(isEmpty());
    for (const double size : {0.0, -3.0, 0.4, std::nan("")}) {
        caption.setText("A", font(), green, size, Qt::AlignLeft);
        EXPECT_TRUE(isEmpty()) << size;
        caption.setMultiLineText("A", font(), green, size);
        EXPECT_TRUE(isEmpty()) << size;
    }
    caption.setImage(pattern(3, 3));
    caption.setImage(QImage());
    EXPECT_TRUE(isEmpty());
    caption.setMultiLineText({}, font(), green, 10.0);
    EXPECT_TRUE(isEmpty());
}

TEST_F(TexturedCaption3dPrimitiveTest, AMebibyteOfTextIsCutWithOneLine)
{
    const int longest = GlTexture::longestSide(*gl);
    QString words, lines;
    while (words.size() < (1 << 20))
        words += QString::fromUtf8("many words שלום 街 ");
    lines = QString(words).replace(' ', '\n');
    Primitive caption;
    QElapsedTimer timer;
    timer.start();
    caption.setText(words, font(), green, 10.0, Qt::AlignHCenter);
    std::printf("1 MiB as a line: %lld ms\n", timer.restart());
    EXPECT_EQ(caption.imageSize(), QSize(longest, 20));
    QStringList log = LogTrap::take();
    ASSERT_EQ(log.size(), 1);
    EXPECT_TRUE(log[0].startsWith("The caption \"many words")) << qPrintable(log[0]);
    caption.setMultiLineText(lines, font(), green, 5.0);
    std::printf("1 MiB as lines: %lld ms\n", timer.restart());
    EXPECT_EQ(caption.imageSize().height(), longest);
    log = LogTrap::take();
    EXPECT_EQ(log.size(), 1);
    caption.setText("Tower", font(), green, 1e9, Qt::AlignLeft);
    EXPECT_LE(caption.imageSize().width(), longest);
    EXPECT_LE(caption.imageSize().width() * caption.imageSize().height(), caption_images::mostPixels);
    EXPECT_EQ(LogTrap::take().size(), 1);
    caption.setText(QString(caption_images::longestText, QChar(0x301)), font(), green, 5.0, Qt::AlignLeft);
    LogTrap::take(); // no more characters than there may be; how wide they are is the font's
}

TEST_F(TexturedCaption3dPrimitiveTest, APictureThatTheDriverCannotTakeIsScaledDown)
{
    const int longest = GlTexture::longestSide(*gl);
    Primitive caption;
    caption.setImage(QImage(2 * longest, 10, QImage::Format_Grayscale8));
    EXPECT_EQ(caption.imageSize(), QSize(longest, 5));
    EXPECT_EQ(LogTrap::take().size(), 1);
}

// --- ownership
// ---------------------------------------------------------------------------------------------------------

TEST_F(TexturedCaption3dPrimitiveTest, MovesItsObjectsOnly)
{
    const GlObjects before = GlObjects::count(*gl);
    {
        auto source = std::make_unique<Primitive>();
        source->setText("Depot", font(), green, 10.0, Qt::AlignHCenter);
        const unsigned int texture = source->getTextureId();
        const unsigned int buffer = source->getVBO();
        const QSize size = source->imageSize();
        const Primitive moved(std::move(*source));
        EXPECT_EQ(moved.getTextureId(), texture);
        EXPECT_EQ(moved.getVBO(), buffer);
        EXPECT_EQ(moved.imageSize(), size);
        EXPECT_EQ(moved.offset(), glm::vec2(0.0f));
        EXPECT_TRUE(moved.getData().text.isEmpty());
        EXPECT_EQ(moved.getData().size, 0.2);
        EXPECT_EQ(source->getTextureId(), 0u);
        EXPECT_EQ(source->getVBO(), 0u);
        source->setPosition({1, 1, 1});
        source->setImage(pattern(2, 2));
        source->draw(view(), 1);
        source.reset();
        EXPECT_TRUE(gl->glIsTexture(texture));
        EXPECT_TRUE(gl->glIsBuffer(buffer));
    }
    EXPECT_EQ(GlObjects::count(*gl), before);
}

TEST_F(TexturedCaption3dPrimitiveTest, WithoutAContextItDoesNothing)
{
    scene->doneCurrent();
    {
        Primitive caption;
        caption.setPosition({1, 1, 1});
        caption.setImage(pattern(2, 2));
        caption.setText("A", font(), green, 10.0, Qt::AlignLeft);
        caption.setMultiLineText("A", font(), green, 10.0);
        caption.draw(view(), 1);
        EXPECT_EQ(caption.getTextureId(), 0u);
        EXPECT_EQ(caption.getData().size, 20.0);
    }
    scene->makeCurrent();
}

TEST_F(TexturedCaption3dPrimitiveTest, TheTextureIsFilteredAndClamped)
{
    Primitive caption;
    caption.setImage(pattern(8, 4));
    gl->glBindTexture(GL_TEXTURE_2D, caption.getTextureId());
    const auto parameter = [this](GLenum name) {
        GLint value = 0;
        gl->glGetTexParameteriv(GL_TEXTURE_2D, name, &value);
        return value;
    };
    EXPECT_EQ(parameter(GL_TEXTURE_WRAP_S), GL_CLAMP_TO_EDGE);
    EXPECT_EQ(parameter(GL_TEXTURE_WRAP_T), GL_CLAMP_TO_EDGE);
    EXPECT_EQ(parameter(GL_TEXTURE_MAG_FILTER), GL_LINEAR);
    EXPECT_EQ(parameter(GL_TEXTURE_MIN_FILTER), GL_LINEAR_MIPMAP_LINEAR);
    GLint width = 0;
    gl->glGetTexLevelParameteriv(GL_TEXTURE_2D, 2, GL_TEXTURE_WIDTH, &width);
    EXPECT_EQ(width, 2) << "smaller levels";
    gl->glBindTexture(GL_TEXTURE_2D, 0);
}

// --- what is seen
// ------------------------------------------------------------------------------------------------------

TEST_F(TexturedCaption3dPrimitiveTest, PicturesOfAnyFormatLieOnTheirPixelsAtAnyDistance)
{
    QImage expected = black();
    QPainter(&expected).drawImage(20, 50 - 24, pattern(31, 24));
    const glm::mat4 projection = glm::perspective(0.8f, float(Width) / Height, 0.1f, 2000.0f);
    for (const QImage::Format format : {QImage::Format_RGBA8888, QImage::Format_ARGB32, QImage::Format_RGB32,
                                        QImage::Format_RGB888, QImage::Format_ARGB32_Premultiplied})
        for (const float distance : {0.2f, 3.0f, 1500.0f}) {
            PaintContext context = view();
            context.projection = projection;
            makeItem();
            const glm::vec3 ndc = corner(20, 50);
            const glm::vec3 eye(ndc.x * distance / projection[0][0], ndc.y * distance / projection[1][1],
                                -distance);
            item->addCaption(eye, pattern(31, 24, format));
            // the point is exact to a few thousandths of a pixel, by which the filter mixes neighbours
            checkImage("caption_picture", drawFrame(context), expected, {2, 0});
        }
}

TEST_F(TexturedCaption3dPrimitiveTest, RowsWithGapsBetweenThemAreNoMatter)
{
    const QImage wide = pattern(31, 24);
    makeItem().addCaption(corner(20, 50),
                          QImage(wide.constBits(), 7, 24, wide.bytesPerLine(), wide.format()));
    QImage expected = black();
    QPainter(&expected).drawImage(20, 50 - 24, wide.copy(0, 0, 7, 24));
    checkImage("caption_rows", shown(), expected, {1, 0});
}

TEST_F(TexturedCaption3dPrimitiveTest, TextsOfAllScriptsLookAsQtPaintsThem)
{
    for (const Script& script : scripts()) {
        makeItem().addCaption(corner(10, 50), script.text, font(), green, 9.0, Qt::AlignLeft);
        const QSize size = item->captions()[0]->imageSize();
        QImage expected = black();
        QPainter painter(&expected);
        painter.translate(10, 50 - 18);
        painter.setClipRect(QRect(QPoint(0, 0), size));
        const double scale = 18.0 / QFontMetricsF(font()).height();
        painter.scale(scale, scale);
        painter.setFont(font());
        painter.setPen(green);
        painter.setLayoutDirection(Qt::LayoutDirectionAuto);
        painter.drawText(QPointF(0.0, QFontMetricsF(font()).ascent()), script.text);
        painter.end();
        const QImage picture = shown();
        EXPECT_GT(inked(picture), 150) << script.name;
        // a baseline between two rows of pixels may be rounded otherwise by the two ways of painting
        checkImage((std::string("caption_") + script.name).c_str(), picture, expected, {6, 0});
    }
}

TEST_F(TexturedCaption3dPrimitiveTest, AFontLargerThanTheCaptionIsShownToItsEnd)
{
    makeItem().addCaption(corner(10, 50), "Main Street", font(40.0), green, 9.0, Qt::AlignLeft);
    const QSize size = item->captions()[0]->imageSize();
    const QImage picture = shown();
    const QRect end(10 + size.width() * 9 / 10, 30, size.width() / 10, 20);
    EXPECT_GT(inked(picture.copy(end)), 10);
}

TEST_F(TexturedCaption3dPrimitiveTest, CentredTextStandsInTheMiddleOfItsPoint)
{
    makeItem().addCaption(corner(120, 40), "HHHHHHHH", font(), Qt::white, 8.0, Qt::AlignHCenter);
    const QImage picture = shown();
    double sum = 0.0, weight = 0.0;
    for (int y = 0; y < Height; ++y)
        for (int x = 0; x < Width; ++x) {
            const double ink = qGray(picture.pixel(x, y));
            sum += ink * (x + 0.5);
            weight += ink;
        }
    ASSERT_GT(weight, 0.0);
    EXPECT_NEAR(sum / weight, 120.0, 0.75);
}

TEST_F(TexturedCaption3dPrimitiveTest, TransparentPixelsHaveTheColourOfTheText)
{
    Primitive caption;
    for (const bool severalLines : {false, true}) {
        if (severalLines)
            caption.setMultiLineText("Depot\nHall", font(), green, 10.0);
        else
            caption.setText("Depot", font(), green, 10.0, Qt::AlignLeft);
        const QImage image = textureImage(caption.getTextureId());
        ASSERT_FALSE(image.isNull());
        int transparent = 0, opaque = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) {
                const QRgb pixel = reinterpret_cast<const QRgb*>(image.constScanLine(y))[x];
                const int red = pixel & 0xFFu, alpha = pixel >> 24; // as they lie in memory
                transparent += alpha == 0;
                opaque += alpha > 200;
                // of a faint pixel little is left of the colour
                EXPECT_LE(std::abs(red - green.red()), alpha == 0 ? 0 : 255 / alpha + 2) << alpha;
                if (alpha == 0) {
                    EXPECT_EQ(pixel, QRgb(30u | 200u << 8 | 90u << 16));
                }
            }
        EXPECT_GT(transparent, 100);
        EXPECT_GT(opaque, 10);
    }
}

// --- several lines
// -----------------------------------------------------------------------------------------------------

TEST_F(TexturedCaption3dPrimitiveTest, SeveralLinesAreLaidOutAndScaledByTheFormula)
{
    Primitive caption;
    caption.setText("before", font(), green, 4.0, Qt::AlignRight);
    const QStringList texts = {QStringLiteral("one line"),
                               QStringLiteral("two\nlines, the second one longer"),
                               QStringLiteral("<b>Church</b><br>built in <i>1412</i>"),
                               QStringLiteral("a < b & c > d"), QString::fromUtf8("שלום\nעולם ועוד")};
    for (const QString& text : texts)
        for (const double size : {4.0, 7.3, 20.0}) {
            caption.setMultiLineText(text, font(12.0), green, size);
            const double scale = 2.0 * size / QFontMetricsF(font(12.0)).height();
            const QRectF rect = CGraphicsTextItem(text).boundingRect();
            EXPECT_EQ(caption.imageSize(), QSize(int(rect.width() * scale), int(rect.height() * scale)))
                << qPrintable(text);
        }
    EXPECT_EQ(caption.getData().text, "before");
    EXPECT_EQ(caption.getData().size, 8.0);
    EXPECT_EQ(caption.offset(), glm::vec2(0.0f));
}

TEST_F(TexturedCaption3dPrimitiveTest, SeveralLinesLookAsQtPaintsThem)
{
    const QStringList texts = {QStringLiteral("two\nlines gq"),
                               QStringLiteral("<b>Church</b><br><span style='color:#3060ff'>1412</span>"),
                               QString::fromUtf8("רחוב\nהנביאים 7!")};
    for (const QString& text : texts) {
        makeItem().addCaption(corner(10, 55), QImage());
        Primitive& caption = *item->captions()[0];
        const double scale = 18.0 / QFontMetricsF(QFont()).height();
        caption.setMultiLineText(text, QFont(), green, 9.0);

        QTextDocument document;
        document.setDocumentMargin(0.0);
        if (text.startsWith('<'))
            document.setHtml(text);
        else
            document.setPlainText(text);
        document.setTextWidth(document.idealWidth());
        QImage expected = black();
        QPainter painter(&expected);
        painter.translate(10, 55 - caption.imageSize().height());
        painter.scale(scale, scale);
        QAbstractTextDocumentLayout::PaintContext look;
        look.palette.setColor(QPalette::Text, green);
        document.documentLayout()->draw(&painter, look);
        painter.end();
        const QImage picture = shown();
        EXPECT_GT(inked(picture), 150) << qPrintable(text);
        checkImage("caption_lines", picture, expected, {6, 0});
    }
}
