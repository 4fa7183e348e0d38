#pragma once

#include <framework/HostFramework_export.h>

#include <QtCore/QObject>

class CProjectModel;

/// Prepares a project model for what a module needs of it.
class HOSTFRAMEWORK_EXPORT ModelInitializer : public QObject
{
    Q_OBJECT
public:
    /// model is not owned and outlives the initializer.
    explicit ModelInitializer(CProjectModel* model);
    ~ModelInitializer() override;
    CProjectModel* getModel() const { return m_model; }

    /// The hook: called once for the model, see CProjectModel::initialize.
    virtual void initialize() = 0;

private:
    CProjectModel* m_model;
};
