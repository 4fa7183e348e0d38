#include <viewer/cli/Program.h>

#include <QtCore/QCoreApplication>
#include <QtGui/QSurfaceFormat>

int main(int argc, char** argv)
{
    // Both hold for contexts that are made later, the shared one of the application first.
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QSurfaceFormat format;
    format.setVersion(4, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setDepthBufferSize(24);
    QSurfaceFormat::setDefaultFormat(format);
    return Program(argc, argv).run();
}
