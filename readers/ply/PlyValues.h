#pragma once

#include <readers/ply/PlyHeader.h>

namespace readers {

/// Reads the values of a PLY file one after the other, in whichever of the formats.
class PlyValues
{
public:
    PlyValues(InputBuffer& input, PlyHeader::Format format)
        : m_input(input)
        , m_format(format)
    {
    }

    /// For messages: what is being read.
    void setPlace(const PlyHeader::Element* element, std::uint64_t record)
    {
        m_element = element;
        m_record = record;
    }
    /// The next value; exact for every type. Throws ksp::CommonError at the end of the file and for what is
    /// no number.
    double read(PlyHeader::Type type);
    /// The next value as a list's number of items; refuses what is none or more than the file can hold.
    std::uint64_t readCount(const PlyHeader::Property& list);
    void skip(const PlyHeader::Property& property);

    [[noreturn]] void fail(const QString& reason) const;

private:
    template <typename Number>
    double readBinary();
    double readText();

    InputBuffer& m_input;
    PlyHeader::Format m_format;
    const PlyHeader::Element* m_element = nullptr;
    std::uint64_t m_record = 0;
};

} // namespace readers
