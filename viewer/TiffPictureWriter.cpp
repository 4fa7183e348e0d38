#include <viewer/TiffPictureWriter.h>

#include <tiffio.h>

namespace {

constexpr qint64 stripLength = 1 << 20; // bytes
// What zlib gains beyond this level is some percent, for several times the work.
constexpr int compressionLevel = 4;

} // namespace

TiffPictureWriter::TiffPictureWriter(OutputFile& file, const QSize& size, bool hasAlpha)
    : PictureWriter(hasAlpha)
    , m_tiff(file, size, hasAlpha ? 4 : 3, stripLength)
{
    TIFF* tiff = m_tiff.handle();
    const std::uint16_t straight = EXTRASAMPLE_UNASSALPHA;
    const bool isSet = TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, hasAlpha ? 4 : 3) &&
                       TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8) &&
                       TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB) &&
                       TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE) &&
                       TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL) &&
                       TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, compressionLevel) &&
                       (!hasAlpha || TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &straight));
    if (!isSet) m_tiff.fail();
}

void TiffPictureWriter::writeRow(const uchar* row)
{
    m_tiff.writeRow(row);
}

void TiffPictureWriter::finish()
{
    m_tiff.finish();
}
