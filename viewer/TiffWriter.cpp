#include <viewer/TiffWriter.h>

#include <tiffio.h>

namespace {

constexpr qint64 stripLength = 4 << 20; // bytes
const char* const description = "distances along the camera's axis in model units; NaN where nothing is";

} // namespace

TiffWriter::TiffWriter(OutputFile& file, const QSize& size)
    : m_tiff(file, size, sizeof(float), stripLength)
    , m_width(size.width())
{
    TIFF* tiff = m_tiff.handle();
    const bool isSet = TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1) &&
                       TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 32) &&
                       TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_IEEEFP) &&
                       TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK) &&
                       TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, description);
    if (!isSet) m_tiff.fail();
}

void TiffWriter::write(const float* distances, int rowCount)
{
    for (int i = 0; i < rowCount; ++i, distances += m_width)
        m_tiff.writeRow(distances);
}

void TiffWriter::finish()
{
    m_tiff.finish();
}
