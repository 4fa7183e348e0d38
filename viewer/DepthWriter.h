#pragma once

#include <QtCore/QSize>
#include <QtCore/QStringList>

#include <memory>

class OutputFile;

/// Writes a depth map as a file of 32-bit floats, band by band: memory does not grow with it. Errors are
/// ksp::CommonError, which name the file.
class DepthWriter
{
public:
    /// Begins a map in the format that the file's extension tells: PFM or TIFF. The file is not owned.
    static std::unique_ptr<DepthWriter> create(OutputFile& file, const QSize& size);
    /// The extensions that it knows, lower case.
    static QStringList extensions();

    virtual ~DepthWriter() = default;
    DepthWriter(const DepthWriter&) = delete;
    DepthWriter& operator=(const DepthWriter&) = delete;

    /// The next rows, from the top, one after the other.
    virtual void write(const float* distances, int rowCount) = 0;
    /// Ends the map; all its rows have been written. The file is still to be committed.
    virtual void finish() = 0;

protected:
    DepthWriter() = default;
};
