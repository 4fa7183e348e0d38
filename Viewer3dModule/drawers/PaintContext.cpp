#include <Viewer3dModule/drawers/PaintContext.h>

void PaintContext::setViewport(const QRect& rect)
{
    viewportRect = rect;
    viewport = viewportMatrix(rect);
}

glm::mat4 viewportMatrix(const QRect& rect)
{
    const auto width = static_cast<float>(rect.width());
    const auto height = static_cast<float>(rect.height());
    glm::mat4 matrix(1.0f);
    matrix[0][0] = width / 2.0f;
    matrix[1][1] = -height / 2.0f;
    matrix[3][0] = static_cast<float>(rect.left()) + width / 2.0f;
    matrix[3][1] = static_cast<float>(rect.top()) + height / 2.0f;
    return matrix;
}
