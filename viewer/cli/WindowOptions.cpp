#include <viewer/cli/WindowOptions.h>

#include <viewer/cli/CommandParser.h>
#include <viewer/cli/FenceOption.h>
#include <viewer/cli/LabelsOption.h>
#include <viewer/cli/PointSizeOption.h>

const char* const WindowOptions::synopsis = "[FILES...] [OPTIONS]";
const char* const WindowOptions::description =
    "Shows files of meshes, points and features, and makes pictures of them.\n\n"
    "  viewer3d [FILES...] [OPTIONS]          open the files in a window\n"
    "  viewer3d render FILES... -o OUT.png    make a picture\n"
    "  viewer3d depth FILES... -o OUT.pfm     write distances from the camera, for programs\n"
    "  viewer3d select FILES... --rect AREA   list the elements in an area of a picture\n"
    "  viewer3d export FILES... -o OUT.ply    write the geometry that is drawn\n"
    "  viewer3d info FILES...                 list elements, counts and bounds\n"
    "  viewer3d plugins                       list the plug-ins and what can be read\n\n"
    "viewer3d COMMAND --help tells the options of a command. Exit status: 0 done, 1 failed, 2 wrong usage.";

void WindowOptions::declare(CommandParser& parser)
{
    parser.add({"v", "version"}, "show the version");
    PointSizeOption::declare(parser);
    LabelsOption::declare(parser);
    FenceOption::declare(parser);
}

WindowOptions WindowOptions::read(const CommandParser& parser)
{
    WindowOptions options;
    options.files = parser.positionalArguments();
    options.pointSize = PointSizeOption::read(parser);
    options.labels = LabelsOption::read(parser);
    options.fence = FenceOption::read(parser);
    return options;
}
