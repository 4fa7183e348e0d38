#include <readers/ply/PlyValues.h>

#include <framework/ksp/CommonError.h>
#include <readers/common/numbers.h>
#include <readers/common/reading.h>

#include <QtCore/QtEndian>

#include <cmath>

namespace readers {

void PlyValues::fail(const QString& reason) const
{
    throw ksp::CommonError(QStringLiteral("element %1, record %2: %3")
                               .arg(inQuotes(m_element->name))
                               .arg(m_record + 1)
                               .arg(reason));
}

template <typename Number>
double PlyValues::readBinary()
{
    const char* bytes = m_input.readBytes(sizeof(Number));
    if (!bytes) fail(QStringLiteral("the file ends here"));
    return static_cast<double>(m_format == PlyHeader::BigEndian ? qFromBigEndian<Number>(bytes)
                                                                : qFromLittleEndian<Number>(bytes));
}

double PlyValues::readText()
{
    std::string_view token;
    if (!m_input.readToken(token)) fail(QStringLiteral("the file ends here"));
    double value = 0.0;
    if (!toDouble(token, value)) fail(inQuotes(token) + QStringLiteral(" is not a number"));
    return value;
}

double PlyValues::read(PlyHeader::Type type)
{
    if (m_format == PlyHeader::Ascii) return readText();
    switch (type) {
    case PlyHeader::Int8:
        return readBinary<qint8>();
    case PlyHeader::UInt8:
        return readBinary<quint8>();
    case PlyHeader::Int16:
        return readBinary<qint16>();
    case PlyHeader::UInt16:
        return readBinary<quint16>();
    case PlyHeader::Int32:
        return readBinary<qint32>();
    case PlyHeader::UInt32:
        return readBinary<quint32>();
    case PlyHeader::Float32:
        return readBinary<float>();
    case PlyHeader::Float64:
        break;
    }
    return readBinary<double>();
}

std::uint64_t PlyValues::readCount(const PlyHeader::Property& list)
{
    const double count = read(list.countType);
    const std::uint64_t item = m_format == PlyHeader::Ascii ? 2 : PlyHeader::sizeOf(list.type);
    const auto most = static_cast<double>((m_input.getRemaining() + 1) / item);
    if (!(count >= 0.0) || count != std::floor(count))
        fail(QStringLiteral("%1 is not a number of items").arg(count));
    if (count > most) fail(QStringLiteral("%1 items do not fit into the rest of the file").arg(count));
    return static_cast<std::uint64_t>(count);
}

void PlyValues::skip(const PlyHeader::Property& property)
{
    const std::uint64_t count = property.isList ? readCount(property) : 1;
    for (std::uint64_t i = 0; i < count; ++i)
        read(property.type);
}

} // namespace readers
