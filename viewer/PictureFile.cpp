#include <viewer/PictureFile.h>

#include <viewer/OutputFile.h>
#include <viewer/PngWriter.h>
#include <viewer/copyPixels.h>

void PictureFile::write(const QString& path, const QImage& image)
{
    OutputFile file(path);
    PngWriter png(file, image.size(), image.hasAlphaChannel());
    const QImage rows = image.convertToFormat(png.rowFormat());
    for (int row = 0; row < rows.height(); ++row)
        png.writeRow(rows.constScanLine(row));
    png.finish();
    file.commit();
}

void PictureFile::write(OutputFile& file, PicturePainter& painter, const Steps& steps)
{
    const TileGrid& grid = painter.grid();
    PngWriter png(file, grid.size(), !painter.isOpaque());
    const double tiles = grid.tileCount();
    int done = 0;
    for (int band = 0; band < grid.bandCount(); ++band) {
        const QRect rows = grid.bandRows(band);
        QImage pixels(rows.size(), png.rowFormat());
        if (pixels.isNull()) throw std::bad_alloc();
        for (const Tile& tile : grid.tiles(band)) {
            const QImage drawn = steps.draw([&] { return painter.drawTile(tile); });
            copyPixels(drawn.convertToFormat(png.rowFormat()), pixels,
                       tile.pixels.topLeft() - rows.topLeft());
            steps.report(++done / tiles);
        }
        for (int row = 0; row < pixels.height(); ++row) {
            png.writeRow(pixels.constScanLine(row));
            steps.report(done / tiles);
        }
    }
    png.finish();
}
