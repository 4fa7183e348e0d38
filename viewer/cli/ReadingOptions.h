#pragma once

#include <optional>

class CommandParser;
class Host;

/// The options of every command that reads files: what readers make of them.
struct ReadingOptions
{
    std::optional<double> lod; ///< the finest level of detail of city models; nothing: all that there are
    double groundHeight = 0.0; ///< of pictures from above, model units

    static void declare(CommandParser& parser);
    /// Throws UsageError.
    static ReadingOptions read(const CommandParser& parser);
    void applyTo(Host& host) const;
};
