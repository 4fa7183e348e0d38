#pragma once

#include <viewer/DepthWriter.h>

#include <vector>

/// Writes a depth map as PFM with one channel ("Pf"), little endian. The format has the bottom row first; so
/// the bands are put where they belong, from the end of the file.
class PfmWriter : public DepthWriter
{
public:
    PfmWriter(OutputFile& file, const QSize& size);
    void write(const float* distances, int rowCount) override;
    void finish() override;

private:
    OutputFile& m_file;
    QSize m_size;
    qint64 m_headLength;
    int m_rowsLeft;
    std::vector<char> m_buffer; ///< rows, in the order of the file
};
