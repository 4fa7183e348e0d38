#include <tests/support/ShaderDrawing.h>

#include <cstdio>
#include <random>

// Which fragments select their item, and which bit of the buffer is the item's.
namespace {

const glm::vec4 wholeView(0.0f, 0.0f, 64.0f, 64.0f);

// The selected area itself: the one function that all programs share, through the plainest of them. One pixel
// is drawn, at column 20 and row 40 from the bottom (row 23 from the top).
class SelectedAreaTest : public ShaderDrawing
{
protected:
    static constexpr int Column = 20;
    static constexpr int Row = 40;

    void prepare() override
    {
        use("Mono");
        setColors({1, 1, 1, 1});
        attribute(0, 3, {(Column + 0.5f) / 32.0f - 1.0f, (Row + 0.5f) / 32.0f - 1.0f, 0.0f});
        set("draw_mode", SelectionBuffer);
        set("selection_rect", wholeView);
        set("item_index", 1);
    }
    bool isSelected(const std::vector<std::int32_t>& mask = {0})
    {
        beginSelection(mask);
        draw(GL_POINTS, 1);
        return selectedWords()[0] == 2u;
    }
    /// A mask of 64 x 64 pixels, all clear but the one at (x, y), y counted from the top.
    static std::vector<std::int32_t> maskOf(int x, int y)
    {
        std::vector<std::int32_t> mask(4 + 64 * 2, 0);
        mask[0] = 1;
        mask[1] = mask[2] = 64;
        mask[3] = 2;
        mask[static_cast<std::size_t>(4 + y * 2 + x / 32)] = static_cast<std::int32_t>(1u << (x % 32));
        return mask;
    }
};

TEST_F(SelectedAreaTest, RectangleIncludesItsBounds)
{
    const float x = Column + 0.5f;
    const float y = Row + 0.5f;
    const float step = 0.01f;
    set("selection_rect", glm::vec4(x, y, x, y));
    EXPECT_TRUE(isSelected());
    for (const glm::vec4& rect : {glm::vec4(x + step, y, x + 1, y), glm::vec4(x - 1, y, x - step, y),
                                  glm::vec4(x, y + step, x, y + 1), glm::vec4(x, y - 1, x, y - step)}) {
        set("selection_rect", rect);
        EXPECT_FALSE(isSelected());
    }
}

TEST_F(SelectedAreaTest, RectangleThatIsNotSetSelectsNothing)
{
    use("Mono");
    setColors({1, 1, 1, 1});
    set("draw_mode", SelectionBuffer);
    set("item_index", 1);
    EXPECT_FALSE(isSelected());
}

TEST_F(SelectedAreaTest, MaskOfFlagZeroSelectsAllInsideTheRectangle)
{
    EXPECT_TRUE(isSelected({0, 1, 1, 1, 0}));
}

TEST_F(SelectedAreaTest, MaskRowsRunTopDownAndBitsFromTheLowest)
{
    EXPECT_TRUE(isSelected(maskOf(Column, 63 - Row)));
    EXPECT_FALSE(isSelected(maskOf(Column, Row)));
    EXPECT_FALSE(isSelected(maskOf(Column + 1, 63 - Row)));
    EXPECT_FALSE(isSelected(maskOf(Column + 32, 63 - Row)));
    EXPECT_FALSE(isSelected(maskOf(31 - Column, 63 - Row)));
}

TEST_F(SelectedAreaTest, PixelsOutsideTheMaskAreNotSelected)
{
    // all bits set, but the mask is too narrow, or too low: then the pixel lies above its top row
    EXPECT_TRUE(isSelected({1, Column + 1, Row + 1, 1, -1}));
    EXPECT_FALSE(isSelected({1, Column, Row + 1, 1, -1}));
    EXPECT_FALSE(isSelected({1, Column + 1, Row, 1, -1}));
}

TEST_F(SelectedAreaTest, PixelsAboveTheMaskDoNotReadItsHeader)
{
    // the pixel in column 33 of the row above the mask: the word before its rows is the row length, 2
    attribute(0, 3, {33.5f / 32.0f - 1.0f, (Row + 0.5f) / 32.0f - 1.0f, 0.0f});
    EXPECT_FALSE(isSelected({1, 64, Row, 2, -1, -1}));
}

TEST_F(SelectedAreaTest, MaskDoesNotReplaceTheRectangle)
{
    set("selection_rect", glm::vec4(0, 0, 10, 10));
    EXPECT_FALSE(isSelected(maskOf(Column, 63 - Row)));
}

TEST_F(SelectedAreaTest, SeveralItemsSetTheirBitsOneBesideTheOther)
{
    beginSelection();
    for (const int index : {2, 40, 41}) {
        set("item_index", index);
        draw(GL_POINTS, 1);
    }
    EXPECT_EQ(selectedWords()[0], 1u << 2);
    EXPECT_EQ(selectedWords()[1], (1u << 8) | (1u << 9));
}

// A fragment stage of a host's that counts the bits of an item by itself.
TEST_F(SelectedAreaTest, StagesMayCountFromTheItemsIndex)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("host.fragment.glsl")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("#version 430 core\n//#include \"shader:Viewer3dModule/DrawModes.glsl\"\n"
               "//#include \"shader:Viewer3dModule/SelectionMode.glsl\"\n"
               "void main() { set_item_index(3); discard; }\n");
    file.close();
    use({"host's", {shaderPath(QStringLiteral("common.vertex")), file.fileName()}, {}});
    attribute(0, 3, {(Column + 0.5f) / 32.0f - 1.0f, (Row + 0.5f) / 32.0f - 1.0f, 0.0f});
    set("selection_rect", wholeView);
    set("item_index", 20);
    beginSelection();
    draw(GL_POINTS, 1);
    EXPECT_EQ(selectedWords()[0], 1u << 23);
}

