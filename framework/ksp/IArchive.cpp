#include <framework/ksp/IArchive.h>

namespace ksp {

void IArchive::value(double& v)
{
    if (isLoading())
        v = readDouble();
    else
        writeDouble(v);
}

void IArchive::value(float& v)
{
    if (isLoading())
        v = readFloat();
    else
        writeFloat(v);
}

void IArchive::value(bool& v)
{
    if (isLoading())
        v = readBool();
    else
        writeBool(v);
}

void IArchive::value(std::int32_t& v)
{
    if (isLoading())
        v = readInt();
    else
        writeInt(v);
}

void IArchive::value(std::uint32_t& v)
{
    if (isLoading())
        v = readUInt();
    else
        writeUInt(v);
}

void IArchive::value(std::int64_t& v)
{
    if (isLoading())
        v = readInt64();
    else
        writeInt64(v);
}

void IArchive::block(void* data, std::size_t size)
{
    if (isLoading())
        readBlock(data, size);
    else
        writeBlock(data, size);
}

} // namespace ksp
