#include "GlDebug.h"
#include "LogTrap.h"

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>
#include <QtGui/QSurfaceFormat>
#include <QtWidgets/QApplication>

#include <cstring>

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

bool onlyLists(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i)
        if (std::strncmp(argv[i], "--gtest_list_tests", 18) == 0) return true;
    return false;
}

} // namespace

// Programs named unit_* need neither a display nor OpenGL; gl_* and app_* have both.
int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    if (onlyLists(argc, argv)) return RUN_ALL_TESTS();

    std::unique_ptr<QCoreApplication> application;
    if (QFileInfo(QString::fromLocal8Bit(argv[0])).fileName().startsWith(QLatin1String("unit_"))) {
        application = std::make_unique<QCoreApplication>(argc, argv);
    } else {
        setDefaultFormat();
        application = std::make_unique<QApplication>(argc, argv);
    }
    LogTrap::install();
    return RUN_ALL_TESTS();
}
