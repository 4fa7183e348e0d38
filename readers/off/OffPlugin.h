#pragma once

#include <readers/common/MeshPlugin.h>

#include <QtCore/QObject>

/// The plug-in that reads OFF files.
class OffPlugin : public QObject, public readers::MeshPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.photomodel.reader.off" FILE "off.json")
    Q_INTERFACES(IAppExtension)
public:
    OffPlugin();
};
