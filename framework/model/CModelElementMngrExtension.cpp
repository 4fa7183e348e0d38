#include <framework/model/CModelElementMngrExtension.h>

CModelElementMngrExtension::CModelElementMngrExtension(QObject* parent)
    : QObject(parent)
{
}

CModelElementMngrExtension::~CModelElementMngrExtension() = default;
