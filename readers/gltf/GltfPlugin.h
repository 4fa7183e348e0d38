#pragma once

#include <readers/common/MeshPlugin.h>

#include <QtCore/QObject>

/// The plug-in that reads glTF files.
class GltfPlugin : public QObject, public readers::MeshPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.photomodel.reader.gltf" FILE "gltf.json")
    Q_INTERFACES(IAppExtension)
public:
    GltfPlugin();
};
