#pragma once

#include <optional>

class CommandParser;

/// The option --point-size of every command that draws.
namespace PointSizeOption {

void declare(CommandParser& parser);
/// Pixels; nothing when it is not given. Throws UsageError.
std::optional<float> read(const CommandParser& parser);

} // namespace PointSizeOption
