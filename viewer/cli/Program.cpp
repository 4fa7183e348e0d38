#include <viewer/cli/Program.h>

#include <viewer/Host.h>
#include <viewer/cli/Commands.h>
#include <viewer/cli/FenceOption.h>
#include <viewer/cli/UsageError.h>
#include <viewer/cli/qtMessages.h>
#include <viewer/cli/tell.h>
#include <viewer/printable.h>
#include <viewer/window/MainWindow.h>

#include <framework/ksp/Canceled.h>
#include <framework/ksp/Log.h>

#include <QtCore/QFileInfo>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>

#include <algorithm>

namespace {

/// Keeps warnings and errors of the log back: shown after work that succeeded, so that work that fails says
/// its one reason and nothing else.
class HeldLog
{
public:
    HeldLog()
        : m_handler(ksp::Log::addHandler([this](ksp::Log::MessageType type, const QString& text) {
            if (type == ksp::Log::Error || type == ksp::Log::Warning) m_lines.append(text);
        }))
    {
    }
    ~HeldLog() { ksp::Log::removeHandler(m_handler); }
    HeldLog(const HeldLog&) = delete;
    HeldLog& operator=(const HeldLog&) = delete;

    void show()
    {
        m_lines.removeDuplicates();
        for (const QString& line : m_lines)
            tell(QStringLiteral("warning: ") + line);
        m_lines.clear();
    }

private:
    QStringList m_lines;
    int m_handler;
};

/// Qt ends the program where its platform finds no display; this says so in a line of ours before.
void requireDisplay()
{
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    const bool wantsX = platform.isEmpty() || platform.startsWith("xcb");
    if (wantsX && qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        throw ksp::CommonError(QStringLiteral("there is no display: set DISPLAY, or start it with xvfb-run"));
}

void configure(QCoreApplication& application)
{
    application.setApplicationName(QStringLiteral("viewer3d"));
    application.setApplicationVersion(QStringLiteral(V3D_VERSION));
}

/// A window of which nothing could show does not open; what is missing beside others shows among its
/// messages.
void requireAnyFile(const QStringList& files)
{
    const auto exists = [](const QString& file) { return QFileInfo::exists(file); };
    if (!files.isEmpty() && std::none_of(files.begin(), files.end(), exists))
        throw ksp::CommonError(shownName(files.first()) + QStringLiteral(": there is no such file"));
}

int runWindow(const WindowOptions& options)
{
    const FenceShape fence = FenceOption::load(options.fence);
    Host host(Host::Settings::Kept);
    host.setPointSize(options.pointSize);
    options.reading.applyTo(host);
    MainWindow window(host);
    window.setDiscardQuestion([&window] {
        return QMessageBox::question(
                   &window, QObject::tr("Unsaved project"),
                   QObject::tr("What was added since the project was saved last will be lost."),
                   QMessageBox::Discard | QMessageBox::Cancel) == QMessageBox::Discard;
    });
    if (options.labels) window.showLabels(*options.labels);
    window.show();
    QMetaObject::invokeMethod(
        &window,
        [&] {
            if (!options.files.isEmpty()) window.openFiles(options.files);
            FenceOption::apply(fence, window.project());
        },
        Qt::QueuedConnection);
    const int status = QApplication::exec();
    host.saveSettings();
    return status;
}

} // namespace

Program::Program(int argc, char** argv)
    : m_argc(argc)
    , m_argv(argv)
{
}

int Program::run()
{
    holdStandardStreams();
    takeOverQtMessages();
    try {
        QStringList arguments;
        for (int i = 1; i < m_argc; ++i)
            arguments.append(QString::fromLocal8Bit(m_argv[i]));
        return execute(parseCommandLine(arguments));
    } catch (const UsageError& error) {
        tell(error.text());
        return 2;
    } catch (const ksp::Canceled&) {
        tell(QStringLiteral("cancelled"));
    } catch (const ksp::CommonError& error) {
        tell(error.text());
    } catch (const std::bad_alloc&) {
        tell(QStringLiteral("there is not enough memory"));
    } catch (const std::exception& error) {
        tell(QString::fromUtf8(error.what()));
    }
    return 1;
}

int Program::execute(const Command& command)
{
    if (const auto* help = std::get_if<HelpRequest>(&command)) {
        print(help->text.toLocal8Bit());
        return 0;
    }
    int argc = 1; // Qt shall not take options out of our arguments
    if (const auto* window = std::get_if<WindowOptions>(&command)) {
        requireAnyFile(window->files);
        requireDisplay();
        QApplication application(argc, m_argv);
        configure(application);
        return runWindow(*window);
    }
    HeldLog log;
    const auto* picture = std::get_if<RenderOptions>(&command);
    const auto* distances = std::get_if<DepthOptions>(&command);
    const auto* area = std::get_if<SelectOptions>(&command);
    const auto* geometry = std::get_if<ExportOptions>(&command);
    if (picture || distances || area || geometry) {
        requireDisplay();
        QApplication application(argc, m_argv);
        configure(application);
        if (picture)
            commands::render(*picture);
        else if (distances)
            commands::depth(*distances);
        else if (area)
            print(commands::select(*area));
        else
            commands::exportScene(*geometry);
    } else {
        QCoreApplication application(argc, m_argv);
        configure(application);
        const auto* info = std::get_if<InfoOptions>(&command);
        print(info ? commands::info(*info) : commands::plugins());
    }
    log.show();
    return 0;
}
