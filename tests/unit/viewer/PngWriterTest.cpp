#include <viewer/OutputFile.h>
#include <viewer/PictureFile.h>
#include <viewer/PngWriter.h>

#include <framework/ksp/CommonError.h>

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QImage pattern(const QSize& size, QImage::Format format)
{
    QImage image(size, format);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixelColor(x, y, QColor(x * 7 % 256, y * 13 % 256, (x + y) % 256, 255 - (x * y) % 250));
    return image;
}

} // namespace

class PngWriterTest : public ::testing::Test
{
protected:
    QString path(const QString& name) const { return QDir(m_folder.path()).filePath(name); }
    QStringList files() const { return QDir(m_folder.path()).entryList(QDir::Files); }

private:
    QTemporaryDir m_folder;
};

TEST_F(PngWriterTest, PixelsReadBackAsTheyWere)
{
    for (const auto format : {QImage::Format_RGB888, QImage::Format_RGBA8888})
        for (const QSize& size : {QSize(1, 1), QSize(300, 200), QSize(5, 3000), QSize(70000, 2)}) {
            const QImage image = pattern(size, format);
            PictureFile::write(path("a.png"), image);
            const QImage back(path("a.png"));
            EXPECT_EQ(back.convertToFormat(format), image);
            EXPECT_EQ(back.hasAlphaChannel(), format == QImage::Format_RGBA8888);
        }
}

TEST_F(PngWriterTest, FileThatIsNotCommittedLeavesNothing)
{
    const QImage image = pattern(QSize(100, 100), QImage::Format_RGB888);
    {
        OutputFile file(path("a.png"));
        PngWriter png(file, image.size(), false);
        png.writeRow(image.constScanLine(0));
    }
    EXPECT_TRUE(files().isEmpty());
}

TEST_F(PngWriterTest, RowsThatAreMissingAreAnError)
{
    OutputFile file(path("a.png"));
    PngWriter png(file, QSize(2, 2), false);
    const uchar row[6] = {};
    png.writeRow(row);
    EXPECT_THROW(png.finish(), ksp::CommonError);
}
