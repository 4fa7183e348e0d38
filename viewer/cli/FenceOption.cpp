#include <viewer/cli/FenceOption.h>

#include <viewer/cli/CommandParser.h>
#include <viewer/cli/FenceFile.h>
#include <viewer/cli/UsageError.h>

void FenceOption::declare(CommandParser& parser)
{
    parser.add({"fence"},
               "what lies outside of this fence is not there: a sphere, a prism or a frustum (JSON)",
               "FILE.json");
}

QString FenceOption::read(const CommandParser& parser)
{
    const QString file = parser.value("fence");
    if (parser.isSet("fence") && file.isEmpty())
        throw UsageError(QStringLiteral("--fence wants the name of a file"));
    return file;
}

FenceShape FenceOption::load(const QString& file)
{
    return file.isEmpty() ? FenceShape() : FenceFile::read(file);
}

void FenceOption::apply(const FenceShape& shape, const CProject& project)
{
    if (!std::holds_alternative<std::monostate>(shape)) setShape(fenceElement(project), shape);
}
