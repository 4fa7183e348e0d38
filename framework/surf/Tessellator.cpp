#include <framework/surf/Tessellator.h>

#include <framework/ksp/StagedProgress.h>
#include <framework/surf/ContourJoiner.h>

#include <GL/glu.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>

// The tessellator is a plane sweep that uses nothing of OpenGL but its types and needs no context.

namespace surf {

namespace {

// Corners and triangles between two looks at whether the work was canceled.
constexpr std::size_t cancelStride = 4096;

double cross(const glm::dvec2& a, const glm::dvec2& b)
{
    return a.x * b.y - a.y * b.x;
}

// The tessellator sees a plane by two of three coordinates: those but the one in which the normal is longest.
class Projection
{
public:
    explicit Projection(const glm::dvec3& normal)
    {
        const glm::dvec3 size = glm::abs(normal);
        int dropped = 0;
        if (size.y > size[dropped]) dropped = 1;
        if (size.z > size[dropped]) dropped = 2;
        m_u = (dropped + 1) % 3;
        m_v = (dropped + 2) % 3;
    }
    glm::dvec2 operator()(const glm::dvec3& point) const { return {point[m_u], point[m_v]}; }

private:
    int m_u;
    int m_v;
};

// Where two edges cross, as a fraction of each; false where they are as good as parallel.
bool intersect(const glm::dvec2& a0, const glm::dvec2& a1, const glm::dvec2& b0, const glm::dvec2& b1,
               double& a, double& b)
{
    const glm::dvec2 alongA = a1 - a0;
    const glm::dvec2 alongB = b1 - b0;
    const double determinant = cross(alongA, alongB);
    if (!(std::abs(determinant) > 1e-12 * glm::length(alongA) * glm::length(alongB))) return false;
    a = cross(b0 - a0, alongB) / determinant;
    b = cross(b0 - a0, alongA) / determinant;
    return true;
}

// The state of one run, which the tessellator's callbacks fill.
class Run
{
public:
    Run(std::vector<glm::dvec3>& points, const FlatContours& contours, const ksp::StagedProgress* progress)
        : m_points(points)
        , m_givenCount(points.size())
        , m_contours(contours)
        , m_project(contours.normal)
        , m_progress(progress)
    {
    }
    void divide();
    Tessellation take() { return std::move(m_result); }

private:
    // Vertices travel through the tessellator as pointers, of which null has a meaning of its own.
    static void* pointerOf(std::uint32_t vertex)
    {
        return reinterpret_cast<void*>(std::uintptr_t(vertex) + 1);
    }
    static std::uint32_t vertexOf(const void* pointer)
    {
        return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(pointer) - 1);
    }
    static Run& of(void* run) { return *static_cast<Run*>(run); }

    static void onVertex(void* vertex, void* run) { of(run).addCorner(vertexOf(vertex)); }
    static void onEdgeFlag(GLboolean, void*) {} // having one makes all triangles come singly
    static void onCombine(GLdouble*, void* vertices[4], GLfloat weights[4], void** combined, void* run)
    {
        *combined = of(run).combine(vertices, weights);
    }
    static void onError(GLenum error, void* run)
    {
        // a run that was canceled leaves contours open
        if (of(run).m_result.failure.isNull() && !of(run).m_result.isCanceled)
            of(run).m_result.failure =
                QString::fromLatin1(reinterpret_cast<const char*>(gluErrorString(error)));
    }

    void addContours(GLUtesselator* tessellator);
    void addCorner(std::uint32_t vertex);
    void* combine(void* const vertices[4], const GLfloat weights[4]);
    void lookForCancel()
    {
        m_result.isCanceled = m_result.isCanceled || (m_progress && m_progress->isCanceled());
    }

