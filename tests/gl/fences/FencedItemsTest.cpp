// Items of every kind in a fence: what is drawn of each, and that all passes agree on it.
#include "FencedScene.h"

#include "tests/gl/selection/KindsOfItems.h"
#include "tests/support/ImageCheck.h"

#include <Viewer3dModule/scene/SceneDepthMapGenerator.h>

#include <QtGui/QPolygonF>
#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

class FencedItemsTest : public SelectionTest
{
protected:
    enum Mode { Ordinary, SelectionMask, GlueMask };

    /// What a pass leaves in a picture.
    struct Picture
    {
        std::vector<LONGID> ids;
        std::vector<QImage> colors;
        std::vector<float> depths;
    };

    void SetUp() override
    {
        SelectionTest::SetUp();
        fence = std::make_unique<FenceSetter>(*project);
        gl->glDisable(GL_POLYGON_OFFSET_FILL); // depths are to be those of the places
        gl->glDisable(GL_BLEND);
    }
    void TearDown() override
    {
        scene->makeCurrent();
        kinds.reset();
        SelectionTest::TearDown();
    }
    void make(int ofEachKind)
    {
        kinds = std::make_unique<KindsOfItems>(*scene, *gl, elements, ofEachKind * KindsOfItems::KindCount);
        ASSERT_EQ(scene->modelToSceneTransform(), glm::dmat4(1.0)) << "the vertices are in scene coordinates";
    }
    PaintContext viewOf(int index)
    {
        PaintContext context = paintContext(width, height);
        const double aspect = double(width) / height;
        const glm::dvec3 eye = index == 0 ? glm::dvec3(120, -250, 90) : glm::dvec3(10, -20, 5);
        const glm::dvec3 target = index == 0 ? glm::dvec3(0.0) : glm::dvec3(60, 90, -10);
        context.view = glm::mat4(glm::lookAt(eye, target, glm::dvec3(0, 0, 1)));
        context.projection = glm::mat4(index == 0 ? glm::perspective(0.8, aspect, 100.0, 500.0)
                                                  : glm::perspective(1.1, aspect, 0.5, 150.0));
        return context;
    }
    void setFence(int index)
    {
        Dice dice(unsigned(60 + index));
        Frame frame = Frame::random(dice, dice.point(-30.0, 30.0));
        if (index % 3 == 0) return fence->set(dice.point(-30.0, 30.0), dice.between(70.0, 110.0));
        Ring ring; // a star, so concave
        for (int i = 0; i < 9; ++i)
            ring.push_back((i % 2 == 0 ? 1.0 : 0.6) * glm::dvec2(std::cos(0.7 * i), std::sin(0.7 * i)));
        frame.eye -= 110.0 * frame.look;
        if (index % 3 == 1) {
            for (glm::dvec2& point : ring)
                point *= 120.0;
            return fence->set(prism(frame, closed(ring), 200.0));
        }
        frame.eye -= 90.0 * frame.look;
        fence->set(frustum(frame, closed(ring), 90.0, 300.0, 0.6));
    }

    Picture pictureOf(DrawnItem& item, PaintContext context, Mode mode)
    {
        return picture(context, mode, [&item](const PaintContext& pass) {
            item.getDrawer()->draw(pass, [&item](Drawable3dItem* other) { return other == &item; });
        });
    }
    template <typename Drawing>
    Picture picture(PaintContext context, Mode mode, Drawing drawing)
    {
        context.drawMode = mode;
        RenderTarget target(*gl, QSize(width, height), 4);
        target.bind();
        target.clear(QColor(0, 0, 0, 0));
        drawing(context);
        Picture result;
        for (int i = 0; i < 4; ++i)
            result.colors.push_back(target.image(i));
        result.depths = target.depth();
        const auto word = [&result](int i, std::size_t pixel) {
            std::uint32_t value = 0;
            std::memcpy(&value, result.colors[std::size_t(i)].constBits() + 4 * pixel, 4);
            return value;
        };
        for (std::size_t pixel = 0; pixel < result.depths.size(); ++pixel)
            result.ids.push_back(LONGID(word(1, pixel)) | LONGID(word(2, pixel)) << 32);
        return result;
    }
    static std::vector<std::size_t> pixelsOf(const Picture& picture, LONGID id)
    {
        std::vector<std::size_t> pixels;
        for (std::size_t i = 0; i < picture.ids.size(); ++i)
            if (picture.ids[i] == id) pixels.push_back(i);
        return pixels;
    }
    static std::vector<std::size_t> pixelsOfAlpha(const Picture& picture, int least)
    {
        std::vector<std::size_t> pixels;
        for (std::size_t i = 0; i < picture.ids.size(); ++i)
            if (picture.colors[0].constBits()[4 * i + 3] >= least) pixels.push_back(i);
        return pixels;
    }

