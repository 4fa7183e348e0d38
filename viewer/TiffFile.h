#pragma once

#include <QtCore/QSize>
#include <QtCore/QString>

#include <cstdint>
#include <exception>
#include <vector>

class OutputFile;
struct tiff;

/// A TIFF file of one image that is written row by row through the library, in strips. Errors are
/// ksp::CommonError, which name the file.
class TiffFile
{
public:
    /// Begins the image, top row first; as BigTIFF where the offsets of an ordinary one might not reach. What
    /// its samples are is still to be set. The file is not owned.
    TiffFile(OutputFile& file, const QSize& size, int bytesOfPixel, qint64 bytesOfStrip);
    ~TiffFile();
    TiffFile(const TiffFile&) = delete;
    TiffFile& operator=(const TiffFile&) = delete;

    /// The library's own, for its fields.
    tiff* handle() const { return m_tiff; }
    /// The next row, from the top.
    void writeRow(const void* row);
    /// Ends the image; all its rows have been written. The file is still to be committed.
    void finish();
    /// Throws with the first reason that there was.
    [[noreturn]] void fail() const;

private:
    struct Callbacks;

    OutputFile& m_file;
    tiff* m_tiff = nullptr;
    std::vector<char> m_row; // the library changes rows that it packs
    std::uint32_t m_next = 0;
    std::uint32_t m_rowCount;
    std::exception_ptr m_writeFailure;
    QString m_problem; // what the library said first
};
