#pragma once

#include <viewer/PictureWriter.h>
#include <viewer/TiffFile.h>

/// Writes a picture as TIFF, deflated, in strips of about a megabyte; as BigTIFF where the offsets of an
/// ordinary one might not reach.
class TiffPictureWriter : public PictureWriter
{
public:
    TiffPictureWriter(OutputFile& file, const QSize& size, bool hasAlpha);
    void writeRow(const uchar* row) override;
    void finish() override;

private:
    TiffFile m_tiff;
};
