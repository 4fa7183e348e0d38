#include "GlyphsTest.h"

#include <chrono>
#include <cstdio>
#include <random>

// Random edits of labels, against books that are kept once more, with plain vectors and by the plain rules.
namespace {

/// What a drawer of glyphs should have in its books.
class GlyphBooks
{
public:
    struct Record
    {
        LONGID id = 0;
        glm::vec3 anchor{0.0f};
        glm::vec2 offset{0.0f};
        int item = 0;
        const IconTexture* texture = nullptr;
        int flag = 0;
    };

    std::vector<LabelledItem*> items; // the registry
    std::vector<std::pair<int, int>> ranges;
    std::vector<Record> records;
    int stale = 0;
    bool recordsChanged = true, flagsChanged = true, orderChanged = true;

    void add(LabelledItem* item)
    {
        items.push_back(item);
        update(items.size() - 1);
    }
    void remove(std::size_t index)
    {
        items[index] = items.back();
        items.pop_back();
        update(index);
    }
    void update(std::size_t index)
    {
        recordsChanged = true;
        for (; ranges.size() > items.size(); ranges.pop_back()) {
            stale += ranges.back().second;
            orderChanged = true;
        }
        if (index < items.size()) write(index);
    }
    /// Of a pass: returns the bytes of its uploads.
    std::vector<std::size_t> draw(const Item3dDrawer::Filter& filter)
    {
        if (items.empty()) return {};
        for (std::size_t i = 0; i < items.size(); ++i)
            findFlag(i, !items[i]->isVisible() || !filter(items[i]) ? -3 : items[i]->highlighted ? -2 : -1);
        std::vector<std::size_t> bytes;
        if (recordsChanged && 4 * stale > static_cast<int>(records.size())) compact();
        if (recordsChanged)
            bytes = {28 * records.size(), 8 * records.size(), 4 * records.size()};
        else if (flagsChanged)
            bytes = {4 * records.size()};
        if (orderChanged) bytes.push_back(4 * liveRecords().size());
        recordsChanged = flagsChanged = orderChanged = false;
        return bytes;
    }
    std::vector<const Record*> liveRecords() const
    {
        std::vector<const Record*> live;
        for (const auto& [first, count] : ranges)
            for (int i = first; i < first + count; ++i)
                live.push_back(&records[static_cast<std::size_t>(i)]);
        return live;
    }

private:
    void write(std::size_t index)
    {
        const auto count = static_cast<int>(items[index]->glyphs.size());
        const auto end = static_cast<int>(records.size());
        if (index == ranges.size()) {
            ranges.emplace_back(end, count);
            records.resize(records.size() + items[index]->glyphs.size());
            orderChanged = orderChanged || count > 0;
        } else if (count > ranges[index].second) {
            stale += ranges[index].second;
            ranges[index] = {end, count};
            records.resize(records.size() + items[index]->glyphs.size());
            orderChanged = true;
        } else {
            stale += ranges[index].second - count;
            orderChanged = orderChanged || ranges[index].second != count;
            ranges[index].second = count;
        }
        for (int j = 0; j < count; ++j) {
            Record& record = records[static_cast<std::size_t>(ranges[index].first + j)];
            const auto& [offset, texture] = items[index]->glyphs[static_cast<std::size_t>(j)];
            orderChanged = orderChanged || record.texture != texture.get();
            record = {items[index]->id,        items[index]->anchor, offset,
                      static_cast<int>(index), texture.get(),        record.flag};
        }
    }
    void findFlag(std::size_t index, int flag)
    {
        const auto [first, count] = ranges[index];
        if (count > 0 && records[static_cast<std::size_t>(first)].flag == flag) return;
        flagsChanged = true;
        for (int i = first; i < first + count; ++i)
            records[static_cast<std::size_t>(i)].flag = flag;
    }
    void compact()
    {
        std::vector<Record> packed;
        for (auto& [first, count] : ranges) {
            const auto begin = records.begin() + first;
            first = static_cast<int>(packed.size());
            packed.insert(packed.end(), begin, begin + count);
        }
        records = std::move(packed);
        stale = 0;
        orderChanged = true;
    }
};

class GlyphChurnTest : public GlyphsTest
{
protected:
    int below(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random); }
    std::size_t anyItem() { return static_cast<std::size_t>(below(static_cast<int>(books.items.size()))); }
    MultiGlyphItem3dDrawer::GlyphList anyLabel()
    {
        return label(static_cast<std::size_t>(below(9)), static_cast<std::size_t>(below(6)));
    }
    void removeAny()
    {
        const std::size_t index = anyItem();
        const LabelledItem* gone = books.items[index];
        books.remove(index);
        items.erase(std::find_if(items.begin(), items.end(),
                                 [gone](const auto& item) { return item.get() == gone; }));
    }
    void addAny()
    {
        books.add(&add((LONGID(below(1000)) << 32) | LONGID(++lastId), anyLabel(),
                       atCorner(below(Size), below(Size))));
    }
    void edit(std::size_t index)
    {
        LabelledItem& item = *books.items[index];
        if (below(2) == 0)
            item.glyphs = anyLabel();
        else
            item.anchor = atCorner(below(Size), below(Size));
        drawer->updateItem(&item);
        books.update(index);
    }
    /// Draws and compares; where it is said, also what OpenGL holds.
    void check(bool withBuffers)
    {
        const int hiddenRest = below(4); // of identifiers by four; 0: nothing is left out
        const Item3dDrawer::Filter filter = [hiddenRest](Drawable3dItem* item) {
            return hiddenRest == 0 || static_cast<LabelledItem*>(item)->id % 4 != hiddenRest;
        };
        const auto expectedUploads = books.draw(filter);
        GlCalls calls(*gl);
        PaintContext context = paintContext(8, 8);
        context.drawMode = below(3) == 0 ? DrawMode::SelectionMaskDraw : DrawMode::OrdinalDraw;
        drawer->draw(context, filter);
        std::vector<std::size_t> bytes;
        for (const GlCalls::Upload& upload : calls.uploads)
            bytes.push_back(upload.bytes);
        ASSERT_EQ(bytes, expectedUploads);
        if (books.items.empty()) return;
        compareBooks();
        compareDraws(calls);
        if (withBuffers) compareBuffers(calls);
        ++passes;
    }
    void compareBooks()
    {
        ASSERT_EQ(drawer->getStaleGlyphs(), books.stale);
        ASSERT_EQ(ranges(), books.ranges);
        ASSERT_EQ(drawer->getGlyphs().size(), books.records.size());
        for (std::size_t i = 0; i < books.records.size(); ++i) {
            const GlyphBooks::Record& record = books.records[i];
            const MultiGlyphItem3dDrawer::Glyph& glyph = drawer->getGlyphs()[i];
            ASSERT_TRUE(glyph.position == record.anchor && glyph.offset == record.offset &&
                        glyph.item == record.item && drawer->getIds()[i] == record.id &&
                        drawer->getFlags()[i] == record.flag)
                << "record " << i;
        }
    }
    /// A call a texture, with all of its live glyphs.
    void compareDraws(const GlCalls& calls)
    {
        std::vector<const IconTexture*> order;
        std::vector<int> counts;
        for (const GlyphBooks::Record* record : books.liveRecords()) {
            const auto found = std::find(order.begin(), order.end(), record->texture);
            const auto run = static_cast<std::size_t>(found - order.begin());
            if (run == order.size()) {
                order.push_back(record->texture);
                counts.push_back(0);
            }
            ++counts[run];
        }
        std::vector<int> drawn;
        for (const GlCalls::Draw& draw : calls.draws)
            drawn.push_back(draw.vertices);
        ASSERT_EQ(drawn, counts);
    }
    /// After a pass that uploaded all records.
    void compareBuffers(const GlCalls& calls)
    {
        if (calls.uploads.size() < 3) return;
        const auto contents = [this](unsigned int buffer, void* to, std::size_t bytes) {
            gl->glBindBuffer(GL_ARRAY_BUFFER, buffer);
            gl->glGetBufferSubData(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(bytes), to);
            gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
        };
        std::vector<LONGID> ids(books.records.size());
        std::vector<std::int32_t> flags(books.records.size());
        contents(calls.uploads[1].buffer, ids.data(), 8 * ids.size());
        contents(calls.uploads[2].buffer, flags.data(), 4 * flags.size());
        ASSERT_EQ(ids, drawer->getIds());
        ASSERT_EQ(flags, drawer->getFlags());
        ++buffersCompared;
    }

