#include <viewer/DepthWriter.h>

#include <viewer/OutputFile.h>
#include <viewer/PfmWriter.h>
#include <viewer/TiffWriter.h>

#include <QtCore/QFileInfo>

std::unique_ptr<DepthWriter> DepthWriter::create(OutputFile& file, const QSize& size)
{
    if (QFileInfo(file.path()).suffix().toLower() == QLatin1String("pfm"))
        return std::make_unique<PfmWriter>(file, size);
    return std::make_unique<TiffWriter>(file, size);
}

QStringList DepthWriter::extensions()
{
    return {"pfm", "tiff", "tif"};
}
