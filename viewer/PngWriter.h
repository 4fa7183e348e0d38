#pragma once

#include <viewer/PictureWriter.h>

/// Writes a picture as PNG.
class PngWriter : public PictureWriter
{
public:
    PngWriter(OutputFile& file, const QSize& size, bool hasAlpha);
    ~PngWriter() override;
    void writeRow(const uchar* row) override;
    void finish() override;

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
