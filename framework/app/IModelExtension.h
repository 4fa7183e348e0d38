#pragma once
#include <framework/HostFramework_export.h>

#include <QtCore/QtPlugin>

class CProjectModel;

/// A plug-in that extends project models.
class HOSTFRAMEWORK_EXPORT IModelExtension
{
public:
    virtual ~IModelExtension() = default;
    /// Called for every project model, before the model is initialised.
    virtual void extendModel(CProjectModel* model) = 0;
};

Q_DECLARE_INTERFACE(IModelExtension, "org.photomodel.host.IModelExtension/1.0")
