#pragma once

#include <framework/app/IAppExtension.h>
#include <framework/app/IModelReader.h>

#include <QtCore/QObject>

/// The plug-in that reads pictures with a world file. Its option "ground-height" is the height at which they
/// lie, 0 at first.
class OrthophotoPlugin : public QObject, public IAppExtension, public IModelReader
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.photomodel.reader.orthophoto" FILE "orthophoto.json")
    Q_INTERFACES(IAppExtension IModelReader)
public:
    /// Has nothing to register: the host finds the reader by its interface.
    bool extendApplication(Application* application, const std::vector<int>& ids) override;

    /// Those of the metadata, and TIFF where this installation of Qt reads it.
    QStringList getExtensions() const override;
    void setOption(const QString& name, const QVariant& value) override;
    std::vector<std::unique_ptr<CModelElement>> read(const QString& path,
                                                     ksp::StagedProgress progress) override;

private:
    double m_groundHeight = 0.0;
};