/// Every pixel of the view is an item of its own: one instance each, counted row by row from the lower left.
class SelectedPixelsTest : public ShaderDrawing
{
protected:
    static constexpr int Items = Size * Size;

    ~SelectedPixelsTest() override
    {
        if (makeCurrent()) gl->glDeleteBuffers(2, m_buffers);
    }
    void prepare() override
    {
        use({"pixels",
             {shaderPath("common.vertex"), shaderPath("mono.fragment")},
             {"RX_USE_INSTANCED_DRAW", "RX_USE_INSTANCE_POSITION", "RX_NO_USE_PER_VERTEX_COORDS"}});
        setColors({1, 1, 1, 1});
        set("draw_mode", SelectionBuffer);
        std::vector<float> positions;
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x)
                for (const double value : {(x + 0.5) / 32.0 - 1.0, (y + 0.5) / 32.0 - 1.0, 0.0})
                    positions.push_back(static_cast<float>(value));
        instanceFloats(4, 3, positions);
        instanceIntegers(5, 1, GL_INT, std::vector<std::uint32_t>(Items, ~0u));
        gl->glGenBuffers(2, m_buffers);
    }
    /// Draws the items with this mask in place and returns the words of the buffer.
    std::vector<std::uint32_t> select(const std::vector<std::int32_t>& mask)
    {
        std::vector<std::uint32_t> words(Items / 32, 0u);
        gl->glBindBufferBase(GL_SHADER_STORAGE_BUFFER, 8, m_buffers[0]);
        gl->glBufferData(GL_SHADER_STORAGE_BUFFER, Items / 8, words.data(), GL_DYNAMIC_COPY);
        gl->glBindBufferBase(GL_SHADER_STORAGE_BUFFER, 9, m_buffers[1]);
        gl->glBufferData(GL_SHADER_STORAGE_BUFFER, static_cast<GLsizeiptr>(4 * mask.size()), mask.data(),
                         GL_STATIC_DRAW);
        draw(GL_POINTS, 1, Items);
        gl->glMemoryBarrier(GL_BUFFER_UPDATE_BARRIER_BIT);
        gl->glBindBuffer(GL_SHADER_STORAGE_BUFFER, m_buffers[0]);
        gl->glGetBufferSubData(GL_SHADER_STORAGE_BUFFER, 0, Items / 8, words.data());
        return words;
    }

    struct Mask
    {
        std::int32_t flag = 0;
        int width = 0;
        int height = 0;
        int wordsInRow = 0;
        std::vector<std::int32_t> rows;

        std::vector<std::int32_t> words() const
        {
            std::vector<std::int32_t> all{flag, width, height, wordsInRow};
            all.insert(all.end(), rows.begin(), rows.end());
            return all;
        }
        /// Whether the pixel, counted from the lower left, is set.
        bool has(int x, int y) const
        {
            if (flag == 0) return true;
            const int fromTop = height - 1 - y;
            if (x >= width || fromTop < 0 || fromTop >= height) return false;
            const auto row = rows.begin() + fromTop * wordsInRow;
            return (std::uint32_t(*(row + x / 32)) >> (x % 32)) & 1u;
        }
    };
    /// Bits at random, also where the rows are longer than the mask is wide.
    Mask anyMask()
    {
        Mask mask;
        mask.flag = whole(0, 5) == 0 ? 0 : whole(0, 1) == 0 ? 1 : std::int32_t(random() | 1u);
        mask.width = whole(1, 130);
        mask.height = whole(1, 100);
        mask.wordsInRow = (mask.width + 31) / 32 + whole(0, 2);
        for (int i = 0; i < mask.wordsInRow * mask.height; ++i)
            mask.rows.push_back(static_cast<std::int32_t>(random()));
        return mask;
    }
    /// Bounds anywhere, on a pixel's centre or on its border.
    float anyBound()
    {
        const int kind = whole(0, 2);
        if (kind == 0) return static_cast<float>(std::uniform_real_distribution<double>(-10.0, 74.0)(random));
        return static_cast<float>(whole(-2, 66)) + (kind == 1 ? 0.5f : 0.0f);
    }
    int whole(int from, int to) { return std::uniform_int_distribution<int>(from, to)(random); }

    std::mt19937 random{99};

