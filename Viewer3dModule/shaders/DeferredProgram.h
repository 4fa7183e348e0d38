#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <QtCore/QStringList>
#include <QtGui/QOpenGLShaderProgram>

#include <string>
#include <vector>

/// A program of buildShaderProgram that is built when it is first needed, by link() in the context that is
/// current then. Compiling takes milliseconds, and most scenes draw with few of the programs that they have.
///
/// Until then it has no stages and cannot be bound, but variants of it (beginProgramVariant) can be built:
/// who draws with one of these alone never needs the program itself.
class VIEWER3DMODULE_EXPORT DeferredProgram : public QOpenGLShaderProgram
{
public:
    DeferredProgram(QObject* parent, const QStringList& files, const std::vector<std::string>& defines);
    ~DeferredProgram() override;

    /// Builds it the first time, with what failed logged, and links it again afterwards. Without a context it
    /// stays as it is.
    bool link() override;

    /// Whether the program is still to be built; false for all that are not deferred, and for null.
    static bool isWaiting(const QOpenGLShaderProgram* program);
    /// Builds it when it is waiting; else nothing.
    static void build(QOpenGLShaderProgram* program);

private:
    bool m_isWaiting = true;
};
