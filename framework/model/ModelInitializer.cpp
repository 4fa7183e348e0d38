#include <framework/model/ModelInitializer.h>

ModelInitializer::ModelInitializer(CProjectModel* model)
    : m_model(model)
{
}

ModelInitializer::~ModelInitializer() = default;
