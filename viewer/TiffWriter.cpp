#include <viewer/TiffWriter.h>

#include <viewer/OutputFile.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <exception>

#include <tiffio.h>

namespace {

constexpr qint64 stripLength = 4 << 20;           // bytes
constexpr qint64 largestOrdinary = 4'000'000'000; // bytes of pixels; strips and fields come on top
const char* const description = "distances along the camera's axis in model units; NaN where nothing is";

} // namespace

struct TiffWriter::Private
{
    Private(OutputFile& output, const QSize& mapSize)
        : file(output)
        , size(mapSize)
    {
    }
    ~Private()
    {
        if (tiff) TIFFClose(tiff);
    }
    qint64 rowLength() const { return size.width() * static_cast<qint64>(sizeof(float)); }
    void open();
    bool setFields();
    [[noreturn]] void fail() const
    {
        if (writeFailure) std::rethrow_exception(writeFailure);
        file.fail(problem);
    }

    // What the library works with instead of a file of its own.
    static OutputFile& fileOf(thandle_t data) { return static_cast<Private*>(data)->file; }
    static tmsize_t read(thandle_t, void*, tmsize_t) { return 0; } // it has no need to
    static tmsize_t write(thandle_t data, void* bytes, tmsize_t count)
    {
        try {
            fileOf(data).write(static_cast<const char*>(bytes), count);
            return count;
        } catch (...) { // which the library would not let through
            static_cast<Private*>(data)->writeFailure = std::current_exception();
            return -1;
        }
    }
    static toff_t seek(thandle_t data, toff_t offset, int origin)
    {
        QIODevice& device = fileOf(data).device();
        const qint64 from = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? device.pos() : device.size();
        return device.seek(from + static_cast<qint64>(offset)) ? static_cast<toff_t>(device.pos())
                                                               : static_cast<toff_t>(-1);
    }
    static int close(thandle_t) { return 0; }
    static toff_t fileSize(thandle_t data) { return static_cast<toff_t>(fileOf(data).device().size()); }
    static int onError(TIFF*, void* data, const char*, const char* format, va_list arguments)
    {
        QString& text = static_cast<Private*>(data)->problem;
        if (text.isEmpty()) text = QString::vasprintf(format, arguments);
        return 1; // nothing else shall tell it
    }
    static int onWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

    OutputFile& file;
    QSize size;
    TIFF* tiff = nullptr;
    std::uint32_t row = 0;
    std::exception_ptr writeFailure;
    QString problem; // what the library said first
};

void TiffWriter::Private::open()
{
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options, onError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, onWarning, this);
    const bool isOrdinary = rowLength() * size.height() <= largestOrdinary;
    tiff = TIFFClientOpenExt("", isOrdinary ? "w" : "w8", this, read, write, seek, close, fileSize, nullptr,
                             nullptr, options);
    TIFFOpenOptionsFree(options);
}

bool TiffWriter::Private::setFields()
{
    const auto rowsOfStrip =
        static_cast<std::uint32_t>(std::clamp<qint64>(stripLength / rowLength(), 1, size.height()));
    return TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(size.width())) &&
           TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(size.height())) &&
           TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1) && TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 32) &&
           TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_IEEEFP) &&
           TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK) &&
           TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) &&
           TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT) &&
           TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rowsOfStrip) &&
           TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, description);
}

TiffWriter::TiffWriter(OutputFile& file, const QSize& size)
    : m_private(std::make_unique<Private>(file, size))
{
    m_private->open();
    if (!m_private->tiff || !m_private->setFields()) m_private->fail();
}

TiffWriter::~TiffWriter() = default;

void TiffWriter::write(const float* distances, int rowCount)
{
    Private& d = *m_private;
    for (int i = 0; i < rowCount; ++i, distances += d.size.width())
        if (TIFFWriteScanline(d.tiff, const_cast<float*>(distances), d.row++, 0) != 1) d.fail();
}

void TiffWriter::finish()
{
    if (TIFFWriteDirectory(m_private->tiff) != 1) m_private->fail();
}
