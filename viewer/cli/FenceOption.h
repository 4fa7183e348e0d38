#pragma once

#include <viewer/FenceShape.h>

#include <QtCore/QString>

class CommandParser;

/// The option --fence of every command that draws.
namespace FenceOption {

void declare(CommandParser& parser);
/// The name of the file; empty when it is not given. Throws UsageError.
QString read(const CommandParser& parser);
/// The fence of a file, none for the empty name. Throws ksp::CommonError as FenceFile does.
FenceShape load(const QString& file);
/// Gives the project the fence that was loaded, after its files have been opened; where there is none its own
/// stays.
void apply(const FenceShape& shape, const CProject& project);

} // namespace FenceOption
