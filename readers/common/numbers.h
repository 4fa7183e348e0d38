#pragma once

#include <cstdint>
#include <string_view>

namespace readers {

/// Reads a whole token as a number, to the nearest double and whatever the locale; "inf" and "nan" are
/// numbers, and so is one too large for a double (infinite). False when it is none.
bool toDouble(std::string_view token, double& value);
/// Reads a whole token as an integer; false when it is none or too large.
bool toInteger(std::string_view token, std::int64_t& value);

/// Takes the next run of characters between blanks off the front of a line; empty when there is none.
std::string_view takeToken(std::string_view& line);
/// The text without blanks at both ends.
std::string_view trimmed(std::string_view text);

} // namespace readers
