#pragma once

#include <viewer/EyeDomeShading.h>

#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <QtCore/QPointer>
#include <QtCore/QSize>
#include <QtGui/QOpenGLShaderProgram>
#include <glm/glm.hpp>

class Scene3d;

/// Eye-dome lighting: darkens a finished frame where its depth has steps, so that shapes can be told apart
/// that have one colour, or no normals, as points.
///
/// A frame of several samples a pixel is resolved first: colours to their mean, depths to one of the samples.
/// A pixel that is not darkened is therefore as it was. Depth is not changed.
class EyeDomePass
{
public:
    /// Pixels beside a pixel that it depends on.
    static constexpr int reach = 5;

    /// The scene is not owned; it builds and keeps the program.
    explicit EyeDomePass(Scene3d& scene);

    /// Darkens the frame of this size in the lower left corner of the bound frame buffer: RGBA of 8 bits,
    /// depth of 24 with stencil of 8, as Qt makes them. A context of the scene's share group is current and
    /// the vertex array one of its own. OpenGL's state is afterwards as it was, but for the vertex array, of
    /// which none is bound. With Off, and without a program, the frame stays as it is.
    /// @param projection  eye to clip coordinates of the frame, or of the part of one
    void apply(EyeDomeShading shading, const QSize& size, const glm::dmat4& projection,
               unsigned int vertexArray);

private:
    QOpenGLShaderProgram* program();

    Scene3d& m_scene;
    QPointer<QOpenGLShaderProgram> m_program;
};
