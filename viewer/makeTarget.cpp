#include <viewer/makeTarget.h>

#include <framework/ksp/CommonError.h>

#include <algorithm>

std::unique_ptr<QOpenGLFramebufferObject> makeTarget(OpenGLFunctions& gl, const QSize& size, int samples)
{
    GLint mostSamples = 0;
    gl.glGetIntegerv(GL_MAX_SAMPLES, &mostSamples);
    QOpenGLFramebufferObjectFormat format;
    format.setAttachment(QOpenGLFramebufferObject::CombinedDepthStencil);
    format.setSamples(std::min(samples, mostSamples));
    auto target = std::make_unique<QOpenGLFramebufferObject>(size, format);
    if (!target->isValid() || !target->bind())
        throw ksp::CommonError(QStringLiteral("the driver has no memory for a picture of %1 x %2 pixels")
                                   .arg(size.width())
                                   .arg(size.height()));
    return target;
}
