#include "DepthMap.h"
#include "SolidsTest.h"

#include "tests/support/GlObjects.h"

#include <Viewer3dModule/camera/CentralProjection.h>
#include <Viewer3dModule/scene/SceneDepthMapGenerator.h>

#include <QtCore/QFile>
#include <QtCore/QSizeF>

#include <cstdio>

namespace {

/// Memory of this process that is in use, bytes.
long residentBytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QFile::ReadOnly)) return 0;
    return file.readAll().split(' ').value(1).toLong() * 4096;
}

/// Many maps one after another leave memory and OpenGL objects as they were.
class DepthMapLevelTest : public SolidsTest
{
protected:
    static constexpr long Allowed = 2 * 1024 * 1024; // a heap breathes; a map of 64 x 48 has 12 KiB

    void SetUp() override
    {
        SolidsTest::SetUp();
        wall = add(squareVertices(-50, -50, 50, 50, -10));
    }
    void makeMap(SceneDepthMapGenerator& generator, const QSize& size)
    {
        const QImage image = generator.generate(
            {wall}, glm::dmat4(1.0), CentralProjection().calcProjectionMatrix(QSizeF(size), 100.0, 1.0));
        ASSERT_EQ(coveredCount(image), size.width() * size.height());
    }
    void expectLevel(int count, const std::function<void()>& makeOne)
    {
        for (int i = 0; i < 100; ++i)
            makeOne();
        scene->makeCurrent();
        const GlObjects objects = GlObjects::count(*gl);
        const long memory = residentBytes();
        ASSERT_GT(memory, 0);
        ASSERT_GE(objects.buffers, 1); // the count finds what there is
        for (int i = 0; i < count; ++i)
            makeOne();
        scene->makeCurrent();
        EXPECT_EQ(GlObjects::count(*gl), objects);
        const long growth = residentBytes() - memory;
#ifndef __SANITIZE_ADDRESS__ // which keeps back what was freed
        EXPECT_LT(growth, Allowed);
#endif
        std::printf("%d maps: memory in use %ld KiB, %+ld KiB; %d buffers, %d textures\n", count,
                    memory / 1024, growth / 1024, objects.buffers, objects.textures);
    }
    void expectLevelMaps(int count)
    {
        const QSize first(64, 48), second(200, 150);
        SceneDepthMapGenerator small(first), large(second);
        scene->makeCurrent();
        ASSERT_EQ(GlObjects::count(*gl).textures, 4);
        int number = 0;
        expectLevel(count, [&] { ++number % 10 ? makeMap(small, first) : makeMap(large, second); });
    }

    SolidItem* wall = nullptr;
};

TEST_F(DepthMapLevelTest, AThousandMapsOneAfterAnother)
{
    expectLevelMaps(1000);
}

TEST_F(DepthMapLevelTest, DISABLED_TenThousandMapsOneAfterAnother)
{
    expectLevelMaps(10000);
}

TEST_F(DepthMapLevelTest, AHundredGeneratorsOneAfterAnother)
{
    const QSize size(64, 48);
    expectLevel(100, [&] {
        SceneDepthMapGenerator generator(size);
        makeMap(generator, size);
    });
}

} // namespace
