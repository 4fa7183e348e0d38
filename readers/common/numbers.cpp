#include <readers/common/numbers.h>

#include <charconv>
#include <limits>

namespace readers {

namespace {

bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r') || c == '\0';
}

// from_chars takes no plus sign.
std::string_view withoutPlus(std::string_view token)
{
    if (token.size() > 1 && token[0] == '+' && token[1] != '-') token.remove_prefix(1);
    return token;
}

} // namespace

bool toDouble(std::string_view token, double& value)
{
    token = withoutPlus(token);
    const char* end = token.data() + token.size();
    const auto [stop, error] = std::from_chars(token.data(), end, value);
    if (stop != end || error == std::errc::invalid_argument) return false;
    if (error == std::errc::result_out_of_range) {
        // too large or next to nothing, as the exponent says or, without one, a digit before the point
        const bool negative = token.front() == '-';
        const auto exponent = token.find_first_of("eE");
        const bool large = exponent != std::string_view::npos
                               ? token[exponent + 1] != '-'
                               : token.substr(0, token.find('.')).find_first_of("123456789") != token.npos;
        value = large ? std::numeric_limits<double>::infinity() : 0.0;
        if (negative) value = -value;
    }
    return true;
}

bool toInteger(std::string_view token, std::int64_t& value)
{
    token = withoutPlus(token);
    const char* end = token.data() + token.size();
    const auto [stop, error] = std::from_chars(token.data(), end, value);
    return stop == end && error == std::errc();
}

std::string_view takeToken(std::string_view& line)
{
    std::size_t begin = 0;
    while (begin < line.size() && isBlank(line[begin]))
        ++begin;
    std::size_t end = begin;
    while (end < line.size() && !isBlank(line[end]))
        ++end;
    const std::string_view token = line.substr(begin, end - begin);
    line.remove_prefix(end);
    return token;
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

} // namespace readers
