#pragma once

#include <readers/common/MeshPlugin.h>

#include <QtCore/QObject>

/// The plug-in that reads OBJ files.
class ObjPlugin : public QObject, public readers::MeshPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.photomodel.reader.obj" FILE "obj.json")
    Q_INTERFACES(IAppExtension)
public:
    ObjPlugin();
};
