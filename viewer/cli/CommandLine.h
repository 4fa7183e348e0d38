#pragma once

#include <viewer/Viewpoint.h>

#include <QtCore/QSize>
#include <QtCore/QStringList>
#include <QtGui/QColor>
#include <glm/glm.hpp>

#include <optional>
#include <variant>

/// Where to look from. Points are model coordinates.
struct CameraOptions
{
    /// A position of one's own instead of a standard view.
    struct Position
    {
        glm::dvec3 eye;
        glm::dvec3 target;
        glm::dvec3 up; ///< never along the line of sight
    };

    StandardView view = StandardView::Iso;
    IProjection::Projection projection = IProjection::Central;
    std::optional<Position> position;
};

struct WindowOptions
{
    QStringList files;
    std::optional<float> pointSize; ///< pixels; nothing: as usual
};

struct RenderOptions
{
    QStringList files;
    QString output;
    QSize size = QSize(1280, 720); ///< pixels
    CameraOptions camera;
    QColor background;              ///< invalid: that of the settings
    std::optional<float> pointSize; ///< pixels; nothing: as usual
};

struct InfoOptions
{
    QStringList files;
    bool json = false;
};

/// Lists the plug-ins.
struct PluginsOptions
{
};

/// Text that was asked for instead of work.
struct HelpRequest
{
    QString text;
};

/// What the arguments ask for.
using Command = std::variant<WindowOptions, RenderOptions, InfoOptions, PluginsOptions, HelpRequest>;

/// Reads the arguments, the program's name not among them. Throws UsageError. Needs no application object and
/// looks at no file, but to tell a file from a mistyped command.
Command parseCommandLine(const QStringList& arguments);

/// Whether a picture of this size can be asked for; otherwise why not, else an empty text.
QString refusePictureSize(const QSize& size);
