#pragma once

#include <viewer/DepthWriter.h>
#include <viewer/TiffFile.h>

/// Writes a depth map as TIFF of one 32-bit float a pixel, uncompressed, in strips of some megabytes; as
/// BigTIFF where the offsets of an ordinary one would not reach.
class TiffWriter : public DepthWriter
{
public:
    TiffWriter(OutputFile& file, const QSize& size);
    void write(const float* distances, int rowCount) override;
    void finish() override;

private:
    TiffFile m_tiff;
    int m_width;
};
