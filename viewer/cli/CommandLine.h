#pragma once

#include <viewer/cli/DepthOptions.h>
#include <viewer/cli/ExportOptions.h>
#include <viewer/cli/HelpRequest.h>
#include <viewer/cli/InfoOptions.h>
#include <viewer/cli/PluginsOptions.h>
#include <viewer/cli/RenderOptions.h>
#include <viewer/cli/SelectOptions.h>
#include <viewer/cli/WindowOptions.h>

#include <variant>

/// What the arguments ask for.
using Command = std::variant<WindowOptions, RenderOptions, DepthOptions, SelectOptions, ExportOptions,
                             InfoOptions, PluginsOptions, HelpRequest>;

/// Reads the arguments, the program's name not among them. Throws UsageError. Needs no application object and
/// looks at no file, but to tell a file from a mistyped command.
Command parseCommandLine(const QStringList& arguments);
