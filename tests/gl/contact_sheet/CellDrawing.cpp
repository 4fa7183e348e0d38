#include "CellDrawing.h"

#include <QtGui/QFontMetrics>
#include <QtGui/QPainter>
#include <glm/gtc/matrix_inverse.hpp>
#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr int pointItemLayer = 9;
constexpr int faceLayer = 2;

glm::mat4 cameraView()
{
    return glm::lookAt(glm::vec3(2.4f, -4.2f, 3.0f), glm::vec3(0.0f, 0.0f, 0.1f),
                       glm::vec3(0.0f, 0.0f, 1.0f));
}

constexpr float Near = 3.5f;
constexpr float Far = 8.5f;

float floatOf(std::uint32_t bits)
{
    float value = 0.0f;
    std::memcpy(&value, &bits, 4);
    return value;
}

// Like for like, different for different, and never the colours of the background.
QColor colorOfNumber(std::uint64_t number, double value)
{
    const auto hue = static_cast<int>((number * 0x9E3779B97F4A7C15u >> 32) % 360);
    const int saturation = number % 3 == 0 ? 120 : 220;
    return QColor::fromHsv(hue, saturation, static_cast<int>(255.0 * value));
}

// The nearer the brighter; scenes lie between 4.5 and 7 units from the camera.
double brightnessOf(float depth)
{
    const float distance = Near * Far / (Far - depth * (Far - Near));
    return 1.0 - 0.7 * static_cast<double>(glm::clamp((distance - 4.5f) / 2.5f, 0.0f, 1.0f));
}

} // namespace

std::uint32_t CellDrawing::Output::word(int attachment, int x, int y) const
{
    std::uint32_t value = 0;
    std::memcpy(&value, attachments[attachment].constScanLine(y) + 4 * x, 4);
    return value;
}

std::uint64_t CellDrawing::Output::id(int x, int y) const
{
    return static_cast<std::uint64_t>(word(2, x, y)) << 32 | word(1, x, y);
}

int CellDrawing::Output::layer(int x, int y) const
{
    const std::uint32_t mark = word(3, x, y);
    if (floatOf(mark) == 1.0f) return faceLayer;
    return ~mark <= pointItemLayer ? static_cast<int>(~mark) : 0;
}

float CellDrawing::Output::depth(int x, int y) const
{
    return depths[static_cast<std::size_t>(y * CellSize + x)];
}

int CellDrawing::Output::coveredCount() const
{
    return static_cast<int>(std::count_if(depths.begin(), depths.end(), [](float d) { return d < 1.0f; }));
}

std::set<std::uint64_t> CellDrawing::Output::ids() const
{
    std::set<std::uint64_t> found;
    for (int y = 0; y < CellSize; ++y)
        for (int x = 0; x < CellSize; ++x)
            found.insert(id(x, y));
    found.erase(0);
    return found;
}

std::set<int> CellDrawing::Output::layers() const
{
    std::set<int> found;
    for (int y = 0; y < CellSize; ++y)
        for (int x = 0; x < CellSize; ++x)
            found.insert(layer(x, y));
    found.erase(0);
    return found;
}

