#include <viewer/PictureWriter.h>

#include <viewer/OutputFile.h>
#include <viewer/PngWriter.h>
#include <viewer/TiffPictureWriter.h>

#include <QtCore/QFileInfo>

std::unique_ptr<PictureWriter> PictureWriter::create(OutputFile& file, const QSize& size, bool hasAlpha)
{
    const QString extension = QFileInfo(file.path()).suffix().toLower();
    if (extension == QLatin1String("tif") || extension == QLatin1String("tiff"))
        return std::make_unique<TiffPictureWriter>(file, size, hasAlpha);
    return std::make_unique<PngWriter>(file, size, hasAlpha);
}

QStringList PictureWriter::extensions()
{
    return {QStringLiteral("png"), QStringLiteral("tif"), QStringLiteral("tiff")};
}
