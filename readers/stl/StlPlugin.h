#pragma once

#include <readers/common/MeshPlugin.h>

#include <QtCore/QObject>

/// The plug-in that reads STL files.
class StlPlugin : public QObject, public readers::MeshPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.photomodel.reader.stl" FILE "stl.json")
    Q_INTERFACES(IAppExtension)
public:
    StlPlugin();
};
