#include <viewer/PfmWriter.h>

#include <viewer/OutputFile.h>

#include <QtCore/QtEndian>

#include <algorithm>

namespace {

constexpr qint64 bufferLength = 1 << 20; // bytes

} // namespace

PfmWriter::PfmWriter(OutputFile& file, const QSize& size)
    : m_file(file)
    , m_size(size)
    , m_rowsLeft(size.height())
{
    const QByteArray head = "Pf\n" + QByteArray::number(size.width()) + ' ' +
                            QByteArray::number(size.height()) + "\n-1.0\n"; // negative: little endian
    m_headLength = head.size();
    m_file.write(head.constData(), head.size());
}

void PfmWriter::write(const float* distances, int rowCount)
{
    const qint64 rowLength = m_size.width() * static_cast<qint64>(sizeof(float));
    m_rowsLeft -= rowCount;
    if (!m_file.device().seek(m_headLength + m_rowsLeft * rowLength)) m_file.fail();
    const auto rowsAtATime = static_cast<int>(std::max<qint64>(bufferLength / rowLength, 1));
    m_buffer.resize(static_cast<std::size_t>(rowsAtATime * rowLength));
    for (int end = rowCount; end > 0; end -= rowsAtATime) {
        const int begin = std::max(end - rowsAtATime, 0);
        char* target = m_buffer.data();
        for (int row = end - 1; row >= begin; --row, target += rowLength)
            qToLittleEndian<float>(distances + static_cast<std::ptrdiff_t>(row) * m_size.width(),
                                   m_size.width(), target);
        m_file.write(m_buffer.data(), target - m_buffer.data());
    }
}

void PfmWriter::finish() {}