    /// Where in the scene something of a depth buffer's value is seen at a place of the picture.
    glm::dvec3 placeAt(const PaintContext& context, double x, double y, float depth)
    {
        const glm::dmat4 toScene = glm::inverse(glm::dmat4(context.projection) * glm::dmat4(context.view));
        const glm::dvec4 place = toScene * glm::dvec4(2.0 * x / width - 1.0, 1.0 - 2.0 * y / height,
                                                      Scene3d::depthValueToFrustumZ(depth), 1.0);
        return glm::dvec3(place) / place.w;
    }
    enum Verdict { Inside, Outside, Close };
    /// Of what is seen there, if all that is so many pixels away, to the sides and in depth, is alike.
    Verdict verdictAt(const PaintContext& context, std::size_t pixel, float depth, double reach)
    {
        const double x = double(pixel % std::size_t(width)) + 0.5,
                     y = double(pixel / std::size_t(width)) + 0.5;
        const glm::dvec3 at = placeAt(context, x, y, depth);
        const double size = glm::distance(at, placeAt(context, x + reach, y, depth));
        const bool isInside = fence->fence().contains(at);
        for (int i = 0; i < 27; ++i) {
            const glm::dvec3 way(i % 3 - 1, i / 3 % 3 - 1, i / 9 - 1);
            if (fence->fence().contains(at + size * way) != isInside) return Close;
        }
        return isInside ? Inside : Outside;
    }
    /// A pixel and the bits of the depth that an item has there, from a selection mask.
    using Seen = std::pair<std::size_t, std::uint32_t>;
    static std::vector<Seen> seenOf(const Picture& mask, LONGID id)
    {
        std::vector<Seen> seen;
        for (const std::size_t pixel : pixelsOf(mask, id)) {
            std::uint32_t bits = 0;
            std::memcpy(&bits, mask.colors[0].constBits() + 4 * pixel, 4);
            seen.emplace_back(pixel, bits);
        }
        return seen;
    }
    /// What keeps its size on the screen obeys by its anchors, which are told where all of them agree.
    Verdict verdictOf(const DrawnItem& item, KindsOfItems::Kind kind, const PaintContext& context,
                      const Seen& seen)
    {
        const bool isAnchored = kind == KindsOfItems::PlainPoints || kind == KindsOfItems::RoundPoints ||
                                kind == KindsOfItems::Caption;
        if (isAnchored) {
            const auto held = std::count_if(item.vertices.begin(), item.vertices.end(),
                                            [&](const glm::dvec3& v) { return fence->fence().contains(v); });
            if (held == 0) return Outside;
            return std::size_t(held) == item.vertices.size() ? Inside : Close;
        }
        float depth = 0.0f;
        std::memcpy(&depth, &seen.second, 4);
        const bool isWide = kind == KindsOfItems::Wide || kind == KindsOfItems::LinesAndPoints;
        return verdictAt(context, seen.first, depth, isWide ? 8.0 : 1.5);
    }

    std::vector<std::unique_ptr<TestElement>> elements;
    std::unique_ptr<KindsOfItems> kinds;
    std::unique_ptr<FenceSetter> fence;
    int width = 120, height = 90;
};

