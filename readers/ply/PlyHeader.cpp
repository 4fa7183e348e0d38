#include <readers/ply/PlyHeader.h>

#include <framework/ksp/CommonError.h>
#include <readers/common/numbers.h>
#include <readers/common/reading.h>

#include <array>

namespace readers {

namespace {

constexpr std::uint64_t longestHead = 1024 * 1024; // bytes
constexpr std::size_t mostElements = 1000;

[[noreturn]] void fail(const InputBuffer& input, const QString& reason)
{
    throw ksp::CommonError(QStringLiteral("line %1: %2").arg(input.getLineNumber()).arg(reason));
}

PlyHeader::Type readType(const InputBuffer& input, std::string_view name)
{
    struct Name
    {
        std::string_view name;
        PlyHeader::Type type;
    };
    static constexpr std::array<Name, 16> names = {{{"char", PlyHeader::Int8},
                                                    {"uchar", PlyHeader::UInt8},
                                                    {"short", PlyHeader::Int16},
                                                    {"ushort", PlyHeader::UInt16},
                                                    {"int", PlyHeader::Int32},
                                                    {"uint", PlyHeader::UInt32},
                                                    {"float", PlyHeader::Float32},
                                                    {"double", PlyHeader::Float64},
                                                    {"int8", PlyHeader::Int8},
                                                    {"uint8", PlyHeader::UInt8},
                                                    {"int16", PlyHeader::Int16},
                                                    {"uint16", PlyHeader::UInt16},
                                                    {"int32", PlyHeader::Int32},
                                                    {"uint32", PlyHeader::UInt32},
                                                    {"float32", PlyHeader::Float32},
                                                    {"float64", PlyHeader::Float64}}};
    for (const Name& entry : names) {
        if (entry.name == name) return entry.type;
    }
    fail(input, inQuotes(name) + QStringLiteral(" is not a type of property"));
}

PlyHeader::Format readFormat(const InputBuffer& input, std::string_view name)
{
    if (name == "ascii") return PlyHeader::Ascii;
    if (name == "binary_little_endian") return PlyHeader::LittleEndian;
    if (name == "binary_big_endian") return PlyHeader::BigEndian;
    fail(input, inQuotes(name) + QStringLiteral(" is not a format"));
}

void addElement(const InputBuffer& input, std::string_view rest, PlyHeader& header)
{
    PlyHeader::Element element;
    element.name = takeToken(rest);
    const std::string_view text = takeToken(rest);
    std::int64_t count = 0;
    if (!toInteger(text, count) || count < 0) fail(input, inQuotes(text) + QStringLiteral(" is not a count"));
    element.count = static_cast<std::uint64_t>(count);
    if (header.elements.size() >= mostElements)
        fail(input, QStringLiteral("more than %1 elements").arg(mostElements));
    for (const PlyHeader::Element& other : header.elements) {
        if (other.name == element.name) fail(input, QStringLiteral("an element is declared twice"));
    }
    header.elements.push_back(std::move(element));
}

void addProperty(const InputBuffer& input, std::string_view rest, PlyHeader& header)
{
    if (header.elements.empty()) fail(input, QStringLiteral("a property before any element"));
    PlyHeader::Property property;
    std::string_view type = takeToken(rest);
    if (type == "list") {
        property.isList = true;
        property.countType = readType(input, takeToken(rest));
        type = takeToken(rest);
    }
    property.type = readType(input, type);
    property.name = takeToken(rest);
    header.elements.back().properties.push_back(std::move(property));
}

void checkCounts(const InputBuffer& input, const PlyHeader& header)
{
    std::uint64_t left = input.getRemaining() + 1; // the last blank of an ascii file may be missing
    for (const PlyHeader::Element& element : header.elements) {
        const std::uint64_t record = element.smallestRecord(header.format);
        if (record == 0) continue;
        if (element.count > left / record)
            throw ksp::CommonError(QStringLiteral("is too short: %1 records of %2 do not fit into %3 bytes")
                                       .arg(element.count)
                                       .arg(inQuotes(element.name))
                                       .arg(left - 1));
        left -= element.count * record;
    }
}

} // namespace

int PlyHeader::Element::find(std::string_view propertyName) const
{
    for (std::size_t i = 0; i < properties.size(); ++i) {
        if (properties[i].name == propertyName) return static_cast<int>(i);
    }
    return -1;
}

std::size_t PlyHeader::sizeOf(Type type)
{
    static constexpr std::array<std::size_t, 8> sizes = {1, 1, 2, 2, 4, 4, 4, 8};
    return sizes[static_cast<std::size_t>(type)];
}

std::uint64_t PlyHeader::Element::smallestRecord(Format format) const
{
    std::uint64_t size = 0;
    for (const Property& property : properties)
        size += format == Ascii ? 2 : sizeOf(property.isList ? property.countType : property.type);
    return size;
}

PlyHeader PlyHeader::read(InputBuffer& input)
{
    constexpr std::size_t markSize = 4;
    const std::string_view mark = input.peek(markSize);
    if (mark.size() < markSize || mark.substr(0, 3) != "ply" ||
        (mark[3] != '\n' && mark[3] != '\r' && mark[3] != ' '))
        throw ksp::CommonError(QStringLiteral("is not a PLY file"));
    PlyHeader header;
    bool hasFormat = false;
    const std::uint64_t size = input.getRemaining();
    std::string_view line;
    while (input.readLine(line)) {
        if (size - input.getRemaining() > longestHead) fail(input, QStringLiteral("the head does not end"));
        const std::string_view keyword = takeToken(line);
        if (keyword == "end_header") {
            if (!hasFormat) fail(input, QStringLiteral("the head names no format"));
            checkCounts(input, header);
            return header;
        }
        if (keyword == "format") {
            header.format = readFormat(input, takeToken(line));
            hasFormat = true;
        } else if (keyword == "element") {
            addElement(input, line, header);
        } else if (keyword == "property") {
            addProperty(input, line, header);
        } else if (!keyword.empty() && keyword != "ply" && keyword != "comment" && keyword != "obj_info") {
            fail(input, inQuotes(keyword) + QStringLiteral(" is not a statement of a head"));
        }
    }
    throw ksp::CommonError(QStringLiteral("ends within its head"));
}

} // namespace readers
