#pragma once

#include <readers/common/InputBuffer.h>

#include <string>
#include <vector>

namespace readers {

/// What the head of a PLY file says about the data that follow.
struct PlyHeader
{
    enum Format { Ascii, LittleEndian, BigEndian };
    enum Type { Int8, UInt8, Int16, UInt16, Int32, UInt32, Float32, Float64 };

    struct Property
    {
        std::string name;
        Type type = Float32; ///< of the value, or of a list's items
        bool isList = false;
        Type countType = UInt8; ///< of a list's number of items
    };
    struct Element
    {
        std::string name;
        std::uint64_t count = 0;
        std::vector<Property> properties;
        /// The number of the property, or -1.
        int find(std::string_view propertyName) const;
        /// Bytes that a record takes at least.
        std::uint64_t smallestRecord(Format format) const;
    };

    Format format = Ascii;
    std::vector<Element> elements;

    /// Bytes of a binary value.
    static std::size_t sizeOf(Type type);
    /// Reads the head, to the line that ends it. Throws ksp::CommonError, also for counts that the rest of
    /// the file cannot hold.
    static PlyHeader read(InputBuffer& input);
};

} // namespace readers
