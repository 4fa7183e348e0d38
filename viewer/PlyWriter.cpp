#include <viewer/PlyWriter.h>

#include <framework/ksp/CommonError.h>

#include <QtCore/QtEndian>

#include <charconv>
#include <limits>

namespace {

constexpr int bufferSize = 256 * 1024; // bytes
constexpr int longestRecord = 128;     // bytes
constexpr std::uint64_t recordsBetweenChecks = 16 * 1024;

template <typename Number>
void appendText(QByteArray& buffer, Number number)
{
    char text[32];
    const std::to_chars_result result = std::to_chars(text, text + sizeof text, number);
    buffer.append(text, static_cast<int>(result.ptr - text));
    buffer.append(' ');
}

template <typename Number>
void appendBytes(QByteArray& buffer, Number number)
{
    char bytes[sizeof number];
    qToLittleEndian(number, bytes);
    buffer.append(bytes, sizeof bytes);
}

PlyWriter::Counts sumOf(const std::vector<PlyWriter::Counts>& parts)
{
    PlyWriter::Counts sum;
    for (const PlyWriter::Counts& part : parts) {
        sum.points += part.points;
        sum.lines += part.lines;
        sum.triangles += part.triangles;
    }
    return sum;
}

} // namespace

PlyWriter::PlyWriter(QIODevice& device, Format format, std::vector<Counts> parts)
    : m_device(device)
    , m_format(format)
    , m_parts(std::move(parts))
    , m_sum(sumOf(m_parts))
    , m_progress(ksp::StagedProgress::dummy())
{
    m_buffer.reserve(bufferSize);
    writeHead();
}

void PlyWriter::writeHead()
{
    constexpr auto most = static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max());
    if (m_sum.vertices() > most)
        throw ksp::CommonError(QStringLiteral("%1 vertices are more than the %2 that PLY files number")
                                   .arg(m_sum.vertices())
                                   .arg(most));
    const auto element = [this](const char* name, std::uint64_t count, const char* properties) {
        if (count != 0)
            m_buffer += QByteArray("element ") + name + ' ' +
                        QByteArray::number(static_cast<qulonglong>(count)) + '\n' + properties;
    };
    m_buffer +=
        m_format == Format::Binary ? "ply\nformat binary_little_endian 1.0\n" : "ply\nformat ascii 1.0\n";
    m_buffer += "comment what a scene of viewer3d draws, in model coordinates\n";
    element("vertex", m_sum.vertices(), "property double x\nproperty double y\nproperty double z\n");
    element("face", m_sum.triangles, "property list uchar int vertex_indices\n");
    element("edge", m_sum.lines, "property int vertex1\nproperty int vertex2\n");
    if (namesPoints()) element("point", m_sum.points, "property int vertex_index\n");
    m_buffer += "end_header\n";
    flush();
}

void PlyWriter::addVertex(const glm::dvec3& position)
{
    for (int i = 0; i < 3; ++i)
        writeNumber(position[i]);
    endRecord();
}

void PlyWriter::finish(ksp::StagedProgress progress)
{
    m_progress = std::move(progress);
    m_namings = m_sum.triangles + m_sum.lines + (namesPoints() ? m_sum.points : 0);
    for (const auto write : {&PlyWriter::writeFaces, &PlyWriter::writeEdges, &PlyWriter::writePoints}) {
        std::uint64_t first = 0; // vertex of the part
        for (const Counts& part : m_parts) {
            (this->*write)(part, first);
            first += part.vertices();
        }
    }
    flush();
}

void PlyWriter::writeFaces(const Counts& part, std::uint64_t first)
{
    const std::uint64_t end = first + part.vertices();
    for (std::uint64_t i = end - 3 * part.triangles; i < end; i += 3) {
        m_buffer.append(m_format == Format::Binary ? "\3" : "3 ");
        for (std::uint64_t corner = i; corner < i + 3; ++corner)
            writeIndex(corner);
        endNaming();
    }
}

void PlyWriter::writeEdges(const Counts& part, std::uint64_t first)
{
    const std::uint64_t begin = first + part.points;
    for (std::uint64_t i = begin; i < begin + 2 * part.lines; i += 2) {
        writeIndex(i);
        writeIndex(i + 1);
        endNaming();
    }
}

void PlyWriter::writePoints(const Counts& part, std::uint64_t first)
{
    if (!namesPoints()) return;
    for (std::uint64_t i = first; i < first + part.points; ++i) {
        writeIndex(i);
        endNaming();
    }
}

void PlyWriter::endNaming()
{
    endRecord();
    if (++m_naming % recordsBetweenChecks != 0) return;
    m_progress.setDone(static_cast<double>(m_naming), static_cast<double>(m_namings));
    m_progress.throwIfCanceled();
}

void PlyWriter::writeNumber(std::int32_t number)
{
    if (m_format == Format::Binary)
        appendBytes(m_buffer, number);
    else
        appendText(m_buffer, number);
}

void PlyWriter::writeNumber(double number)
{
    if (m_format == Format::Binary)
        appendBytes(m_buffer, number);
    else
        appendText(m_buffer, number);
}

void PlyWriter::endRecord()
{
    if (m_format == Format::Ascii) m_buffer.back() = '\n'; // in place of the blank
    if (m_buffer.size() > bufferSize - longestRecord) flush();
}

// A device that has room for a part takes it and only then says why it takes no more.
void PlyWriter::flush()
{
    for (int written = 0; written < m_buffer.size();) {
        const qint64 taken = m_device.write(m_buffer.constData() + written, m_buffer.size() - written);
        if (taken <= 0) throw ksp::CommonError(m_device.errorString());
        written += static_cast<int>(taken);
    }
    m_buffer.resize(0); // keeps its memory
}
