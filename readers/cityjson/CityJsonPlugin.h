#pragma once

#include <framework/app/IAppExtension.h>
#include <framework/app/IModelReader.h>

#include <QtCore/QObject>

#include <optional>

/// The plug-in that reads CityJSON files into city objects. Its option "lod" is the finest level of detail
/// that is wanted, a number.
class CityJsonPlugin : public QObject, public IAppExtension, public IModelReader
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.photomodel.reader.cityjson" FILE "cityjson.json")
    Q_INTERFACES(IAppExtension IModelReader)
public:
    /// Has nothing to register: the host finds the reader by its interface.
    bool extendApplication(Application* application, const std::vector<int>& ids) override;

    QStringList getExtensions() const override;
    bool recognizes(const QString& path) const override;
    void setOption(const QString& name, const QVariant& value) override;
    std::vector<std::unique_ptr<CModelElement>> read(const QString& path,
                                                     ksp::StagedProgress progress) override;

private:
    std::optional<double> m_lod;
};
