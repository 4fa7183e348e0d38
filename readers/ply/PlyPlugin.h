#pragma once

#include <readers/common/MeshPlugin.h>

#include <QtCore/QObject>

/// The plug-in that reads PLY files.
class PlyPlugin : public QObject, public readers::MeshPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.photomodel.reader.ply" FILE "ply.json")
    Q_INTERFACES(IAppExtension)
public:
    PlyPlugin();
};
