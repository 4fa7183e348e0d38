#pragma once

#include <QtCore/QSize>
#include <QtCore/QStringList>
#include <QtGui/QImage>

#include <memory>

class OutputFile;

/// Writes a picture as a file, row by row: memory does not grow with it. 8 bits a channel, with an alpha
/// channel or without. Errors are ksp::CommonError, which name the file.
class PictureWriter
{
public:
    /// Begins a picture in the format that the file's extension tells, TIFF or else PNG. The file is not
    /// owned.
    static std::unique_ptr<PictureWriter> create(OutputFile& file, const QSize& size, bool hasAlpha);
    /// The extensions that it knows, lower case.
    static QStringList extensions();

    virtual ~PictureWriter() = default;
    PictureWriter(const PictureWriter&) = delete;
    PictureWriter& operator=(const PictureWriter&) = delete;

    /// What the bytes of rows are: RGB888, or RGBA8888 with an alpha channel, not multiplied.
    QImage::Format rowFormat() const { return m_rowFormat; }
    /// The next row, from the top.
    virtual void writeRow(const uchar* row) = 0;
    /// Ends the picture; all its rows have been written. The file is still to be committed.
    virtual void finish() = 0;

protected:
    explicit PictureWriter(bool hasAlpha)
        : m_rowFormat(hasAlpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888)
    {
    }

private:
    QImage::Format m_rowFormat;
};