TEST_F(FencedItemsTest, EveryKindIsCutWhereItLies)
{
    width = 360;
    height = 270;
    make(6);
    std::vector<std::vector<Seen>> wholes;
    const PaintContext context = viewOf(0);
    for (DrawnItem* item : kinds->items())
        wholes.push_back(seenOf(pictureOf(*item, context, SelectionMask), item->getId()));
    std::vector<int> insideOf(KindsOfItems::KindCount), outsideOf(KindsOfItems::KindCount);
    int close = 0, differing = 0;
    for (const int index : {0, 1, 2}) {
        setFence(index);
        for (std::size_t i = 0; i < kinds->items().size(); ++i) {
            DrawnItem& item = *kinds->items()[i];
            const auto kind = KindsOfItems::kindOf(i);
            const std::vector<Seen> cut = seenOf(pictureOf(item, context, SelectionMask), item.getId());
            for (const Seen& seen : wholes[i]) {
                const Verdict verdict = verdictOf(item, kind, context, seen);
                if (verdict == Close) {
                    ++close;
                    continue;
                }
                ++(verdict == Inside ? insideOf : outsideOf)[kind];
                // something else of the item may be seen behind what is cut away
                const bool isThere = std::binary_search(cut.begin(), cut.end(), seen);
                if (isThere == (verdict == Inside)) continue;
                ADD_FAILURE() << "fence " << index << ", kind " << kind << ", pixel " << seen.first;
                if (++differing > 5) return;
            }
        }
    }
    for (std::size_t kind = 0; kind < KindsOfItems::KindCount; ++kind) {
        std::printf("kind %zu: %d pixels inside, %d outside\n", kind, insideOf[kind], outsideOf[kind]);
        EXPECT_GT(insideOf[kind], 0) << kind;
        EXPECT_GT(outsideOf[kind], 0) << kind;
    }
    std::printf("%d pixels too close to the border to tell\n", close);
    saveTestImage("fence_kinds", picture(context, Ordinary, [&](const PaintContext& pass) {
                                     scene->drawFrame(pass, nullptr, {});
                                 }).colors[0]);
}

// Drawn, selectable, in the selection mask and in the glue mask: the same items, by the same pixels.
TEST_F(FencedItemsTest, AllPassesAgree)
{
    make(3);
    int whole = 0, cut = 0, gone = 0;
    for (const int index : {0, 1, 2}) {
        setFence(index);
        const PaintContext context = viewOf(index / 2);
        Ids drawn, masked;
        for (std::size_t i = 0; i < kinds->items().size(); ++i) {
            DrawnItem& item = *kinds->items()[i];
            const Picture ordinary = pictureOf(item, context, Ordinary);
            const Picture mask = pictureOf(item, context, SelectionMask);
            const std::vector<std::size_t> pixels = pixelsOf(mask, item.getId());
            EXPECT_EQ(pixels, pixelsOfAlpha(ordinary, 128)) << "item " << i << ", fence " << index;
            if (KindsOfItems::kindOf(i) != KindsOfItems::Dashed) {
                EXPECT_EQ(pixelsOf(pictureOf(item, context, GlueMask), item.getId()),
                          pixelsOfAlpha(ordinary, 1))
                    << "item " << i << ", fence " << index;
            }
            if (!pixels.empty()) drawn.insert(item.getId());
            if (!pixelsOfAlpha(ordinary, 128).empty()) masked.insert(item.getId());
        }
        const QRectF all(0, 0, width, height);
        EXPECT_EQ(drawn, masked);
        EXPECT_EQ(once(scene->selectItems(context, all, {})), drawn) << "fence " << index;

        const Picture seen = picture(context, SelectionMask,
                                     [&](const PaintContext& pass) { scene->drawFrame(pass, nullptr, {}); });
        Ids visible(seen.ids.begin(), seen.ids.end());
        visible.erase(0);
        EXPECT_EQ(once(scene->selectItems(context, all, {Visible})), visible) << "fence " << index;

        const Picture frame = picture(context, Ordinary,
                                      [&](const PaintContext& pass) { scene->drawFrame(pass, nullptr, {}); });
        SceneDepthMapGenerator generator(QSize(width, height));
        const QImage map = generator.generate({kinds->items().begin(), kinds->items().end()},
                                              glm::dmat4(context.view), glm::dmat4(context.projection));
        scene->makeCurrent();
        int different = 0;
        for (std::size_t pixel = 0; pixel < frame.depths.size(); ++pixel)
            different += (frame.depths[pixel] == 1.0f) !=
                         std::isnan(reinterpret_cast<const float*>(map.constBits())[pixel]);
        EXPECT_EQ(different, 0) << "fence " << index;

        const std::shared_ptr<Fence3DObject> set = fence->item().getFence();
        for (const DrawnItem* item : kinds->items()) {
            const auto held =
                std::size_t(std::count_if(item->vertices.begin(), item->vertices.end(),
                                          [&](const glm::dvec3& v) { return set->contains(v); }));
            ++(held == 0 ? gone : held == item->vertices.size() ? whole : cut);
        }
    }
    std::printf("%d items lie inside, %d across the border, %d outside by their vertices\n", whole, cut,
                gone);
    EXPECT_GT(std::min({whole, cut, gone}), 10);
}

