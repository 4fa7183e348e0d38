#include "GlyphsTest.h"

#include <tests/support/VertexItem.h>

// The books of drawers of glyphs, and what of them goes to OpenGL and when.
namespace {

using GlyphBooksTest = GlyphsTest;
using RangeList = std::vector<std::pair<int, int>>;
using Bytes = std::vector<std::size_t>;

TEST_F(GlyphBooksTest, ARecordIsAGlyphWithItsItem)
{
    add(7, label(1));
    LabelledItem& item = add((LONGID(0x12345678) << 32) | 0x9ABCDEF0, label(2));
    item.anchor = {0.25f, -0.5f, 0.75f};
    item.height = 12.0f;
    item.glyphs[1].first = {11.0f, -3.0f};
    drawer->updateItem(&item);
    ASSERT_EQ(drawer->getGlyphs().size(), 3u);
    const MultiGlyphItem3dDrawer::Glyph& last = drawer->getGlyphs()[2];
    EXPECT_EQ(last.position, glm::vec3(0.25f, -0.5f, 0.75f));
    EXPECT_EQ(last.height, 12.0f);
    EXPECT_EQ(last.offset, glm::vec2(11.0f, -3.0f));
    EXPECT_EQ(last.item, 1);
    EXPECT_EQ(drawer->getIds(), (std::vector<LONGID>{7, item.id, item.id}));
    EXPECT_EQ(ranges(), (RangeList{{0, 1}, {1, 2}}));
    EXPECT_EQ(drawer->getColor(), QColor(Qt::black));
}

TEST_F(GlyphBooksTest, AShorterLabelKeepsItsPlace)
{
    LabelledItem& item = add(1, label(5));
    add(2, label(4));
    relabel(item, label(3));
    EXPECT_EQ(ranges(), (RangeList{{0, 3}, {5, 4}}));
    EXPECT_EQ(drawer->getStaleGlyphs(), 2);
    EXPECT_EQ(drawer->getGlyphs().size(), 9u);
}

TEST_F(GlyphBooksTest, ALongerLabelMovesToTheEnd)
{
    LabelledItem& item = add(1, label(3));
    add(2, label(4));
    relabel(item, label(5));
    EXPECT_EQ(ranges(), (RangeList{{7, 5}, {3, 4}}));
    EXPECT_EQ(drawer->getStaleGlyphs(), 3);
    EXPECT_EQ(drawer->getGlyphs().size(), 12u);
    EXPECT_EQ(drawer->getFlags().size(), 12u);
    EXPECT_EQ(drawer->getIds().size(), 12u);
}

TEST_F(GlyphBooksTest, ALabelAsLongAsBeforeStaysAndLeavesNothingStale)
{
    LabelledItem& item = add(1, label(4));
    relabel(item, label(4, 2));
    EXPECT_EQ(ranges(), (RangeList{{0, 4}}));
    EXPECT_EQ(drawer->getStaleGlyphs(), 0);
    EXPECT_EQ(drawer->getGlyphs().size(), 4u);
}

TEST_F(GlyphBooksTest, AQuarterOfStaleRecordsIsKept)
{
    LabelledItem& item = add(1, label(50));
    add(2, label(50));
    relabel(item, label(25));
    shown();
    EXPECT_EQ(drawer->getStaleGlyphs(), 25);
    EXPECT_EQ(drawer->getGlyphs().size(), 100u);
    EXPECT_EQ(ranges(), (RangeList{{0, 25}, {50, 50}}));
}

TEST_F(GlyphBooksTest, MoreThanAQuarterOfStaleRecordsIsGivenUp)
{
    LabelledItem& item = add(1, label(50));
    add(2, label(50));
    relabel(item, label(24));
    EXPECT_EQ(uploadsOf(), everything(74, 74));
    EXPECT_EQ(drawer->getStaleGlyphs(), 0);
    EXPECT_EQ(ranges(), (RangeList{{0, 24}, {24, 50}}));
    EXPECT_EQ(drawer->getGlyphs()[24].item, 1);
    EXPECT_EQ(drawer->getIds()[23], 1);
    EXPECT_EQ(drawer->getIds()[24], 2);
}

TEST_F(GlyphBooksTest, CompactionKeepsFlags)
{
    LabelledItem& shrinking = add(1, label(6));
    add(2, label(3)).highlighted = true;
    add(3, label(2)).setVisible(false);
    shown();
    relabel(shrinking, label(2));
    shown();
    EXPECT_EQ(drawer->getGlyphs().size(), 7u);
    EXPECT_EQ(drawer->getFlags(), (std::vector<std::int32_t>{-1, -1, -2, -2, -2, -3, -3}));
    EXPECT_EQ(uploadsOf(), Bytes{}) << "nothing was left to be found anew";
}

TEST_F(GlyphBooksTest, MovedLabelsGetTheirFlagsAtTheNextPass)
{
    LabelledItem& item = add(1, label(2));
    add(2, label(20));
    item.highlighted = true;
    shown();
    relabel(item, label(3));
    shown();
    const std::vector<std::int32_t>& flags = drawer->getFlags();
    EXPECT_EQ(std::vector<std::int32_t>(flags.end() - 3, flags.end()), std::vector<std::int32_t>(3, -2));
}

TEST_F(GlyphBooksTest, TheLastItemTakesTheSlotOfARemovedOneInPlaceWhereItFits)
{
    add(1, label(4));
    add(2, label(2));
    add(3, label(3));
    items.erase(items.begin());
    EXPECT_EQ(ranges(), (RangeList{{0, 3}, {4, 2}}));
    EXPECT_EQ(drawer->getStaleGlyphs(), 3 + 1);
    EXPECT_EQ(drawer->getIds()[0], 3);
    EXPECT_EQ(drawer->getGlyphs()[2].item, 0);
}

TEST_F(GlyphBooksTest, TheLastItemMovesToTheEndWhereItDoesNotFit)
{
    add(1, label(2));
    add(2, label(2));
    add(3, label(5));
    items.erase(items.begin());
    EXPECT_EQ(ranges(), (RangeList{{9, 5}, {2, 2}}));
    EXPECT_EQ(drawer->getStaleGlyphs(), 5 + 2);
}

TEST_F(GlyphBooksTest, TheRemovedLastItemsGlyphsAreStale)
{
    add(1, label(20));
    add(2, label(5));
    items.pop_back();
    EXPECT_EQ(ranges(), (RangeList{{0, 20}}));
    EXPECT_EQ(drawer->getStaleGlyphs(), 5);
    EXPECT_EQ(drawsOf(view()), (std::vector<int>{4, 4, 3, 3, 3, 3}));
}

TEST_F(GlyphBooksTest, WithoutItemsNothingIsDrawnAndTheNextOnesStartAnew)
{
    add(1, label(3));
    items.clear();
    EXPECT_EQ(drawsOf(view()), std::vector<int>{});
    EXPECT_EQ(drawer->getStaleGlyphs(), 3);
    add(2, label(2));
    EXPECT_EQ(uploadsOf(), everything(2, 2)) << "three of five were stale";
    EXPECT_EQ(ranges(), (RangeList{{0, 2}}));
}

TEST_F(GlyphBooksTest, AnItemWithoutGlyphsUploadsFlagsInEveryPass)
{
    add(1, label(3));
    add(2, {});
    EXPECT_EQ(ranges(), (RangeList{{0, 3}, {3, 0}}));
    EXPECT_EQ(uploadsOf(), everything(3, 3));
    EXPECT_EQ(uploadsOf(), flagsOnly(3));
    EXPECT_EQ(uploadsOf(), flagsOnly(3));
}

TEST_F(GlyphBooksTest, OnlyItemsWithoutGlyphsDrawNothing)
{
    add(1, {});
    EXPECT_EQ(drawsOf(view()), std::vector<int>{});
    EXPECT_EQ(shown(), shown(view(), [](Drawable3dItem*) { return false; }));
    relabel(*items[0], label(2));
    EXPECT_EQ(ranges(), (RangeList{{0, 2}}));
    EXPECT_EQ(drawer->getStaleGlyphs(), 0);
}

TEST_F(GlyphBooksTest, WhatDidNotChangeIsNotUploadedAgain)
{
    LabelledItem& item = add(1, label(3));
    add(2, label(4));
    EXPECT_EQ(uploadsOf(), everything(7, 7));
    EXPECT_EQ(uploadsOf(), Bytes{});
    drawer->setColor(Qt::red);
    EXPECT_EQ(uploadsOf(), Bytes{});
    item.highlighted = true;
    EXPECT_EQ(uploadsOf(), flagsOnly(7));
    EXPECT_EQ(uploadsOf(), Bytes{});
    EXPECT_EQ(uploadsOf(view(), [](Drawable3dItem*) { return false; }), flagsOnly(7));
}

TEST_F(GlyphBooksTest, ALabelOfOtherTexturesChangesTheOrderToo)
{
    LabelledItem& item = add(1, label(3));
    add(2, label(3));
    shown();
    item.anchor.x = 0.5f;
    drawer->updateItem(&item);
    EXPECT_EQ(uploadsOf(), recordsOnly(6)) << "moved";
    relabel(item, label(3, 3));
    EXPECT_EQ(uploadsOf(), everything(6, 6)) << "renamed";
    relabel(item, label(2, 3));
    EXPECT_EQ(uploadsOf(), everything(6, 5)) << "shortened, with the textures that it had";
    EXPECT_EQ(drawsOf(view()), (std::vector<int>{1, 1, 1, 1, 1}));
}

TEST_F(GlyphBooksTest, ThoseWhoseLabelDidNotChangeAreNotAskedForIt)
{
    for (LONGID id = 1; id <= 50; ++id)
        add(id, label(4));
    shown();
    drawer->layouts = 0;
    relabel(*items[20], label(4, 1));
    shown();
    EXPECT_EQ(drawer->layouts, 1);
}

TEST_F(GlyphBooksTest, TheFirstGlyphsFlagStandsForAll)
{
    LabelledItem& item = add(1, label(3));
    shown();
    item.highlighted = true;
    drawer->setItemFlag(0, ItemFlag::Highlighted);
    EXPECT_EQ(drawer->getFlags(), std::vector<std::int32_t>(3, -2));
    EXPECT_EQ(uploadsOf(), flagsOnly(3));
    drawer->setItemFlag(0, ItemFlag::Highlighted);
    EXPECT_EQ(uploadsOf(), Bytes{}) << "the first one has it already";
}

TEST_F(GlyphBooksTest, FlagsThatAreSetHoldUntilThePassFindsOthers)
{
    add(1, label(2));
    add(2, label(2));
    shown();
    drawer->setItemFlag(1, ItemFlag::Invisible);
    EXPECT_EQ(drawer->getFlags(), (std::vector<std::int32_t>{-1, -1, -3, -3}));
    shown();
    EXPECT_EQ(drawer->getFlags(), std::vector<std::int32_t>(4, -1));
    for (const int index : {-1, 2, 1000})
        drawer->setItemFlag(index, ItemFlag::Invisible);
    EXPECT_EQ(uploadsOf(), Bytes{});
}

TEST_F(GlyphBooksTest, AGlyphWithoutTextureIsNotDrawn)
{
    LabelledItem& item = add(1, label(3));
    item.glyphs[1].second = nullptr;
    drawer->updateItem(&item);
    EXPECT_EQ(drawsOf(view()), (std::vector<int>{1, 1}));
    EXPECT_EQ(countPixels(shown(), QColor(0, 0, 0)), Size * Size) << "black, as the ground";
}

TEST_F(GlyphBooksTest, GlyphsThatWereCountedAndAreNotThereAreNotDrawn)
{
    drawer->extraCount = 2;
    add(1, label(3));
    EXPECT_EQ(ranges(), (RangeList{{0, 5}}));
    EXPECT_EQ(drawsOf(view()), (std::vector<int>{1, 1, 1}));
}

TEST_F(GlyphBooksTest, WhatStandsForNoElementHasNoLabel)
{
    VertexItem plain(GL_POINTS, {{0, 0, 0}});
    plain.setDrawer(drawer.get());
    add(5, label(2));
    EXPECT_EQ(ranges(), (RangeList{{0, 0}, {0, 2}}));
    EXPECT_EQ(drawsOf(view()), (std::vector<int>{1, 1}));
    plain.setDrawer(nullptr);
    EXPECT_EQ(ranges(), (RangeList{{2, 2}}));
}

TEST_F(GlyphBooksTest, WithoutContextUploadsWait)
{
    add(1, label(2));
    const PaintContext context = view();
    scene->getContext().doneCurrent();
    drawer->draw(context, {});
    ASSERT_TRUE(scene->makeCurrent());
    EXPECT_EQ(uploadsOf(), everything(2, 2));
}

TEST_F(GlyphBooksTest, WithoutSceneNothingIsDrawn)
{
    LabelledItemDrawer none(nullptr);
    EXPECT_EQ(none.getProgram(), nullptr);
    LabelledItem item(1);
    item.glyphs = label(2);
    item.setDrawer(&none);
    GlCalls calls(*gl);
    none.draw(view(), {});
    EXPECT_TRUE(calls.draws.empty());
    EXPECT_EQ(none.getGlyphs().size(), 2u);
}

TEST_F(GlyphBooksTest, OneDrawCallATexture)
{
    for (LONGID id = 1; id <= 30; ++id)
        add(id, label(6, std::size_t(id)));
    EXPECT_EQ(drawsOf(view()), std::vector<int>(6, 30));
    const Texture two[] = {opaqueTexture(3, 3), opaqueTexture(3, 3)};
    for (std::size_t i = 0; i < items.size(); ++i)
        relabel(*items[i], {{{0, 0}, two[i % 2]}, {{4, 0}, two[0]}});
    EXPECT_EQ(drawsOf(view()), (std::vector<int>{45, 15}));
}

/// What OpenGL knows of an attribute: enabled, components, type, whether integers, stride, offset, divisor.
std::vector<long> glyphAttribute(OpenGLFunctions& gl, unsigned int location)
{
    std::vector<long> values;
    const auto ask = [&](GLenum what) {
        GLint value = -1;
        gl.glGetVertexAttribiv(location, what, &value);
        values.push_back(value);
    };
    for (const GLenum what :
         {GL_VERTEX_ATTRIB_ARRAY_ENABLED, GL_VERTEX_ATTRIB_ARRAY_SIZE, GL_VERTEX_ATTRIB_ARRAY_TYPE,
          GL_VERTEX_ATTRIB_ARRAY_INTEGER, GL_VERTEX_ATTRIB_ARRAY_STRIDE})
        ask(what);
    void* pointer = nullptr;
    gl.glGetVertexAttribPointerv(location, GL_VERTEX_ATTRIB_ARRAY_POINTER, &pointer);
    values.push_back(reinterpret_cast<long>(pointer));
    ask(GL_VERTEX_ATTRIB_ARRAY_DIVISOR);
    return values;
}

TEST_F(GlyphBooksTest, AttributesAreTakenARecordAVertex)
{
    add(1, label(2));
    shown();
    const unsigned int vertexArray = scene->getDefaultVao();
    drawer->bind(vertexArray);
    gl->glBindVertexArray(vertexArray);
    using Values = std::vector<long>;
    EXPECT_EQ(glyphAttribute(*gl, 0), (Values{1, 3, GL_FLOAT, 0, 28, 0, 0}));
    EXPECT_EQ(glyphAttribute(*gl, 1), (Values{1, 1, GL_FLOAT, 0, 28, 12, 0}));
    EXPECT_EQ(glyphAttribute(*gl, 2), (Values{1, 2, GL_FLOAT, 0, 28, 16, 0}));
    EXPECT_EQ(glyphAttribute(*gl, 3), (Values{1, 1, GL_INT, 1, 28, 24, 0}));
    EXPECT_EQ(glyphAttribute(*gl, 4)[0], 0);
    EXPECT_EQ(glyphAttribute(*gl, 5), (Values{1, 1, GL_INT, 1, 0, 0, 0}));
    EXPECT_EQ(glyphAttribute(*gl, 6), (Values{1, 2, GL_UNSIGNED_INT, 1, 0, 0, 0}));
    drawer->unbind(vertexArray);
    gl->glBindVertexArray(vertexArray);
    for (unsigned int location = 0; location < 8; ++location)
        EXPECT_EQ(glyphAttribute(*gl, location)[0], 0) << location;
    gl->glBindVertexArray(0);
}

TEST_F(GlyphBooksTest, ALabelThatMovedInMemoryStays)
{
    LabelledItem& item = add(1, label(2));
    shown();
    item.setDrawer(nullptr);
    EXPECT_EQ(drawsOf(view()), std::vector<int>{});
    item.setDrawer(drawer.get());
    EXPECT_EQ(drawsOf(view()), (std::vector<int>{1, 1}));
}

TEST_F(GlyphBooksTest, BuildingAndDroppingLeavesNoObjects)
{
    const auto round = [&](LabelledItemDrawer other) {
        LabelledItem item(1);
        item.glyphs = {{{0, 0}, opaqueTexture(3, 3)}};
        item.setDrawer(&other);
        other.draw(paintContext(8, 8), {});
        return other.getProgram();
    };
    RenderTarget target(*gl, {8, 8});
    target.bind();
    delete round(LabelledItemDrawer(scene.get()));
    const GlObjects before = GlObjects::count(*gl);
    for (int i = 0; i < 10; ++i)
        delete round(LabelledItemDrawer(scene.get())); // the scene's own until it goes
    for (int i = 0; i < 1000; ++i)
        round(LabelledItemDrawer(*drawer)); // with the program of another one, as clones have it
    EXPECT_EQ(GlObjects::count(*gl), before);
}

} // namespace
