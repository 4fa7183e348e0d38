#include <viewer/PictureFile.h>

#include <viewer/InputFiles.h>
#include <viewer/printable.h>

#include <framework/ksp/CommonError.h>

#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtGui/QImageWriter>

namespace {

[[noreturn]] void fail(const QString& path, const QString& reason)
{
    throw ksp::CommonError(QStringLiteral("%1: cannot be written: %2").arg(shownName(path), reason));
}

} // namespace

void PictureFile::requireWritable(const QString& path)
{
    const QFileInfo file(path);
    const QFileInfo folder(file.absolutePath());
    if (file.isDir()) fail(path, QStringLiteral("it is a folder"));
    if (file.exists() && !file.isFile()) fail(path, QStringLiteral("it is no regular file"));
    if (!folder.isDir()) fail(path, QStringLiteral("there is no folder %1").arg(folder.filePath()));
    QSaveFile trial(path);
    if (!trial.open(QIODevice::WriteOnly)) fail(path, trial.errorString());
    trial.cancelWriting();
}

void PictureFile::requireNoInput(const QString& path, const QStringList& inputs)
{
    if (InputFiles::contain(inputs, path)) fail(path, QStringLiteral("it is one of the files that are read"));
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
