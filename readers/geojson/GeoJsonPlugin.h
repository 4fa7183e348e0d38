#pragma once

#include <framework/app/IAppExtension.h>
#include <framework/app/IModelReader.h>

#include <QtCore/QObject>

/// The plug-in that reads GeoJSON files into features.
class GeoJsonPlugin : public QObject, public IAppExtension, public IModelReader
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.photomodel.reader.geojson" FILE "geojson.json")
    Q_INTERFACES(IAppExtension IModelReader)
public:
    /// Has nothing to register: the host finds the reader by its interface.
    bool extendApplication(Application* application, const std::vector<int>& ids) override;

    QStringList getExtensions() const override;
    std::vector<std::unique_ptr<CModelElement>> read(const QString& path,
                                                     ksp::StagedProgress progress) override;
};
