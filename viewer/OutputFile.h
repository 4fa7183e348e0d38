#pragma once

#include <QtCore/QSaveFile>
#include <QtCore/QString>

#include <vector>

class InputFiles;

/// A file that appears whole or not at all: written under another name beside its own, which it gets when all
/// is written. Until then a file that was there is as it was. Errors are ksp::CommonError, whose text begins
/// with the file's name.
class OutputFile
{
public:
    /// Begins the file, in place of a regular file or where nothing is. Throws when it cannot be written.
    explicit OutputFile(const QString& path);
    /// Discards what was not committed.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    const QString& path() const { return m_path; }
    /// To write to; what is written may wait in memory until commit().
    QIODevice& device() { return m_file; }
    /// Writes bytes. Throws.
    void write(const char* bytes, qint64 count);
    /// Gives the file its name. Throws when something of it could not be written.
    void commit();
    /// Gives the files that belong together their names, in this order, once all of every one is written.
    /// Null pointers are passed over. Throws likewise, mostly before the first has its name.
    static void commit(const std::vector<OutputFile*>& files);
    /// Throws with the reason, and with the device's where that failed.
    [[noreturn]] void fail(const QString& reason = {}) const;

    /// Throws when a file of this name cannot be written, so that nobody waits in vain: tries it, and leaves
    /// nothing behind.
    static void requireWritable(const QString& path);
    /// Throws when the file is one of the inputs or one that they name, such as a texture.
    static void requireNoInput(const QString& path, const InputFiles& inputs);

private:
    QString m_path;
    QSaveFile m_file;
    QString m_temporaryName; // empty where the system keeps the unfinished file without a name
};
