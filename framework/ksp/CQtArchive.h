#pragma once

#include <framework/ksp/IArchive.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include <string>
#include <vector>

namespace ksp {

/// The archive over a byte array: binary, little-endian, with strings and variants of Qt.
///
/// A storing archive collects bytes, which data() hands out once every frame is closed. A loading archive
/// reads from a copy (shared) of the bytes it is given. Files: see readFile and writeFile.
///
/// Layout: the mark "V3DA", the format version, the number of bytes that follow the head (64 bits) and their
/// CRC-32, then what was stored. A frame is the number of its bytes, the object's version, and the bytes.
/// All numbers are unsigned, little-endian and of 32 bits where nothing else is said. An archive holds less
/// than 2 GiB; storing more throws CFileException (Limit). Reading from a storing archive, storing into a
/// loading one and steps on a frame that is not open are mistakes of the program and throw CommonError.
class HOSTFRAMEWORK_EXPORT CQtArchive : public IArchive
{
public:
    /// A storing archive.
    CQtArchive();
    /// A loading archive over the bytes that data() once gave. Throws CFileException (Version, Damaged or
    /// Truncated) when they do not begin with the archive's mark and version.
    explicit CQtArchive(const QByteArray& bytes);
    ~CQtArchive() override;
    CQtArchive(const CQtArchive&) = delete;
    CQtArchive& operator=(const CQtArchive&) = delete;

    /// What was stored, the archive's mark and version first. Throws CommonError while a frame is open.
    QByteArray data() const;

    /// Reads a whole file. Throws CFileException with the file's name and the reason (Access, also for what
    /// is no regular file; Limit for a file of 2 GiB or more, or one that memory cannot hold).
    static QByteArray readFile(const QString& path);
    /// Writes the bytes to a file that appears whole or not at all; throws CFileException (Access, also
    /// where something is that is no regular file).
    static void writeFile(const QString& path, const QByteArray& bytes);

    bool isLoading() const override;
    void beginObject() override;
    void endObject(unsigned version) override;
    bool checkVersion(unsigned version) override;
    void finish() override;
    void readBlock(void* data, std::size_t size) override;
    void writeBlock(const void* data, std::size_t size) override;
    double readDouble() override;
    void writeDouble(double value) override;
    float readFloat() override;
    void writeFloat(float value) override;
    bool readBool() override;
    void writeBool(bool value) override;
    std::int32_t readInt() override;
    void writeInt(std::int32_t value) override;
    std::uint32_t readUInt() override;
    void writeUInt(std::uint32_t value) override;
    std::int64_t readInt64() override;
    void writeInt64(std::int64_t value) override;

    /// Bytes that the innermost frame (or, outside of frames, the archive) still has to read; loading only.
    /// A stored count of things that take at least n bytes each cannot be above remaining() / n.
    std::size_t remaining() const;
    /// Reads a count and refuses, with CFileException (Damaged), one that the remaining bytes cannot hold.
    std::uint32_t readCount(std::size_t bytesPerItem);

    using IArchive::value;
    void value(QString& v);      ///< UTF-8 with its length
    void value(std::string& v);  ///< bytes with their number
    void value(std::wstring& v); ///< as UTF-8
    void value(QByteArray& v);
    /// Null, bool, int, 64-bit int, double, string, list and map come back as they were; other numbers as the
    /// one of these that holds them; other values as text, those without one as null. Lists and maps nest 32
    /// deep; deeper ones throw CFileException (Limit).
    void value(QVariant& v);

private:
    struct Frame
    {
        std::size_t begin;     ///< where the frame's bytes begin
        std::size_t end;       ///< where they end; loading only
        std::uint32_t version; ///< of the object
    };

    void readHead();
    QByteArray readBytes();
    void writeBytes(const char* bytes, std::size_t size);
    QString readText();
    void readVariant(QVariant& v, int depth);
    void writeVariant(const QVariant& v, int depth);
    template <typename Number>
    Number readNumber();
    template <typename Number>
    void writeNumber(Number number);
    void patchNumber(std::size_t position, std::uint32_t number);
    Frame& openFrame();
    std::size_t readableEnd() const;
    void requireMode(bool loading) const;
    void requireIntact();
    [[noreturn]] void fail(int code, const QString& text);

    bool m_loading;
    bool m_failed = false;
    QByteArray m_bytes;         ///< loading: all; storing: what follows the head
    std::size_t m_position = 0; ///< in m_bytes; loading only
    std::vector<Frame> m_frames;
};

} // namespace ksp

using ksp::CQtArchive;
