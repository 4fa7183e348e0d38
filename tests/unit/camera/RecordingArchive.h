#pragma once

#include <framework/ksp/IArchive.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

/// A storing archive that writes down what it is asked to do: steps by name, and every double in order.
class RecordingArchive : public ksp::IArchive
{
public:
    std::vector<std::string> steps;
    std::vector<double> doubles;

    bool isLoading() const override { return false; }
    void beginObject() override { steps.push_back("begin"); }
    void endObject(unsigned version) override { steps.push_back("end " + std::to_string(version)); }
    bool checkVersion(unsigned version) override
    {
        steps.push_back("check " + std::to_string(version));
        return true;
    }
    void finish() override { steps.push_back("finish"); }
    void writeBlock(const void* data, std::size_t size) override
    {
        steps.push_back("block " + std::to_string(size));
        std::vector<double> values(size / sizeof(double));
        std::memcpy(values.data(), data, values.size() * sizeof(double));
        doubles.insert(doubles.end(), values.begin(), values.end());
    }
    void writeDouble(double value) override
    {
        steps.push_back("double");
        doubles.push_back(value);
    }

    void writeFloat(float) override { unexpected(); }
    void writeBool(bool) override { unexpected(); }
    void writeInt(std::int32_t) override { unexpected(); }
    void writeUInt(std::uint32_t) override { unexpected(); }
    void writeInt64(std::int64_t) override { unexpected(); }
    void readBlock(void*, std::size_t) override { unexpected(); }
    double readDouble() override { unexpected(); }
    float readFloat() override { unexpected(); }
    bool readBool() override { unexpected(); }
    std::int32_t readInt() override { unexpected(); }
    std::uint32_t readUInt() override { unexpected(); }
    std::int64_t readInt64() override { unexpected(); }

private:
    [[noreturn]] static void unexpected()
    {
        throw std::logic_error("not what a camera or projection stores");
    }
};