    GlyphBooks books;
    std::mt19937 random{20260711};
    int lastId = 0, passes = 0, buffersCompared = 0;
};

TEST_F(GlyphChurnTest, BooksUploadsAndDrawCallsAreThoseOfPlainVectors)
{
    constexpr int operations = 100000;
    RenderTarget target(*gl, {8, 8});
    target.bind();
    const auto start = std::chrono::steady_clock::now();
    int mostRecords = 0;
    for (int i = 0; i < operations && !HasFatalFailure(); ++i) {
        const bool grows = books.items.size() < 40;
        const int what = books.items.empty() ? 0 : below(100);
        if (what < (grows ? 14 : 6))
            addAny();
        else if (what < 20)
            removeAny();
        else if (what < 70)
            edit(anyItem());
        else if (what < 80)
            books.items[anyItem()]->setVisible(below(2) == 0);
        else if (what < 90)
            books.items[anyItem()]->highlighted = below(2) == 0;
        else if (below(6) == 0)
            check(what < 92);
        mostRecords = std::max(mostRecords, static_cast<int>(books.records.size()));
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    EXPECT_GT(passes, operations / 100);
    EXPECT_GT(buffersCompared, 10);
    std::printf("glyph churn: %d operations, %d passes compared, at most %d records, %.2f s\n", operations,
                passes, mostRecords, took.count());
}

} // namespace
