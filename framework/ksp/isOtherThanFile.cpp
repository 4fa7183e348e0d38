#include <framework/ksp/isOtherThanFile.h>

#include <QtCore/QFileInfo>

namespace ksp {

bool isOtherThanFile(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() && !info.isFile();
}

} // namespace ksp
