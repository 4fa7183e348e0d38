#include "GlDebug.h"
#include "LogTrap.h"

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>
#include <QtGui/QSurfaceFormat>
#include <QtWidgets/QApplication>

#include <cstdio>

namespace {

// Every context of a test is a debug context of the 4.3 core profile; contexts share, as the scene requires.
void setDefaultFormat()
{
    QSurfaceFormat format;
    format.setVersion(4, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setOption(QSurfaceFormat::DebugContext);
    format.setDepthBufferSize(24);
    QSurfaceFormat::setDefaultFormat(format);
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
}

// Most of the time of tests goes into what the software driver makes of programs that draw a few pixels each.
// Without its compiler's optimizations it takes half as long, and the pictures are the same to the bit. Where
// the environment says something else, or sets it to nothing, that stays; programs that a test starts have
// it, too.
void spareOptimizations()
{
    if (!qEnvironmentVariableIsSet("GALLIVM_PERF")) qputenv("GALLIVM_PERF", "nopt");
}

/// Qt ends a program that finds no display by a signal, after some lines about its plug-ins.
bool isDisplayMissing()
{
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    return (platform.isEmpty() || platform == "xcb") && qEnvironmentVariableIsEmpty("DISPLAY") &&
           qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

} // namespace

// Programs named unit_* need neither a display nor OpenGL; gl_* and app_* have both.
int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    if (::testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();

    std::unique_ptr<QCoreApplication> application;
    if (QFileInfo(QString::fromLocal8Bit(argv[0])).fileName().startsWith(QLatin1String("unit_"))) {
        application = std::make_unique<QCoreApplication>(argc, argv);
    } else if (isDisplayMissing()) {
        std::fprintf(stderr,
                     "There is no display: set DISPLAY, or run the tests by ./test.sh or xvfb-run.\n");
        return 1;
    } else {
        setDefaultFormat();
        spareOptimizations();
        application = std::make_unique<QApplication>(argc, argv);
    }
    LogTrap::install();
    return RUN_ALL_TESTS();
}
