#include <viewer/DepthWriter.h>
#include <viewer/OutputFile.h>

#include <framework/ksp/CommonError.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include <tiffio.h>

// Depth maps as files, read back by other means than those that wrote them.

namespace {

/// What is easily lost on the way: signs, infinities, the smallest numbers, and NaN with its own bits.
std::vector<float> awkwardValues(const QSize& size)
{
    using Limits = std::numeric_limits<float>;
    const float awkward[] = {
        Limits::quiet_NaN(), -0.0f,      0.1f, Limits::max(), Limits::denorm_min(), Limits::infinity(),
        -Limits::infinity(), 16777217.0f};
    std::vector<float> values(static_cast<std::size_t>(size.width() * size.height()));
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = i % 3 == 0 ? awkward[i / 3 % std::size(awkward)] : static_cast<float>(i) * 0.7f;
    return values;
}

class DepthFile : public ::testing::Test
{
protected:
    /// Writes the values in bands of so many rows.
    QString write(const QString& name, const QSize& size, const std::vector<float>& values, int rowsOfBand)
    {
        const QString path = m_folder.filePath(name);
        OutputFile file(path);
        const std::unique_ptr<DepthWriter> writer = DepthWriter::create(file, size);
        for (int row = 0; row < size.height(); row += rowsOfBand)
            writer->write(values.data() + row * size.width(), std::min(rowsOfBand, size.height() - row));
        writer->finish();
        file.commit();
        return path;
    }
    static QByteArray bytesOf(const std::vector<float>& values)
    {
        return QByteArray(reinterpret_cast<const char*>(values.data()),
                          static_cast<int>(values.size() * sizeof(float)));
    }
    static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
        return file.readAll();
    }

    QTemporaryDir m_folder;
};

/// A TIFF file of this many rows and columns of floats, read strip by strip.
struct Tiff
{
    explicit Tiff(const QString& path)
    {
        TIFF* tiff = TIFFOpen(qPrintable(path), "r");
        if (!tiff) return;
        TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
        TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
        TIFFGetField(tiff, TIFFTAG_ROWSPERSTRIP, &rowsOfStrip);
        TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
        TIFFGetField(tiff, TIFFTAG_SAMPLEFORMAT, &format);
        TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
        TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &orientation);
        for (std::uint32_t strip = 0; strip < TIFFNumberOfStrips(tiff); ++strip) {
            QByteArray bytes(static_cast<int>(TIFFStripSize(tiff)), '\0');
            const tmsize_t count = TIFFReadEncodedStrip(tiff, strip, bytes.data(), bytes.size());
            if (count > 0) pixels += bytes.left(static_cast<int>(count));
        }
        TIFFClose(tiff);
    }
    std::uint32_t width = 0, height = 0, rowsOfStrip = 0;
    std::uint16_t bits = 0, format = 0, samples = 0, orientation = 0;
    QByteArray pixels;
};

} // namespace

TEST_F(DepthFile, PfmIsItsHeadAndTheRowsFromTheBottom)
{
    const std::vector<float> values = {1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f}; // the row 1 2 3 is the upper one
    const QByteArray expected =
        QByteArray("Pf\n3 2\n-1.0\n") + QByteArray::fromHex("000080400000a0400000c040"
                                                            "0000803f0000004000004040");
    EXPECT_EQ(contentOf(write("map.pfm", QSize(3, 2), values, 2)), expected);
}

TEST_F(DepthFile, PfmKeepsEveryBitHoweverItsBandsAre)
{
    const QSize size(7, 11);
    const std::vector<float> values = awkwardValues(size);
    QByteArray expected("Pf\n7 11\n-1.0\n");
    for (int row = size.height() - 1; row >= 0; --row)
        expected += bytesOf(values).mid(row * 7 * 4, 7 * 4);
    for (const int rows : {1, 2, 4, 11})
        EXPECT_EQ(contentOf(write("map.pfm", size, values, rows)), expected) << rows;
}

TEST_F(DepthFile, TiffIsOneFloatAPixel)
{
    const Tiff tiff(write("map.tiff", QSize(7, 11), awkwardValues(QSize(7, 11)), 4));
    EXPECT_EQ(tiff.width, 7u);
    EXPECT_EQ(tiff.height, 11u);
    EXPECT_EQ(tiff.bits, 32);
    EXPECT_EQ(tiff.format, SAMPLEFORMAT_IEEEFP);
    EXPECT_EQ(tiff.samples, 1);
    EXPECT_EQ(tiff.orientation, ORIENTATION_TOPLEFT);
}

TEST_F(DepthFile, TiffKeepsEveryBitHoweverItsBandsAre)
{
    const QSize size(7, 11);
    const std::vector<float> values = awkwardValues(size);
    for (const int rows : {1, 2, 4, 11})
        EXPECT_EQ(Tiff(write("map.tif", size, values, rows)).pixels, bytesOf(values)) << rows;
}

// 2000 pixels a row: strips of 524 rows, which bands of 300 cross.
TEST_F(DepthFile, TiffHasStripsOfSomeMegabytes)
{
    const QSize size(2000, 1300);
    const std::vector<float> values = awkwardValues(size);
    const Tiff tiff(write("map.tiff", size, values, 300));
    EXPECT_EQ(tiff.rowsOfStrip, 524u);
    EXPECT_EQ(tiff.pixels, bytesOf(values));
}

TEST_F(DepthFile, TiffOfOnePixel)
{
    EXPECT_EQ(Tiff(write("map.tiff", QSize(1, 1), {2.5f}, 1)).pixels, bytesOf({2.5f}));
}

TEST_F(DepthFile, FormatIsThatOfTheExtensionInAnyCase)
{
    EXPECT_TRUE(contentOf(write("map.PFM", QSize(1, 1), {1.0f}, 1)).startsWith("Pf\n"));
    EXPECT_TRUE(contentOf(write("map.TIF", QSize(1, 1), {1.0f}, 1)).startsWith("II*"));
}

TEST_F(DepthFile, WhatIsNotCommittedIsNotThere)
{
    for (const char* name : {"map.pfm", "map.tiff"}) {
        OutputFile file(m_folder.filePath(name));
        const std::unique_ptr<DepthWriter> writer = DepthWriter::create(file, QSize(4, 4));
        const std::vector<float> values(8, 1.0f);
        writer->write(values.data(), 2);
    }
    EXPECT_TRUE(QDir(m_folder.path()).isEmpty());
}
