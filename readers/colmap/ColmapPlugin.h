#pragma once

#include <framework/app/IAppExtension.h>
#include <framework/app/IModelReader.h>

#include <QtCore/QObject>

/// The plug-in that reads COLMAP text models: images.txt into stations, points3D.txt into a node of points.
class ColmapPlugin : public QObject, public IAppExtension, public IModelReader
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.photomodel.reader.colmap" FILE "colmap.json")
    Q_INTERFACES(IAppExtension IModelReader)
public:
    /// Registers what reads the points.
    bool extendApplication(Application* application, const std::vector<int>& ids) override;

    QStringList getExtensions() const override;
    /// By the name, images.txt: the points are no elements.
    bool recognizes(const QString& path) const override;
    std::vector<std::unique_ptr<CModelElement>> read(const QString& path,
                                                     ksp::StagedProgress progress) override;
};
