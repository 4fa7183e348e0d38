#include <readers/orthophoto/OrthophotoPlugin.h>

#include <readers/orthophoto/readOrthophoto.h>

#include <QtGui/QImageReader>

bool OrthophotoPlugin::extendApplication(Application*, const std::vector<int>&)
{
    return true;
}

QStringList OrthophotoPlugin::getExtensions() const
{
    QStringList extensions = {QStringLiteral("png"), QStringLiteral("jpg"), QStringLiteral("jpeg")};
    if (QImageReader::supportedImageFormats().contains("tiff"))
        extensions += {QStringLiteral("tif"), QStringLiteral("tiff")};
    return extensions;
}

void OrthophotoPlugin::setOption(const QString& name, const QVariant& value)
{
    if (name == QLatin1String("ground-height")) m_groundHeight = value.toDouble();
}

std::vector<std::unique_ptr<CModelElement>> OrthophotoPlugin::read(const QString& path,
                                                                   ksp::StagedProgress progress)
{
    progress.throwIfCanceled();
    std::vector<std::unique_ptr<CModelElement>> elements;
    elements.push_back(readers::readOrthophoto(path, m_groundHeight));
    return elements;
}
