#pragma once

#include <cstdint>
#include <string>

namespace readers {

/// Is told what stands in a JSON text, in its order. What it throws ends the reading.
class JsonHandler
{
public:
    virtual ~JsonHandler() = default;

    virtual void onNull() = 0;
    virtual void onBoolean(bool value) = 0;
    /// A whole number that is written as one, without point and exponent, and fits.
    virtual void onInteger(std::int64_t value) = 0;
    /// Any other number, rounded to the nearest double; always finite.
    virtual void onNumber(double value) = 0;
    /// Text in UTF-8, escapes resolved. May be taken away.
    virtual void onString(std::string& text) = 0;

    virtual void onObject() = 0;
    /// The name of the member whose value comes next; a name may come twice. May be taken away.
    virtual void onKey(std::string& name) = 0;
    virtual void onObjectEnd() = 0;
    virtual void onArray() = 0;
    virtual void onArrayEnd() = 0;
};

} // namespace readers
