#include <viewer/OrientedBox.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using Axes = std::array<glm::dvec3, 3>;

bool isFinite(const glm::dvec3& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

/// How the points spread about the place: symmetric.
glm::dmat3 covarianceOf(const std::vector<glm::dvec3>& points, const glm::dvec3& place)
{
    glm::dmat3 sum(0.0);
    for (const glm::dvec3& point : points)
        sum += glm::outerProduct(point - place, point - place);
    return sum / static_cast<double>(points.size());
}

/// Turns the matrix about one axis of the frame such that its element (p, q) vanishes.
void rotate(glm::dmat3& matrix, glm::dmat3& frame, int p, int q)
{
    if (matrix[p][q] == 0.0) return;
    const double theta = (matrix[q][q] - matrix[p][p]) / (2.0 * matrix[p][q]);
    const double tangent = std::copysign(1.0, theta) / (std::abs(theta) + std::hypot(theta, 1.0));
    const double cosine = 1.0 / std::hypot(tangent, 1.0);
    glm::dmat3 turn(1.0);
    turn[p][p] = turn[q][q] = cosine;
    turn[q][p] = tangent * cosine;
    turn[p][q] = -tangent * cosine;
    matrix = glm::transpose(turn) * matrix * turn;
    matrix[p][q] = matrix[q][p] = 0.0;
    frame = frame * turn;
}

/// The eigenvectors of a symmetric matrix, by Jacobi's rotations.
Axes eigenvectorsOf(glm::dmat3 matrix)
{
    constexpr int mostSweeps = 16; // five suffice; each squares what is left
    glm::dmat3 frame(1.0);
    for (int sweep = 0; sweep < mostSweeps; ++sweep) {
        const double left = std::abs(matrix[0][1]) + std::abs(matrix[0][2]) + std::abs(matrix[1][2]);
        const double size = matrix[0][0] + matrix[1][1] + matrix[2][2];
        if (!(left > 1e-15 * size)) break;
        rotate(matrix, frame, 0, 1);
        rotate(matrix, frame, 0, 2);
        rotate(matrix, frame, 1, 2);
    }
    return {glm::normalize(frame[0]), glm::normalize(frame[1]), glm::normalize(frame[2])};
}

OrientedBox boxAlong(const Axes& axes, const std::vector<glm::dvec3>& points, const glm::dvec3& place)
{
    OrientedBox box;
    box.center = place;
    box.axes = axes;
    for (std::size_t i = 0; i < 3; ++i) {
        double low = std::numeric_limits<double>::infinity(), high = -low;
        for (const glm::dvec3& point : points) {
            const double along = glm::dot(point - place, axes[i]);
            low = std::min(low, along);
            high = std::max(high, along);
        }
        box.center += (low + high) / 2.0 * axes[i];
        box.halfSizes[i] = (high - low) / 2.0;
    }
    return box;
}

/// Sum of the areas of the sides, by which also flat boxes compare.
double surfaceOf(const OrientedBox& box)
{
    const auto& h = box.halfSizes;
    return h[0] * h[1] + h[1] * h[2] + h[2] * h[0];
}

} // namespace

std::optional<OrientedBox> OrientedBox::around(const std::vector<glm::dvec3>& all)
{
    std::vector<glm::dvec3> points;
    std::copy_if(all.begin(), all.end(), std::back_inserter(points), isFinite);
    if (points.empty()) return std::nullopt;
    glm::dvec3 middle(0.0);
    for (const glm::dvec3& point : points)
        middle += (point - points.front()) / static_cast<double>(points.size());
    middle += points.front();
    const OrientedBox turned = boxAlong(eigenvectorsOf(covarianceOf(points, middle)), points, middle);
    const OrientedBox straight =
        boxAlong({glm::dvec3(1, 0, 0), glm::dvec3(0, 1, 0), glm::dvec3(0, 0, 1)}, points, middle);
    return surfaceOf(turned) < (1.0 - 1e-9) * surfaceOf(straight) ? turned : straight;
}
