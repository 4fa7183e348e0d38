#include <viewer/cli/LabelsOption.h>

#include <viewer/cli/CommandParser.h>

void LabelsOption::declare(CommandParser& parser)
{
    parser.addWithOptionalValue(
        "labels", "the names of features and city objects at their places, or another property of theirs",
        "PROPERTY", {});
}

std::optional<QString> LabelsOption::read(const CommandParser& parser)
{
    if (!parser.isSet("labels")) return {};
    const QString property = parser.value("labels");
    return property.isEmpty() ? QStringLiteral("name") : property;
}