private:
    unsigned m_buffers[2] = {0, 0};
};

TEST_F(SelectedPixelsTest, RandomMasksAndRectanglesSelectWhatCountingFinds)
{
    std::size_t selected = 0;
    std::size_t differing = 0;
    constexpr int Runs = 150;
    for (int run = 0; run < Runs; ++run) {
        const Mask mask = anyMask();
        const glm::vec4 rect =
            run % 4 == 0 ? wholeView : glm::vec4(anyBound(), anyBound(), anyBound(), anyBound());
        set("selection_rect", rect);
        const std::vector<std::uint32_t> words = select(mask.words());
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x) {
                const double cx = x + 0.5;
                const double cy = y + 0.5;
                const bool isInside = cx >= double(rect.x) && cx <= double(rect.z) && cy >= double(rect.y) &&
                                      cy <= double(rect.w);
                const bool expected = isInside && mask.has(x, y);
                const int index = y * Size + x;
                const bool seen = (words[static_cast<std::size_t>(index / 32)] >> (index % 32)) & 1u;
                selected += expected;
                differing += seen != expected;
                ASSERT_EQ(seen, expected) << "run " << run << ", pixel " << x << ", " << y;
            }
    }
    std::printf("set_item_index: %d masks and rectangles, %d pixels, %zu of them selected, %zu differ\n",
                Runs, Runs * Items, selected, differing);
    EXPECT_GT(selected, 40000u);
}

/// Which bits are set, in a part of a buffer whose neighbours must stay as they are.
class SelectedIndicesTest : public ShaderDrawing
{
protected:
    static constexpr int Words = 8;
    static constexpr int Around =
        64; ///< words on either side: 256 bytes, which any driver takes as an offset
    static constexpr std::uint32_t Guard = 0x5A5A5A5Au;

    ~SelectedIndicesTest() override
    {
        if (makeCurrent()) gl->glDeleteBuffers(1, &m_buffer);
    }
    void prepare() override
    {
        use({"indices",
             {shaderPath("common.vertex"), shaderPath("mono.fragment")},
             {"RX_USE_INSTANCED_DRAW", "RX_USE_INSTANCE_POSITION", "RX_NO_USE_PER_VERTEX_COORDS"}});
        setColors({1, 1, 1, 1});
        set("draw_mode", SelectionBuffer);
        set("selection_rect", wholeView);
        instanceIntegers(5, 1, GL_INT, std::vector<std::uint32_t>(100, ~0u));
        gl->glGenBuffers(1, &m_buffer);
        beginSelection();
    }
    /// Draws that many instances, from this index on, and checks every word of the buffer.
    void expectBits(int first, int instances)
    {
        std::vector<std::uint32_t> words(2 * Around + Words, Guard);
        std::fill_n(words.begin() + Around, Words, 0u);
        gl->glBindBuffer(GL_SHADER_STORAGE_BUFFER, m_buffer);
        gl->glBufferData(GL_SHADER_STORAGE_BUFFER, static_cast<GLsizeiptr>(4 * words.size()), words.data(),
                         GL_DYNAMIC_COPY);
        gl->glBindBufferRange(GL_SHADER_STORAGE_BUFFER, 8, m_buffer, 4 * Around, 4 * Words);
        set("item_index", first);
        draw(GL_POINTS, 1, instances);
        for (int i = 0; i < instances; ++i) {
            const int index = first + i;
            if (index >= 0 && index < 32 * Words)
                words[static_cast<std::size_t>(Around + index / 32)] |= 1u << (index % 32);
        }
        std::vector<std::uint32_t> seen(words.size());
        gl->glMemoryBarrier(GL_BUFFER_UPDATE_BARRIER_BIT);
        gl->glBindBuffer(GL_SHADER_STORAGE_BUFFER, m_buffer);
        gl->glGetBufferSubData(GL_SHADER_STORAGE_BUFFER, 0, static_cast<GLsizeiptr>(4 * words.size()),
                               seen.data());
        ASSERT_EQ(seen, words) << "from " << first << ", " << instances << " instances";
    }

private:
    unsigned m_buffer = 0;
};

TEST_F(SelectedIndicesTest, EachIndexIsABitAndThoseBeyondTheBufferAreNone)
{
    int cases = 0;
    for (int first = -70; first < 32 * Words + 70; first += 1, ++cases)
        expectBits(first, 1);
    for (const int first : {0, 1, 31, 32, 33, 63, 64, -3, 250})
        for (const int instances : {2, 31, 32, 33, 100}) {
            expectBits(first, instances);
            ++cases;
        }
    for (const int first : {2147483647, 2147483600, -2147483647, 1 << 24, (1 << 24) + 1}) {
        expectBits(first, 1);
        ++cases;
    }
    std::printf("bits of the selection buffer: %d cases\n", cases);
}

} // namespace
