#pragma once

#include <viewer/DepthWriter.h>

/// Writes a depth map as TIFF of one 32-bit float a pixel, uncompressed, in strips of some megabytes; as
/// BigTIFF where the offsets of an ordinary one would not reach.
class TiffWriter : public DepthWriter
{
public:
    TiffWriter(OutputFile& file, const QSize& size);
    ~TiffWriter() override;
    void write(const float* distances, int rowCount) override;
    void finish() override;

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
