#include <framework/ksp/CQtArchive.h>

#include <framework/ksp/CFileException.h>
#include <framework/ksp/isOtherThanFile.h>

#include <QtCore/QFile>
#include <QtCore/QSaveFile>
#include <QtCore/QtEndian>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <type_traits>

namespace ksp {
namespace {

constexpr char mark[4] = {'V', '3', 'D', 'A'};
constexpr std::uint32_t formatVersion = 1;
constexpr std::size_t headSize = sizeof(mark) + 4 + 8 + 4;
constexpr std::size_t frameHeadSize = 4 + 4;
/// A byte array of Qt counts in int and keeps a head of its own.
constexpr std::size_t sizeLimit = 0x7FFFFFFF - 1024;

/// The unsigned integer in whose bits a number travels.
template <typename Number>
using Bits = std::conditional_t<sizeof(Number) == 8, std::uint64_t,
                                std::conditional_t<sizeof(Number) == 4, std::uint32_t, std::uint8_t>>;

template <typename Number>
std::array<char, sizeof(Number)> toBytes(Number number)
{
    Bits<Number> bits;
    std::memcpy(&bits, &number, sizeof bits);
    std::array<char, sizeof(Number)> bytes;
    qToLittleEndian(bits, bytes.data());
    return bytes;
}

template <typename Number>
Number fromBytes(const char* bytes)
{
    const auto bits = qFromLittleEndian<Bits<Number>>(bytes);
    Number number;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

constexpr std::array<std::uint32_t, 256> makeChecksumTable()
{
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < 256; ++i) {
        std::uint32_t value = i;
        for (int bit = 0; bit < 8; ++bit)
            value = (value & 1u) ? (value >> 1) ^ 0xEDB88320u : value >> 1;
        table[i] = value;
    }
    return table;
}

constexpr std::array<std::uint32_t, 256> checksumTable = makeChecksumTable();

/// CRC-32 with the reflected polynomial 0xEDB88320.
std::uint32_t checksum(const char* bytes, std::size_t size)
{
    std::uint32_t value = 0xFFFFFFFFu;
    for (std::size_t i = 0; i < size; ++i)
        value = (value >> 8) ^ checksumTable[(value ^ static_cast<unsigned char>(bytes[i])) & 0xFFu];
    return ~value;
}

} // namespace

CQtArchive::CQtArchive()
    : m_loading(false)
{
}

CQtArchive::CQtArchive(const QByteArray& bytes)
    : m_loading(true)
    , m_bytes(bytes)
{
    readHead();
}

CQtArchive::~CQtArchive() = default;

void CQtArchive::readHead()
{
    const auto size = static_cast<std::size_t>(m_bytes.size());
    if (std::memcmp(m_bytes.constData(), mark, std::min(size, sizeof mark)) != 0)
        fail(CFileException::Damaged, QStringLiteral("not an archive of this program"));
    if (size < headSize) fail(CFileException::Truncated, QStringLiteral("the archive is cut off"));
    m_position = sizeof mark;
    const auto version = readNumber<std::uint32_t>();
    if (version != formatVersion)
        fail(CFileException::Version,
             QStringLiteral("archive format %1 is not known, only %2").arg(version).arg(formatVersion));
    const auto length = readNumber<std::uint64_t>();
    const auto sum = readNumber<std::uint32_t>();
    if (length > size - headSize) fail(CFileException::Truncated, QStringLiteral("the archive is cut off"));
    if (length < size - headSize)
        fail(CFileException::Damaged, QStringLiteral("the archive is longer than it says"));
    if (sum != checksum(m_bytes.constData() + headSize, size - headSize))
        fail(CFileException::Damaged, QStringLiteral("the archive's checksum is wrong"));
}

QByteArray CQtArchive::data() const
{
    requireMode(false);
    if (!m_frames.empty()) throw CommonError(QStringLiteral("an object of the archive is not finished"));
    const auto size = static_cast<std::size_t>(m_bytes.size());
    const auto version = toBytes(formatVersion);
    const auto length = toBytes(static_cast<std::uint64_t>(size));
    const auto sum = toBytes(checksum(m_bytes.constData(), size));
    QByteArray bytes;
    bytes.reserve(static_cast<int>(headSize + size));
    bytes.append(mark, sizeof mark);
    bytes.append(version.data(), static_cast<int>(version.size()));
    bytes.append(length.data(), static_cast<int>(length.size()));
    bytes.append(sum.data(), static_cast<int>(sum.size()));
    bytes.append(m_bytes);
    return bytes;
}

QByteArray CQtArchive::readFile(const QString& path)
{
    QFile file(path);
    const auto refuse = [&](int code, const QString& reason) {
        throw CFileException(code, QStringLiteral("%1: %2").arg(path, reason));
    };
    if (isOtherThanFile(path)) refuse(CFileException::Access, otherThanFileReason());
    if (!file.open(QIODevice::ReadOnly)) refuse(CFileException::Access, file.errorString());
    if (file.size() > static_cast<qint64>(sizeLimit))
        refuse(CFileException::Limit, QStringLiteral("the file is larger than 2 GiB"));
    QByteArray bytes;
    try {
        bytes = file.readAll();
    } catch (const std::bad_alloc&) {
        refuse(CFileException::Limit, QStringLiteral("there is not enough memory"));
    }
    if (file.error() != QFileDevice::NoError) refuse(CFileException::Access, file.errorString());
    return bytes;
}

void CQtArchive::writeFile(const QString& path, const QByteArray& bytes)
{
    if (isOtherThanFile(path))
        throw CFileException(CFileException::Access,
                             QStringLiteral("%1: %2").arg(path, otherThanFileReason()));
    QSaveFile file(path);
    const bool written =
        file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
    if (!written)
        throw CFileException(CFileException::Access, QStringLiteral("%1: %2").arg(path, file.errorString()));
}

bool CQtArchive::isLoading() const
{
    return m_loading;
}

// --- frames ---

CQtArchive::Frame& CQtArchive::openFrame()
{
    requireIntact();
    if (m_frames.empty()) throw CommonError(QStringLiteral("no object of the archive is begun"));
    return m_frames.back();
}

void CQtArchive::beginObject()
{
    if (!m_loading) {
        writeNumber(std::uint32_t(0)); // size and version: known when the frame is closed
        writeNumber(std::uint32_t(0));
        m_frames.push_back({static_cast<std::size_t>(m_bytes.size()), 0, 0});
        return;
    }
    const std::size_t size = readNumber<std::uint32_t>();
    const auto version = readNumber<std::uint32_t>();
    if (size > remaining())
        fail(CFileException::Damaged, QStringLiteral("an object is larger than what holds it"));
    m_frames.push_back({m_position, m_position + size, version});
}

void CQtArchive::endObject(unsigned version)
{
    Frame& frame = openFrame();
    if (!m_loading)
        frame.version = std::max(frame.version, version);
    else if (frame.version < version)
        fail(CFileException::Version, QStringLiteral("an object of version %1 cannot be read, %2 is needed")
                                          .arg(frame.version)
                                          .arg(version));
}

bool CQtArchive::checkVersion(unsigned version)
{
    Frame& frame = openFrame();
    if (!m_loading) frame.version = std::max(frame.version, version);
    return frame.version >= version;
}

void CQtArchive::finish()
{
    const Frame frame = openFrame();
    if (m_loading) {
        m_position = frame.end;
    } else {
        const std::size_t size = static_cast<std::size_t>(m_bytes.size()) - frame.begin;
        patchNumber(frame.begin - frameHeadSize, static_cast<std::uint32_t>(size));
        patchNumber(frame.begin - frameHeadSize + 4, frame.version);
    }
    m_frames.pop_back();
}

void CQtArchive::patchNumber(std::size_t position, std::uint32_t number)
{
    const auto bytes = toBytes(number);
    std::memcpy(m_bytes.data() + position, bytes.data(), bytes.size());
}

// --- numbers and blocks ---

std::size_t CQtArchive::readableEnd() const
{
    return m_frames.empty() ? static_cast<std::size_t>(m_bytes.size()) : m_frames.back().end;
}

std::size_t CQtArchive::remaining() const
{
    requireMode(true);
    return readableEnd() - m_position;
}

void CQtArchive::readBlock(void* data, std::size_t size)
{
    requireIntact();
    if (size > remaining())
        fail(m_frames.empty() ? CFileException::Truncated : CFileException::Damaged,
             QStringLiteral("the data ends before the object does"));
    if (size > 0) std::memcpy(data, m_bytes.constData() + m_position, size);
    m_position += size;
}

void CQtArchive::writeBlock(const void* data, std::size_t size)
{
    requireMode(false);
    if (size > sizeLimit - headSize - static_cast<std::size_t>(m_bytes.size()))
        throw CFileException(CFileException::Limit, QStringLiteral("an archive cannot hold 2 GiB or more"));
    m_bytes.append(static_cast<const char*>(data), static_cast<int>(size));
}

template <typename Number>
Number CQtArchive::readNumber()
{
    char bytes[sizeof(Number)];
    readBlock(bytes, sizeof bytes);
    return fromBytes<Number>(bytes);
}

template <typename Number>
void CQtArchive::writeNumber(Number number)
{
    const auto bytes = toBytes(number);
    writeBlock(bytes.data(), bytes.size());
}

double CQtArchive::readDouble()
{
    return readNumber<double>();
}
void CQtArchive::writeDouble(double value)
{
    writeNumber(value);
}
float CQtArchive::readFloat()
{
    return readNumber<float>();
}
void CQtArchive::writeFloat(float value)
{
    writeNumber(value);
}
std::int32_t CQtArchive::readInt()
{
    return readNumber<std::int32_t>();
}
void CQtArchive::writeInt(std::int32_t value)
{
    writeNumber(value);
}
std::uint32_t CQtArchive::readUInt()
{
    return readNumber<std::uint32_t>();
}
void CQtArchive::writeUInt(std::uint32_t value)
{
    writeNumber(value);
}
std::int64_t CQtArchive::readInt64()
{
    return readNumber<std::int64_t>();
}
void CQtArchive::writeInt64(std::int64_t value)
{
    writeNumber(value);
}

bool CQtArchive::readBool()
{
    const auto byte = readNumber<std::uint8_t>();
    if (byte > 1) fail(CFileException::Damaged, QStringLiteral("a truth value is neither 0 nor 1"));
    return byte == 1;
}

void CQtArchive::writeBool(bool value)
{
    writeNumber(static_cast<std::uint8_t>(value ? 1 : 0));
}

std::uint32_t CQtArchive::readCount(std::size_t bytesPerItem)
{
    const auto count = readNumber<std::uint32_t>();
    if (count > remaining() / std::max<std::size_t>(bytesPerItem, 1))
        fail(CFileException::Damaged,
             QStringLiteral("a count of %1 is more than the data can hold").arg(count));
    return count;
}

void CQtArchive::requireMode(bool loading) const
{
    if (m_loading != loading)
        throw CommonError(loading ? QStringLiteral("a storing archive cannot be read")
                                  : QStringLiteral("a loading archive cannot be written"));
}

void CQtArchive::requireIntact()
{
    if (m_failed) fail(CFileException::Damaged, QStringLiteral("the archive is damaged"));
}

void CQtArchive::fail(int code, const QString& text)
{
    m_failed = true;
    throw CFileException(code, text);
}

} // namespace ksp
