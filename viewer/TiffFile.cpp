#include <viewer/TiffFile.h>

#include <viewer/OutputFile.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include <tiffio.h>

namespace {

constexpr qint64 largestOrdinary = 4'000'000'000; // bytes of pixels; strips and fields come on top

} // namespace

// What the library works with instead of a file of its own.
struct TiffFile::Callbacks
{
    static TiffFile& self(void* data) { return *static_cast<TiffFile*>(data); }
    static QIODevice& device(thandle_t data) { return self(data).m_file.device(); }

    static tmsize_t read(thandle_t, void*, tmsize_t) { return 0; } // it has no need to
    static tmsize_t write(thandle_t data, void* bytes, tmsize_t count)
    {
        try {
            self(data).m_file.write(static_cast<const char*>(bytes), count);
            return count;
        } catch (...) { // which the library would not let through
            self(data).m_writeFailure = std::current_exception();
            return -1;
        }
    }
    static toff_t seek(thandle_t data, toff_t offset, int origin)
    {
        QIODevice& file = device(data);
        const qint64 from = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? file.pos() : file.size();
        return file.seek(from + static_cast<qint64>(offset)) ? static_cast<toff_t>(file.pos())
                                                             : static_cast<toff_t>(-1);
    }
    static int close(thandle_t) { return 0; }
    static toff_t size(thandle_t data) { return static_cast<toff_t>(device(data).size()); }
    static int onError(TIFF*, void* data, const char*, const char* format, va_list arguments)
    {
        QString& text = self(data).m_problem;
        if (text.isEmpty()) text = QString::vasprintf(format, arguments);
        return 1; // nothing else shall tell it
    }
    static int onWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }
};

TiffFile::TiffFile(OutputFile& file, const QSize& size, int bytesOfPixel, qint64 bytesOfStrip)
    : m_file(file)
    , m_row(static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(bytesOfPixel))
    , m_rowCount(static_cast<std::uint32_t>(size.height()))
{
    const auto rowLength = static_cast<qint64>(m_row.size());
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options, Callbacks::onError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, Callbacks::onWarning, this);
    const bool isOrdinary = rowLength * size.height() <= largestOrdinary;
    m_tiff = TIFFClientOpenExt("", isOrdinary ? "w" : "w8", this, Callbacks::read, Callbacks::write,
                               Callbacks::seek, Callbacks::close, Callbacks::size, nullptr, nullptr, options);
    TIFFOpenOptionsFree(options);
    if (!m_tiff) fail();
    const auto rowsOfStrip =
        static_cast<std::uint32_t>(std::clamp<qint64>(bytesOfStrip / rowLength, 1, size.height()));
    const bool isSet = TIFFSetField(m_tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(size.width())) &&
                       TIFFSetField(m_tiff, TIFFTAG_IMAGELENGTH, m_rowCount) &&
                       TIFFSetField(m_tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) &&
                       TIFFSetField(m_tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT) &&
                       TIFFSetField(m_tiff, TIFFTAG_ROWSPERSTRIP, rowsOfStrip);
    if (isSet) return;
    TIFFClose(m_tiff); // which the destructor of an object that was never whole does not
    m_tiff = nullptr;
    fail();
}

TiffFile::~TiffFile()
{
    if (m_tiff) TIFFClose(m_tiff);
}

void TiffFile::fail() const
{
    if (m_writeFailure) std::rethrow_exception(m_writeFailure);
    m_file.fail(m_problem);
}

void TiffFile::writeRow(const void* row)
{
    std::memcpy(m_row.data(), row, m_row.size());
    if (TIFFWriteScanline(m_tiff, m_row.data(), m_next++, 0) != 1) fail();
}

void TiffFile::finish()
{
    if (m_next != m_rowCount) m_file.fail(QStringLiteral("rows are missing"));
    if (TIFFWriteDirectory(m_tiff) != 1) fail();
}
