#include <benchmarks/scene/View.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>

View View::ofShare(double share)
{
    constexpr float distance = 20.0f;
    const glm::dmat4 perspective = glm::frustum(-0.5 * halfWidth, 0.5 * halfWidth, -0.5 * halfHeight,
                                                0.5 * halfHeight, 0.5 * distance, 2.0 * distance);
    const double zoom = 1.0 / std::sqrt(share);
    View view;
    view.size = QSize(1280, 720);
    view.view = glm::translate(glm::mat4(1.0f), glm::vec3(0.0f, 0.0f, -distance));
    view.projection = glm::mat4(glm::scale(glm::dmat4(1.0), glm::dvec3(zoom, zoom, 1.0)) * perspective);
    return view;
}
