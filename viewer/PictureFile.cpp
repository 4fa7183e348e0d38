#include <viewer/PictureFile.h>

#include <framework/ksp/CommonError.h>

#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtGui/QImageWriter>

namespace {

[[noreturn]] void fail(const QString& path, const QString& reason)
{
    throw ksp::CommonError(QStringLiteral("%1: cannot be written: %2").arg(path, reason));
}

} // namespace

void PictureFile::requireWritable(const QString& path)
{
    const QFileInfo file(path);
    const QFileInfo folder(file.absolutePath());
    if (file.isDir()) fail(path, QStringLiteral("it is a folder"));
    if (!folder.isDir()) fail(path, QStringLiteral("there is no folder %1").arg(folder.filePath()));
    if (file.exists() && !file.isWritable()) fail(path, QStringLiteral("it is write-protected"));
    if (!file.exists() && !folder.isWritable())
        fail(path, QStringLiteral("the folder %1 is write-protected").arg(folder.filePath()));
}

void PictureFile::write(const QString& path, const QImage& image)
{
    requireWritable(path);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) fail(path, file.errorString());
    QImageWriter writer(&file, "png");
    if (!writer.write(image)) fail(path, writer.errorString());
    if (!file.commit()) fail(path, file.errorString());
}
