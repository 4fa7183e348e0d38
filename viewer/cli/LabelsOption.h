#pragma once

#include <QtCore/QString>

#include <optional>

class CommandParser;

/// The option --labels of pictures and of the window.
namespace LabelsOption {

void declare(CommandParser& parser);
/// The property that is written, "name" where none is given; nothing without the option. Throws UsageError.
std::optional<QString> read(const CommandParser& parser);

} // namespace LabelsOption
