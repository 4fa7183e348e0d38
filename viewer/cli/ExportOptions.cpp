#include <viewer/cli/ExportOptions.h>

#include <viewer/cli/CommandParser.h>
#include <viewer/cli/FenceOption.h>
#include <viewer/cli/UsageError.h>
#include <viewer/printable.h>

#include <QtCore/QFileInfo>

const char* const ExportOptions::synopsis = "export FILES... -o OUT.ply [--ascii] [--fence FILE.json]";
const char* const ExportOptions::description =
    "Writes what the scene draws as PLY: its points, lines and triangles, in model coordinates.";

void ExportOptions::declare(CommandParser& parser)
{
    parser.add({"o", "output"}, "the file to write", "OUT.ply");
    parser.add({"ascii"}, "numbers as text; binary at first");
    FenceOption::declare(parser);
}

ExportOptions ExportOptions::read(const CommandParser& parser)
{
    ExportOptions options;
    options.files = parser.positionalArguments();
    if (options.files.isEmpty())
        throw UsageError(QStringLiteral("export: no files; usage: viewer3d export FILES... -o OUT.ply"));
    options.output = parser.value("output");
    if (options.output.isEmpty()) throw UsageError(QStringLiteral("export: no output; add -o OUT.ply"));
    if (QFileInfo(options.output).suffix().toLower() != "ply")
        throw UsageError(QStringLiteral("-o %1: export writes PLY; the name must end in .ply")
                             .arg(shownName(options.output)));
    options.ascii = parser.isSet("ascii");
    options.fence = FenceOption::read(parser);
    return options;
}