class FencedCaptureTest : public FencedItemsTest
{
protected:
    std::vector<glm::vec4> take(unsigned buffer)
    {
        if (buffer == 0) return {};
        GLint64 size = 0;
        gl->glBindBuffer(GL_COPY_READ_BUFFER, buffer);
        gl->glGetBufferParameteri64v(GL_COPY_READ_BUFFER, GL_BUFFER_SIZE, &size);
        std::vector<glm::vec4> vertices(std::size_t(size) / sizeof(glm::vec4));
        gl->glGetBufferSubData(GL_COPY_READ_BUFFER, 0, GLsizeiptr(size), vertices.data());
        gl->glBindBuffer(GL_COPY_READ_BUFFER, 0);
        gl->glDeleteBuffers(1, &buffer);
        return vertices;
    }
    std::vector<std::vector<glm::vec4>> capture(DrawnItem& item)
    {
        const auto [points, lines, triangles] = scene->generateItemGeometry(&item);
        return {take(points), take(lines), take(triangles)};
    }
};

TEST_F(FencedCaptureTest, WholePrimitivesOutsideAreLeftOut)
{
    make(3);
    int left = 0, kept = 0;
    for (const int index : {0, 1, 2}) {
        for (DrawnItem* item : kinds->items()) {
            fence->reset();
            const auto all = capture(*item);
            setFence(index);
            const auto some = capture(*item);
            for (std::size_t kind = 0; kind < 3; ++kind) {
                std::vector<glm::vec4> expected;
                const std::size_t corners = kind + 1;
                for (std::size_t i = 0; i + corners <= all[kind].size(); i += corners) {
                    bool isReached = false;
                    // places all over the primitive: finely enough for fences of this size
                    for (int a = 0; a <= 24 && !isReached; ++a)
                        for (int b = 0; b <= (corners == 3 ? 24 - a : 0) && !isReached; ++b) {
                            const double s = a / 24.0, t = b / 24.0;
                            glm::dvec4 at(all[kind][i]);
                            if (corners > 1)
                                at += s * (glm::dvec4(all[kind][i + 1]) - glm::dvec4(all[kind][i]));
                            if (corners > 2)
                                at += t * (glm::dvec4(all[kind][i + 2]) - glm::dvec4(all[kind][i]));
                            isReached = at.w != 0.0 && fence->fence().contains(glm::dvec3(at / at.w));
                        }
                    if (isReached) expected.insert(expected.end(), &all[kind][i], &all[kind][i] + corners);
                    ++(isReached ? kept : left);
                }
                // what only a corner of reaches in may be kept besides
                EXPECT_GE(some[kind].size(), expected.size());
                EXPECT_LE(some[kind].size(), expected.size() + corners);
                EXPECT_TRUE(std::includes(some[kind].begin(), some[kind].end(), expected.begin(),
                                          expected.end(),
                                          [](const glm::vec4& a, const glm::vec4& b) {
                                              return std::memcmp(&a, &b, sizeof a) < 0;
                                          }) ||
                            std::search(some[kind].begin(), some[kind].end(), expected.begin(),
                                        expected.end()) != some[kind].end());
            }
        }
    }
    std::printf("%d primitives kept, %d left out\n", kept, left);
    EXPECT_GT(kept, 100);
    EXPECT_GT(left, 100);
}

TEST_F(FencedCaptureTest, WhatStraddlesStaysWhole)
{
    DrawnItem* item =
        add(100000, GL_TRIANGLES, {{-9, -9, 0}, {9, -9, 0}, {0, 9, 0}, {30, 0, 0}, {31, 0, 0}, {30, 1, 0}});
    fence->set({0.0, 0.0, 1.0}, 1.5); // reaches the middle of the first and none of its corners
    const auto some = capture(*item);
    ASSERT_EQ(some[2].size(), 3u);
    EXPECT_EQ(some[2][0], glm::vec4(-9, -9, 0, 1));
    EXPECT_EQ(some[2][2], glm::vec4(0, 9, 0, 1));
    fence->item().setInteractionMode(true);
    EXPECT_EQ(capture(*item)[2].size(), 3u);
    fence->set({0.0, 0.0, 1.0}, 0.5);
    const auto [points, lines, triangles] = scene->generateItemGeometry(item);
    EXPECT_EQ(std::make_tuple(points, lines, triangles), std::make_tuple(0u, 0u, 0u));
}

} // namespace
