#include <viewer/OutputFile.h>

#include <viewer/InputFiles.h>
#include <viewer/UnfinishedFiles.h>
#include <viewer/printable.h>

#include <framework/ksp/CommonError.h>

#include <QtCore/QFileInfo>

#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace {

[[noreturn]] void refuse(const QString& path, const QString& reason)
{
    throw ksp::CommonError(QStringLiteral("%1: cannot be written: %2").arg(shownName(path), reason));
}

/// The name that the system has for an open file; empty when it has none.
QString nameOf(const QFileDevice& file)
{
    const QString name = QFile::symLinkTarget(QStringLiteral("/proc/self/fd/%1").arg(file.handle()));
    return QFileInfo(name).isFile() ? name : QString();
}

} // namespace

OutputFile::OutputFile(const QString& path)
    : m_path(path)
    , m_file(path)
{
    const QFileInfo file(path);
    const QFileInfo folder(file.absolutePath());
    if (file.isDir()) refuse(path, QStringLiteral("it is a folder"));
    if (file.exists() && !file.isFile()) refuse(path, QStringLiteral("it is no regular file"));
    if (!folder.isDir()) refuse(path, QStringLiteral("there is no folder %1").arg(folder.filePath()));
    if (!m_file.open(QIODevice::WriteOnly)) fail();
    m_temporaryName = nameOf(m_file);
    UnfinishedFiles::add(m_temporaryName);
}

// What was not committed is deleted by the file itself.
OutputFile::~OutputFile()
{
    UnfinishedFiles::remove(m_temporaryName);
}

// Where the system takes a part only, it says why when it is asked to take the rest.
void OutputFile::write(const char* bytes, qint64 count)
{
    while (count > 0) {
        const qint64 written = m_file.write(bytes, count);
        if (written <= 0) fail();
        bytes += written;
        count -= written;
    }
}

void OutputFile::commit()
{
    if (!m_file.flush() || !m_file.commit()) fail();
}

void OutputFile::commit(const std::vector<OutputFile*>& files)
{
    for (OutputFile* file : files)
        if (file && !file->m_file.flush()) file->fail();
    for (OutputFile* file : files)
        if (file) file->commit();
}

void OutputFile::fail(const QString& reason) const
{
    if (m_file.error() == QFileDevice::NoError && !reason.isEmpty()) refuse(m_path, reason);
    // Qt knows no reason of a write that ended in the middle; the next one tells it.
    if (m_file.isOpen() && ::write(m_file.handle(), "", 1) < 0)
        refuse(m_path, QString::fromLocal8Bit(std::strerror(errno)));
    refuse(m_path, m_file.errorString());
}

void OutputFile::requireWritable(const QString& path)
{
    const OutputFile trial(path);
}

void OutputFile::requireNoInput(const QString& path, const InputFiles& inputs)
{
    if (inputs.contain(path)) refuse(path, QStringLiteral("it is one of the files that are read"));
}
