#include <benchmarks/works/markWorks.h>

#include <benchmarks/data/Dice.h>
#include <benchmarks/plain/PlainLabels.h>
#include <benchmarks/plain/PlainMarks.h>
#include <benchmarks/scene/BenchScene.h>
#include <benchmarks/scene/LabelItem.h>
#include <benchmarks/scene/MarkElement.h>
#include <benchmarks/works/compareFrames.h>

#include <Viewer3dModule/drawables/IconTexture.h>

#include <map>
#include <unordered_map>

namespace {

std::vector<glm::vec3> places(qint64 count)
{
    Dice dice;
    std::vector<glm::vec3> all;
    all.reserve(static_cast<std::size_t>(count));
    for (qint64 i = 0; i < count; ++i)
        all.push_back(dice.place());
    return all;
}

std::vector<Result> compareMarks(qint64 size, const PairedRuns::Effort& effort)
{
    const View view = View::whole();
    const std::vector<glm::vec3> all = places(size);
    BenchScene scene(view);
    std::vector<std::unique_ptr<CModelElement>> elements;
    elements.reserve(all.size());
    for (const glm::vec3& place : all)
        elements.push_back(std::make_unique<MarkElement>(place));
    scene.add(std::move(elements));
    PlainContext context(view.size);
    PlainMarks plain(context, all, view);
    return compareFrames(
        scene, context, [&] { plain.draw(); }, effort, 0.005);
}

/// The image of a glyph, top row first.
QImage imageOf(OpenGLFunctions& gl, const IconTexture& texture)
{
    QImage image(texture.size(), QImage::Format_RGBA8888);
    gl.glBindTexture(GL_TEXTURE_2D, texture.getTextureId());
    gl.glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    gl.glBindTexture(GL_TEXTURE_2D, 0);
    return image;
}

/// The glyphs of the scene's labels for a program of another kind: letters of one kind together, as they lie
/// over each other in the scene's picture.
struct GlyphsOfScene
{
    std::vector<PlainLabels::Glyph> glyphs;
    std::vector<QImage> images;

    GlyphsOfScene(BenchScene& scene, const std::vector<CModelElement*>& elements)
    {
        std::unordered_map<const IconTexture*, int> imageOfTexture;
        for (const CModelElement* element : elements) {
            auto* item = static_cast<LabelItem*>(scene.scene().findGraphicsItem(element->getId()));
            for (const auto& [offset, texture] : item->glyphs()) {
                const auto [entry, isNew] =
                    imageOfTexture.emplace(texture.get(), static_cast<int>(images.size()));
                if (isNew) images.push_back(imageOf(scene.gl(), *texture));
                glyphs.push_back(
                    {item->anchor(), offset, entry->second, static_cast<std::uint32_t>(element->getId())});
            }
        }
        std::stable_sort(glyphs.begin(), glyphs.end(),
                         [](const auto& a, const auto& b) { return a.image < b.image; });
    }
};

std::vector<Result> compareLabels(qint64 size, const PairedRuns::Effort& effort)
{
    const View view = View::whole();
    BenchScene scene(view);
    std::vector<std::unique_ptr<CModelElement>> elements;
    int number = 0;
    for (const glm::vec3& place : places(size)) // names of twenty letters, besides the blanks
        elements.push_back(std::make_unique<LabelElement>(
            QStringLiteral("Survey point %1").arg(++number, 9, 10, QLatin1Char('0')), place));
    const std::vector<CModelElement*> added = scene.add(std::move(elements));
    const GlyphsOfScene copied(scene, added);
    PlainContext context(view.size);
    PlainLabels plain(context, copied.glyphs, copied.images, view);
    return compareFrames(
        scene, context, [&] { plain.draw(); }, effort, 0.005);
}

} // namespace

std::vector<Work> markWorks()
{
    return {
        {QStringLiteral("B6"),
         QStringLiteral("marks, beside one instanced draw"),
         1.05,
         {1000, 10000, 100000, 1000000},
         {1000, 100000},
         compareMarks},
        {QStringLiteral("B6l"),
         QStringLiteral("labels, beside instanced quads of glyphs"),
         1.15,
         {1000, 10000},
         {1000, 10000},
         compareLabels},
    };
}