void CellDrawing::prepare()
{
    target = std::make_unique<RenderTarget>(*gl, QSize(CellSize, CellSize), 4);
    gl->glProvokingVertex(GL_FIRST_VERTEX_CONVENTION); // as dashed lines want it
    gl->glPatchParameteri(GL_PATCH_VERTICES, 1);
    gl->glBlendFunci(0, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

glm::mat4 CellDrawing::cameraProjection()
{
    return glm::perspective(0.5f, 1.0f, Near, Far);
}

void CellDrawing::select(const std::string& name)
{
    gl->glDeleteVertexArrays(1, &vao);
    gl->glGenVertexArrays(1, &vao);
    gl->glBindVertexArray(vao);
    use(name);
    const float half = CellSize / 2.0f;
    glm::mat4 viewport(1.0f);
    viewport[0][0] = half;
    viewport[1][1] = -half;
    viewport[3] = glm::vec4(half, half, 0.0f, 1.0f);
    give("viewport", viewport);
    give("viewport_inverted", glm::inverse(viewport));
    give("u_resolution", glm::vec2(CellSize));
    give("view", cameraView());
    give("projection", cameraProjection());
    give("uLightDirection", glm::vec3(-0.5f, 0.8f, 1.0f));
    give("selection_color", glm::vec4(1.0f, 0.55f, 0.1f, 1.0f));
    place(glm::mat4(1.0f));
}

CellDrawing::Output CellDrawing::drawPass(Mode mode, const std::function<void()>& scene)
{
    target->bind();
    target->clear(mode == Mode::Ordinary ? QColor(Background) : QColor(0, 0, 0, 0));
    if (mode == Mode::Ordinary)
        gl->glEnablei(GL_BLEND, 0);
    else
        gl->glDisablei(GL_BLEND, 0);
    if (program) give("draw_mode", static_cast<int>(mode));
    scene();
    Output output;
    for (int i = 0; i < 4; ++i)
        output.attachments[i] = target->image(i);
    output.depths = target->depth();
    return output;
}

void CellDrawing::item(const glm::vec4& color, std::uint64_t id, int flags)
{
    give("item_color", color);
    give("item_flags", flags);
    give("item_id", glm::uvec2(static_cast<unsigned>(id), static_cast<unsigned>(id >> 32)));
}

void CellDrawing::place(const glm::mat4& model)
{
    give("model", model);
    give("normalMatrix", glm::inverseTranspose(glm::mat3(cameraView() * model)));
}

void CellDrawing::feed(const Shape& shape)
{
    const auto numbers = [](const auto& values) {
        std::vector<float> all;
        for (const auto& value : values)
            for (int k = 0; k < value.length(); ++k)
                all.push_back(value[k]);
        return all;
    };
    attribute(0, 3, numbers(shape.points));
    if (!shape.colors.empty()) attribute(1, 4, numbers(shape.colors));
    if (!shape.normals.empty()) attribute(2, 3, numbers(shape.normals));
    if (!shape.textureCoords.empty()) attribute(3, 2, numbers(shape.textureCoords));
    m_count = shape.count();
}

void CellDrawing::feed(const std::vector<glm::vec3>& points)
{
    feed(Shape{points, {}, {}, {}});
}

void CellDrawing::drawFed(unsigned primitive, int instances)
{
    gl->glDrawArraysInstanced(primitive, 0, m_count, instances);
}

void CellDrawing::loadTexture(const QImage& image, bool isSmooth)
{
    const QImage bytes = image.convertToFormat(QImage::Format_RGBA8888);
    std::vector<std::uint32_t> texels(static_cast<std::size_t>(bytes.width() * bytes.height()));
    for (int y = 0; y < bytes.height(); ++y)
        std::memcpy(texels.data() + y * bytes.width(), bytes.constScanLine(y),
                    static_cast<std::size_t>(4 * bytes.width()));
    texture(bytes.width(), bytes.height(), texels);
    if (isSmooth) gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
}

QImage CellDrawing::checks(bool hasHoles)
{
    QImage image(64, 64, QImage::Format_RGBA8888);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) {
            const bool isDark = (x / 16 + y / 16) % 2 != 0;
            const int dx = x % 16 - 8;
            const int dy = y % 16 - 8;
            const bool isHole = hasHoles && isDark && dx * dx + dy * dy < 36;
            image.setPixelColor(x, y,
                                isHole   ? QColor(0, 0, 0, 0)
                                : isDark ? QColor(60, 90, 2 * x + 100)
                                         : QColor(240, 4 * y, 110));
        }
    return image;
}

QImage CellDrawing::textImage(const QString& text, int height, const QColor& color, const QColor& plate)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(height * 3 / 4);
    font.setBold(true);
    QImage image(QFontMetrics(font).horizontalAdvance(text) + (plate.alpha() > 0 ? 8 : 2), height,
                 QImage::Format_ARGB32);
    image.fill(plate);
    QPainter painter(&image);
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(image.rect(), Qt::AlignCenter, text);
    return image;
}

QImage CellDrawing::picture(const Output& output, Mode mode)
{
    if (mode == Mode::Ordinary) return output.attachments[0].convertToFormat(QImage::Format_RGB32);
    QImage image(CellSize, CellSize, QImage::Format_RGB32);
    image.fill(Background);
    for (int y = 0; y < CellSize; ++y)
        for (int x = 0; x < CellSize; ++x) {
            if (output.id(x, y) == 0) continue;
            const bool hasDepth = mode == Mode::SelectionMask;
            // markers of nodes have a number beside their item's id there
            const std::uint32_t part = hasDepth ? output.word(3, x, y) : 0u;
            const double value = hasDepth ? brightnessOf(floatOf(output.word(0, x, y))) : 1.0;
            image.setPixelColor(x, y, colorOfNumber(output.id(x, y) + 7u * part, value));
        }
    return image;
}

int CellDrawing::darkening(const Output& output, int layer, int x, int y)
{
    const float sum =
        floatOf(output.word(0, x, y)) + floatOf(output.word(1, x, y)) + floatOf(output.word(2, x, y));
    // each plane its own shade; bands along edges and surfaces; nodes as the legend shows them
    if (layer == faceLayer) return 130 + static_cast<int>(30.0f * std::sin(3.0f * sum));
    const bool hasBands = layer == 1 || layer == 3 || layer == 6;
    return hasBands && std::fmod(std::fabs(sum) * 5.0f, 2.0f) >= 1.0f ? 150 : 100;
}

QImage CellDrawing::layerPicture(const Output& output)
{
    QImage image(CellSize, CellSize, QImage::Format_RGB32);
    image.fill(Background);
    for (int y = 0; y < CellSize; ++y)
        for (int x = 0; x < CellSize; ++x) {
            const int layer = output.layer(x, y);
            if (layer == 0) {
                if (output.isCovered(x, y)) image.setPixelColor(x, y, noLayerColor());
                continue;
            }
            image.setPixelColor(x, y, layerColor(layer).darker(darkening(output, layer, x, y)));
        }
    return image;
}

QColor CellDrawing::layerColor(int layer)
{
    static const QColor colors[] = {{0, 0, 0},       {150, 120, 90}, {70, 110, 200}, {90, 210, 230},
                                    {250, 250, 250}, {160, 220, 60}, {250, 210, 40}, {250, 130, 40},
                                    {235, 50, 60},   {230, 90, 220}};
    return colors[layer];
}

QColor CellDrawing::noLayerColor()
{
    return {110, 110, 110};
}

const std::vector<std::pair<int, const char*>>& CellDrawing::layerNames()
{
    static const std::vector<std::pair<int, const char*>> names = {
        {1, "raw coordinates"},  {2, "face"}, {3, "edge of a face"},    {4, "node of a face"},
        {5, "point of a cloud"}, {6, "edge"}, {7, "middle of an edge"}, {8, "node"},
        {9, "point item"}};
    return names;
}
