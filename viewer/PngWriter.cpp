#include <viewer/PngWriter.h>

#include <viewer/OutputFile.h>

#include <csetjmp>

#include <png.h>

namespace {

// What zlib gains beyond this level is some percent, for several times the work.
constexpr int compressionLevel = 4;

} // namespace

/// The library's errors jump back into run(): on their way nothing that has a destructor may be left behind.
struct PngWriter::Private
{
    OutputFile& file;
    QSize size;
    bool hasAlpha;
    png_structp png = nullptr;
    png_infop info = nullptr;
    char reason[200] = "";

    static void onError(png_structp png, png_const_charp text)
    {
        auto* d = static_cast<Private*>(png_get_error_ptr(png));
        qstrncpy(d->reason, text, sizeof d->reason);
        std::longjmp(png_jmpbuf(png), 1);
    }
    static void onWarning(png_structp, png_const_charp) {}
    static void onWrite(png_structp png, png_bytep bytes, png_size_t count)
    {
        auto* d = static_cast<Private*>(png_get_io_ptr(png));
        const auto size = static_cast<qint64>(count);
        if (d->file.device().write(reinterpret_cast<const char*>(bytes), size) != size)
            png_error(png, "the file takes no more");
    }
    static void onFlush(png_structp) {}

    /// Runs a step of the library; false when it failed.
    template <typename Step>
    bool succeeds(Step step)
    {
        if (setjmp(png_jmpbuf(png)) != 0) return false;
        step();
        return true;
    }
    template <typename Step>
    void run(Step step)
    {
        if (!succeeds(step)) file.fail(QString::fromLatin1(reason));
    }
    void begin()
    {
        png_set_write_fn(png, this, onWrite, onFlush);
        png_set_compression_level(png, compressionLevel);
        png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_set_IHDR(png, info, static_cast<png_uint_32>(size.width()),
                     static_cast<png_uint_32>(size.height()), 8,
                     hasAlpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_write_info(png, info);
    }
};

PngWriter::PngWriter(OutputFile& file, const QSize& size, bool hasAlpha)
    : PictureWriter(hasAlpha)
    , m_private(new Private{file, size, hasAlpha})
{
    Private* d = m_private.get();
    d->png = png_create_write_struct(PNG_LIBPNG_VER_STRING, d, Private::onError, Private::onWarning);
    d->info = d->png ? png_create_info_struct(d->png) : nullptr;
    if (!d->info) {
        png_destroy_write_struct(&d->png, nullptr);
        throw std::bad_alloc();
    }
    try {
        d->run([d] { d->begin(); });
    } catch (...) {
        png_destroy_write_struct(&d->png, &d->info);
        throw;
    }
}

PngWriter::~PngWriter()
{
    png_destroy_write_struct(&m_private->png, &m_private->info);
}

void PngWriter::writeRow(const uchar* row)
{
    Private* d = m_private.get();
    d->run([d, row] { png_write_row(d->png, row); });
}

void PngWriter::finish()
{
    Private* d = m_private.get();
    d->run([d] { png_write_end(d->png, d->info); });
}
