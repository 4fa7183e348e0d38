#pragma once

#include <framework/model/ModelInitializer.h>

/// Gives the project of a model what the module keeps in it. Private to the module.
class ModelInitializerImpl : public ModelInitializer
{
    Q_OBJECT
public:
    explicit ModelInitializerImpl(CProjectModel* model);
    ~ModelInitializerImpl() override;

    /// Adds the lighting settings and the fence, stored with the project, to the model's project.
    void initialize() override;
};
