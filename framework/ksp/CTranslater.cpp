#include <framework/ksp/CTranslater.h>

#include <QtCore/QCoreApplication>

namespace ksp {

CTranslater& CTranslater::GetInstance()
{
    static CTranslater instance;
    return instance;
}

QString CTranslater::translate(const char* context, const char* text) const
{
    return QCoreApplication::translate(context, text);
}

} // namespace ksp
