#pragma once

#include <framework/HostFramework_export.h>

#include <cstddef>
#include <cstdint>

namespace ksp {

/// Binary storage of objects, for writing and reading by one and the same serialize function.
///
/// An object is stored in a frame of its own:
///
///     archive.beginObject();
///     archive.value(a); archive.value(b);     // what every version of the object has
///     archive.endObject(1);
///     if (archive.checkVersion(4)) archive.value(c);   // what came with version 4
///     archive.finish();
///
/// While loading, checkVersion tells whether the stored object has the part that came with that version, and
/// finish skips what a newer writer added. Objects nest. Reading beyond the end of the frame, or anything
/// else that the stored bytes do not allow, throws ksp::CFileException. An archive that found its bytes
/// damaged is at an end: every later read and every later step on frames throws ksp::CFileException, too.
class HOSTFRAMEWORK_EXPORT IArchive
{
public:
    virtual ~IArchive() = default;

    virtual bool isLoading() const = 0;

    /// Opens the frame of an object.
    virtual void beginObject() = 0;
    /// States that what was stored so far in this frame belongs to the object's version (1 or more).
    virtual void endObject(unsigned version) = 0;
    /// Storing: marks the frame as holding that version and returns true. Loading: whether the frame was
    /// written by that version or a later one.
    virtual bool checkVersion(unsigned version) = 0;
    /// Closes the frame; loading skips what is left of it.
    virtual void finish() = 0;

    /// Raw bytes in the order of memory on a little-endian machine; use it for float and double blocks only.
    virtual void readBlock(void* data, std::size_t size) = 0;
    virtual void writeBlock(const void* data, std::size_t size) = 0;

    virtual double readDouble() = 0;
    virtual void writeDouble(double value) = 0;
    virtual float readFloat() = 0;
    virtual void writeFloat(float value) = 0;
    virtual bool readBool() = 0;
    virtual void writeBool(bool value) = 0;
    virtual std::int32_t readInt() = 0;
    virtual void writeInt(std::int32_t value) = 0;
    virtual std::uint32_t readUInt() = 0;
    virtual void writeUInt(std::uint32_t value) = 0;
    virtual std::int64_t readInt64() = 0;
    virtual void writeInt64(std::int64_t value) = 0;

    /// Reads or writes, whichever the archive does.
    void value(double& v);
    void value(float& v);
    void value(bool& v);
    void value(std::int32_t& v);
    void value(std::uint32_t& v);
    void value(std::int64_t& v);
    /// A block of raw bytes.
    void block(void* data, std::size_t size);
};

} // namespace ksp
