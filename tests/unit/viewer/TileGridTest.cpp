#include <viewer/TileGrid.h>

#include <gtest/gtest.h>

#include <glm/gtc/matrix_transform.hpp>

namespace {

const QSize sizes[] = {{1, 1},    {2048, 1280},   {2049, 1281},  {5000, 3},
                       {3, 5000}, {20000, 20000}, {1000000, 300}};

} // namespace

TEST(TileGrid, GivesEveryPixelOnceInBandsFromTheTop)
{
    for (const QSize& size : sizes) {
        const TileGrid grid(size);
        int nextRow = 0, tiles = 0;
        for (int band = 0; band < grid.bandCount(); ++band) {
            const QRect rows = grid.bandRows(band);
            EXPECT_EQ(rows.top(), nextRow);
            EXPECT_GT(rows.height(), 0);
            nextRow = rows.bottom() + 1;
            int nextColumn = 0;
            for (const Tile& tile : grid.tiles(band)) {
                EXPECT_EQ(tile.pixels.left(), nextColumn);
                EXPECT_GT(tile.pixels.width(), 0);
                EXPECT_EQ(tile.pixels.top(), rows.top());
                EXPECT_EQ(tile.pixels.height(), rows.height());
                nextColumn = tile.pixels.right() + 1;
                ++tiles;
            }
            EXPECT_EQ(nextColumn, size.width());
        }
        EXPECT_EQ(nextRow, size.height());
        EXPECT_EQ(tiles, grid.tileCount());
    }
}

TEST(TileGrid, KeepsTilesAndBandsSmall)
{
    for (const QSize& size : sizes) {
        const TileGrid grid(size, 5);
        for (int band = 0; band < grid.bandCount(); ++band) {
            const QRect rows = grid.bandRows(band);
            EXPECT_LE(4LL * rows.width() * rows.height(), 256LL << 20);
            for (const Tile& tile : grid.tiles(band)) {
                EXPECT_LE(tile.target.width(), 2048 + 10);
                EXPECT_LE(tile.target.height(), 1280 + 10);
            }
        }
    }
}

// Wide tiles have a neighbour on both sides, and the last ones are smaller.
TEST(TileGrid, LargestHoldsEveryTile)
{
    const TileGrid grid(QSize(5000, 3000), 5);
    EXPECT_EQ(grid.largest(&Tile::pixels), QSize(2048, 1280));
    EXPECT_EQ(grid.largest(&Tile::target), QSize(2048 + 10, 1280 + 10));
    EXPECT_EQ(grid.largest(&Tile::frustum), QSize(2048 + 10 + 2 * 128, 1280 + 10 + 2 * 128));
    EXPECT_EQ(TileGrid(QSize(300, 2000), 5).largest(&Tile::target), QSize(300, 1280 + 5));
}

TEST(TileGrid, UsualPictureIsOneTile)
{
    const QRect all(0, 0, 1920, 1080);
    const TileGrid grid(all.size());
    ASSERT_EQ(grid.tileCount(), 1);
    const Tile tile = grid.tiles(0).front();
    EXPECT_EQ(tile.pixels, all);
    EXPECT_EQ(tile.target, all);
    EXPECT_EQ(tile.frustum, all);
}

TEST(TileGrid, TilesHaveAMarginWithinThePicture)
{
    const TileGrid grid(QSize(6000, 4000), 5);
    const Tile inner = grid.tiles(1)[1];
    EXPECT_EQ(inner.pixels, QRect(2048, 1280, 2048, 1280));
    EXPECT_EQ(inner.target, QRect(2043, 1275, 2058, 1290));
    // half of the largest point, of 255 pixels, reaches in from there
    EXPECT_EQ(inner.frustum, QRect(2043 - 128, 1275 - 128, 2058 + 256, 1290 + 256));
    const Tile corner = grid.tiles(0)[0];
    EXPECT_EQ(corner.target, QRect(0, 0, 2053, 1285));
    EXPECT_EQ(corner.frustum, QRect(0, 0, 2053 + 128, 1285 + 128));
    const Tile last = grid.tiles(3)[2];
    EXPECT_EQ(last.pixels, QRect(4096, 3840, 1904, 160));
    EXPECT_EQ(last.frustum, QRect(4096 - 133, 3840 - 133, 1904 + 133, 160 + 133));
}

// A pixel's middle in the part is the same point of the scene as in the picture.
TEST(TileGrid, CroppedProjectionShowsThePartAsAll)
{
    const QSize size(20000, 10000);
    const QRect part(17000, 300, 2000, 1500);
    for (const glm::dmat4& projection :
         {glm::perspective(0.8, 2.0, 1.0, 1e4), glm::ortho(-200.0, 200.0, -100.0, 100.0, 1.0, 1e4)}) {
        const glm::dmat4 cropped = croppedProjection(projection, size, part);
        for (const glm::dvec2& pixel : {glm::dvec2(0.5, 0.5), {1999.5, 1499.5}, {1000.0, 10.25}}) {
            const glm::dvec2 inAll = pixel + glm::dvec2(part.left(), part.top());
            const glm::dvec4 place(2.0 * inAll.x / size.width() - 1.0, 1.0 - 2.0 * inAll.y / size.height(),
                                   0.3, 1.0);
            glm::dvec4 point = glm::inverse(projection) * place;
            point /= point.w;
            const glm::dvec4 clip = cropped * point;
            EXPECT_NEAR((clip.x / clip.w + 1.0) / 2.0 * part.width(), pixel.x, 1e-8);
            EXPECT_NEAR((1.0 - clip.y / clip.w) / 2.0 * part.height(), pixel.y, 1e-8);
            EXPECT_NEAR(clip.z / clip.w, 0.3, 1e-12); // near and far planes are those of all
        }
    }
}

TEST(TileGrid, CroppingToAllChangesNoBit)
{
    const glm::dmat4 projection = glm::perspective(0.7, 1.7, 0.3, 5e3);
    EXPECT_EQ(croppedProjection(projection, QSize(1234, 777), QRect(0, 0, 1234, 777)), projection);
}

TEST(TileGrid, RefusesWhatNobodyCouldOpen)
{
    EXPECT_EQ(TileGrid::refuse(QSize(1, 1)), "");
    EXPECT_EQ(TileGrid::refuse(QSize(65536, 65536)), "");
    EXPECT_EQ(TileGrid::refuse(QSize(1000000, 4000)), "");
    EXPECT_EQ(TileGrid::refuse(QSize(0, 5)), "width and height must be at least 1 pixel");
    EXPECT_EQ(TileGrid::refuse(QSize(5, -1)), "width and height must be at least 1 pixel");
    EXPECT_EQ(TileGrid::refuse(QSize(1000001, 1)),
              "at most 1000000 pixels a side, which is the most that readers of pictures take");
    // 4e10 bytes are 37.25 times 2^30
    EXPECT_EQ(
        TileGrid::refuse(QSize(100000, 100000)),
        "such a picture takes 37.3 GiB of memory wherever it is opened, 4 bytes a pixel; at most 16 GiB "
        "can be asked for");
}