    std::vector<glm::dvec3>& m_points;
    std::size_t m_givenCount;
    const FlatContours& m_contours;
    Projection m_project;
    const ksp::StagedProgress* m_progress;
    Triangle m_triangle = {};
    std::size_t m_cornerCount = 0; // of m_triangle
    Tessellation m_result;
};

void Run::divide()
{
    using Callback = void (*)();
    const std::unique_ptr<GLUtesselator, decltype(&gluDeleteTess)> tessellator(gluNewTess(), &gluDeleteTess);
    if (!tessellator) {
        m_result.failure = QStringLiteral("not enough memory");
        return;
    }
    GLUtesselator* tess = tessellator.get();
    gluTessCallback(tess, GLU_TESS_VERTEX_DATA, reinterpret_cast<Callback>(&onVertex));
    gluTessCallback(tess, GLU_TESS_EDGE_FLAG_DATA, reinterpret_cast<Callback>(&onEdgeFlag));
    gluTessCallback(tess, GLU_TESS_COMBINE_DATA, reinterpret_cast<Callback>(&onCombine));
    gluTessCallback(tess, GLU_TESS_ERROR_DATA, reinterpret_cast<Callback>(&onError));
    gluTessProperty(tess, GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_ODD);
    gluTessNormal(tess, m_contours.normal.x, m_contours.normal.y, m_contours.normal.z);
    gluTessBeginPolygon(tess, this);
    addContours(tess);
    if (!m_result.isCanceled) gluTessEndPolygon(tess); // else deleting it drops what it has
    if (m_result.isCanceled || !m_result.failure.isNull()) {
        m_result.triangles.clear();
        m_result.crossings.clear();
    }
}

void Run::addContours(GLUtesselator* tessellator)
{
    std::size_t corner = 0;
    for (const std::size_t end : m_contours.ends) {
        gluTessBeginContour(tessellator);
        for (; corner < end; ++corner) {
            if (corner % cancelStride == 0) lookForCancel();
            if (m_result.isCanceled) return;
            const std::uint32_t vertex = m_contours.corners[corner];
            glm::dvec3 point = m_points[vertex];
            gluTessVertex(tessellator, &point.x, pointerOf(vertex));
        }
        gluTessEndContour(tessellator);
    }
}

void Run::addCorner(std::uint32_t vertex)
{
    if (m_result.isCanceled) return;
    m_triangle[m_cornerCount++] = vertex;
    if (m_cornerCount < m_triangle.size()) return;
    m_cornerCount = 0;
    m_result.triangles.push_back(m_triangle);
    if (m_result.triangles.size() % cancelStride == 0) lookForCancel();
}

// The vertex that takes the place of two others in one place, or of a place where two edges cross. There the
// weights that come are in single precision, and good enough only along edges that lie upon one another.
void* Run::combine(void* const vertices[4], const GLfloat weights[4])
{
    if (!vertices[2]) return vertices[0];
    Crossing crossing;
    std::array<glm::dvec2, 4> ends;
    for (std::size_t i = 0; i < 4; ++i) {
        crossing.sources[i] = vertexOf(vertices[i]);
        ends[i] = m_project(m_points[crossing.sources[i]]);
    }
    std::array<double, 2> along;
    if (!intersect(ends[0], ends[1], ends[2], ends[3], along[0], along[1]))
        for (std::size_t edge = 0; edge < 2; ++edge) {
            const double sum = double(weights[2 * edge]) + double(weights[2 * edge + 1]);
            along[edge] = sum > 0.0 ? double(weights[2 * edge + 1]) / sum : 0.5;
        }
    glm::dvec3 position(0.0);
    for (std::size_t i = 0; i < 4; ++i) {
        const double fraction = std::clamp(along[i / 2], 0.0, 1.0);
        crossing.weights[i] = 0.5 * (i % 2 == 0 ? 1.0 - fraction : fraction);
        position += crossing.weights[i] * m_points[crossing.sources[i]];
    }
    m_points.push_back(position);
    m_result.crossings.push_back(crossing);
    return pointerOf(static_cast<std::uint32_t>(m_givenCount + m_result.crossings.size() - 1));
}

// How many pairs of edges cross, from a sample of pairs that grows with the number of corners. The same for
// the same contours every time.
double estimateCrossings(const std::vector<glm::dvec3>& points, const FlatContours& contours)
{
    const Projection project(contours.normal);
    const std::size_t count = contours.corners.size();
    std::vector<std::uint32_t> next(count);
    std::size_t begin = 0;
    for (const std::size_t end : contours.ends) {
        for (std::size_t i = begin; i < end; ++i)
            next[i] = static_cast<std::uint32_t>(i + 1 < end ? i + 1 : begin);
        begin = end;
    }
    const auto endsOf = [&](std::size_t edge) {
        return std::array{project(points[contours.corners[edge]]),
                          project(points[contours.corners[next[edge]]])};
    };
    std::minstd_rand random;
    std::uniform_int_distribution<std::size_t> anyEdge(0, count - 1);
    const std::size_t samples = 4 * count;
    std::size_t hits = 0;
    for (std::size_t i = 0; i < samples; ++i) {
        const auto a = endsOf(anyEdge(random));
        const auto b = endsOf(anyEdge(random));
        double alongA = 0.0;
        double alongB = 0.0;
        if (intersect(a[0], a[1], b[0], b[1], alongA, alongB) && alongA > 0.0 && alongA < 1.0 &&
            alongB > 0.0 && alongB < 1.0)
            ++hits;
    }
    const auto edges = static_cast<double>(count);
    return static_cast<double>(hits) / static_cast<double>(samples) * edges * edges / 2.0;
}

void joinContours(const std::vector<glm::dvec3>& points, FlatContours& contours)
{
    const Projection project(contours.normal);
    std::vector<glm::dvec2> flat;
    flat.reserve(points.size());
    for (const glm::dvec3& point : points)
        flat.push_back(project(point));
    ContourJoiner(flat, contours.tolerance).join(contours.corners, contours.ends);
}

} // namespace

Tessellation tessellate(std::vector<glm::dvec3>& points, FlatContours contours, std::int64_t maximumCrossings,
                        const ksp::StagedProgress* progress)
{
    const auto corners = static_cast<double>(contours.corners.size());
    const double bound = maximumCrossings >= 0 ? static_cast<double>(maximumCrossings) : 1e5 + 16.0 * corners;
    const QString tooMany = QStringLiteral("its edges cross more than %1 times").arg(bound, 0, 'f', 0);
    Tessellation refused;
    // Only so many edges can cross that often at all.
    if (corners * corners / 2.0 > std::max(bound, 1e5) &&
        estimateCrossings(points, contours) > std::max(bound, 1e5)) {
        refused.failure = tooMany;
        return refused;
    }
    joinContours(points, contours);
    Run run(points, contours, progress);
    run.divide();
    Tessellation result = run.take();
    if (maximumCrossings >= 0 && static_cast<double>(result.crossings.size()) > bound) {
        refused.failure = tooMany;
        return refused;
    }
    return result;
}

} // namespace surf
