#include <viewer/cli/ReadingOptions.h>

#include <viewer/Host.h>
#include <viewer/cli/CommandParser.h>
#include <viewer/cli/OptionValue.h>
#include <viewer/cli/UsageError.h>

namespace {

constexpr double finestLod = 100.0;
constexpr double greatestHeight = 1e12;

double readNumber(const CommandParser& parser, const char* option, double least, double most,
                  const char* wanted)
{
    bool isNumber = false;
    const QString text = parser.value(option);
    const double number = text.trimmed().toDouble(&isNumber);
    if (!isNumber || !(number >= least && number <= most))
        throw UsageError(
            QStringLiteral("--%1 %2: %3").arg(QLatin1String(option), text, QLatin1String(wanted)));
    return number;
}

} // namespace

void ReadingOptions::declare(CommandParser& parser)
{
    parser.add({"lod"},
               "city models no finer than this level of detail, for example 1 or 2.2; the finest at first",
               "VALUE");
    parser.add({"ground-height"}, "height of pictures that lie on the ground; 0 at first", "VALUE");
}

ReadingOptions ReadingOptions::read(const CommandParser& parser)
{
    ReadingOptions options;
    if (parser.isSet("lod"))
        options.lod = readNumber(parser, "lod", 0.0, finestLod,
                                 "a level of detail is wanted, a number of 0 or more, for example 2 or 2.2");
    if (parser.isSet("ground-height"))
        options.groundHeight = readNumber(parser, "ground-height", -greatestHeight, greatestHeight,
                                          "a height is wanted, a number in units of the model");
    return options;
}

void ReadingOptions::applyTo(Host& host) const
{
    host.setReaderOption(QStringLiteral("lod"), lod ? QVariant(*lod) : QVariant());
    host.setReaderOption(QStringLiteral("ground-height"), groundHeight);
}
