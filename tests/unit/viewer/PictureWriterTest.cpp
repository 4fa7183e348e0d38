#include <viewer/OutputFile.h>
#include <viewer/PictureFile.h>
#include <viewer/PictureWriter.h>

#include <framework/ksp/CommonError.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

#include <tiffio.h>

namespace {

QImage patternImage(const QSize& size, QImage::Format format)
{
    QImage image(size, format);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixelColor(x, y, QColor(x * 7 % 256, y * 13 % 256, (x + y) % 256, 255 - (x * y) % 250));
    return image;
}

/// A TIFF picture, read by the library.
QImage tiffOf(const QString& path, QImage::Format format)
{
    TIFF* tiff = TIFFOpen(qPrintable(path), "r");
    if (!tiff) return {};
    std::uint32_t width = 0, height = 0;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
    QImage image(static_cast<int>(width), static_cast<int>(height), format);
    if (TIFFScanlineSize(tiff) == static_cast<tmsize_t>(width) * image.depth() / 8)
        for (std::uint32_t row = 0; row < height; ++row)
            TIFFReadScanline(tiff, image.scanLine(static_cast<int>(row)), row, 0);
    TIFFClose(tiff);
    return image;
}

} // namespace

class PictureWriterTest : public ::testing::Test
{
protected:
    QString path(const QString& name) const { return QDir(m_folder.path()).filePath(name); }
    QStringList files() const { return QDir(m_folder.path()).entryList(QDir::Files); }

private:
    QTemporaryDir m_folder;
};

TEST_F(PictureWriterTest, PixelsReadBackAsTheyWere)
{
    for (const auto format : {QImage::Format_RGB888, QImage::Format_RGBA8888})
        for (const QSize& size : {QSize(1, 1), QSize(300, 200), QSize(5, 3000), QSize(70000, 2)}) {
            const QImage image = patternImage(size, format);
            PictureFile::write(path("a.png"), image);
            const QImage back(path("a.png"));
            EXPECT_EQ(back.convertToFormat(format), image);
            EXPECT_EQ(back.hasAlphaChannel(), format == QImage::Format_RGBA8888);
            for (const char* name : {"a.tif", "a.TIFF"}) {
                PictureFile::write(path(name), image);
                EXPECT_EQ(tiffOf(path(name), format), image) << name;
            }
        }
}

TEST_F(PictureWriterTest, TiffIsPackedAndSaysWhatItsSamplesAre)
{
    const QImage image = patternImage(QSize(1000, 3000), QImage::Format_RGBA8888);
    PictureFile::write(path("a.tif"), image);
    TIFF* tiff = TIFFOpen(qPrintable(path("a.tif")), "r");
    ASSERT_TRUE(tiff);
    std::uint16_t samples = 0, bits = 0, photometric = 0, compression = 0, extras = 0, *kinds = nullptr;
    std::uint32_t rowsOfStrip = 0;
    TIFFGetField(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
    TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric);
    TIFFGetField(tiff, TIFFTAG_COMPRESSION, &compression);
    TIFFGetField(tiff, TIFFTAG_ROWSPERSTRIP, &rowsOfStrip);
    ASSERT_EQ(TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &extras, &kinds), 1);
    EXPECT_EQ(samples, 4);
    EXPECT_EQ(bits, 8);
    EXPECT_EQ(photometric, PHOTOMETRIC_RGB);
    EXPECT_EQ(compression, COMPRESSION_ADOBE_DEFLATE);
    EXPECT_EQ(rowsOfStrip, 262u); // of 4000 bytes, 2^20 bytes together at most
    EXPECT_EQ(extras, 1);
    EXPECT_EQ(kinds[0], EXTRASAMPLE_UNASSALPHA);
    EXPECT_FALSE(TIFFIsBigTIFF(tiff));
    TIFFClose(tiff);
    EXPECT_LT(QFileInfo(path("a.tif")).size(), image.sizeInBytes() / 2);
}

TEST_F(PictureWriterTest, FileThatIsNotCommittedLeavesNothing)
{
    const QImage image = patternImage(QSize(100, 100), QImage::Format_RGB888);
    for (const char* name : {"a.png", "a.tif"}) {
        OutputFile file(path(name));
        PictureWriter::create(file, image.size(), false)->writeRow(image.constScanLine(0));
    }
    EXPECT_TRUE(files().isEmpty());
}

TEST_F(PictureWriterTest, RowsThatAreMissingAreAnError)
{
    for (const char* name : {"a.png", "a.tif"}) {
        OutputFile file(path(name));
        const auto writer = PictureWriter::create(file, QSize(2, 2), false);
        const uchar row[6] = {};
        writer->writeRow(row);
        EXPECT_THROW(writer->finish(), ksp::CommonError) << name;
    }
}
