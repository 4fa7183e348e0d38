#pragma once

#include <QtCore/QSize>
#include <QtGui/QImage>

#include <memory>

class OutputFile;

/// Writes a picture as PNG, row by row: memory does not grow with it. 8 bits a channel, with an alpha channel
/// or without. Errors are ksp::CommonError, which name the file.
class PngWriter
{
public:
    /// Begins the picture. The file is not owned.
    PngWriter(OutputFile& file, const QSize& size, bool hasAlpha);
    ~PngWriter();
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;

    /// What the bytes of rows are: RGB888, or RGBA8888 with an alpha channel, not multiplied.
    QImage::Format rowFormat() const;
    /// The next row, from the top.
    void writeRow(const uchar* row);
    /// Ends the picture; all its rows have been written. The file is still to be committed.
    void finish();

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
