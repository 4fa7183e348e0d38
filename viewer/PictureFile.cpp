#include <viewer/PictureFile.h>

#include <viewer/OutputFile.h>
#include <viewer/PictureWriter.h>
#include <viewer/copyPixels.h>

void PictureFile::write(const QString& path, const QImage& image)
{
    OutputFile file(path);
    const auto writer = PictureWriter::create(file, image.size(), image.hasAlphaChannel());
    const QImage rows = image.convertToFormat(writer->rowFormat());
    for (int row = 0; row < rows.height(); ++row)
        writer->writeRow(rows.constScanLine(row));
    writer->finish();
    file.commit();
}

void PictureFile::write(OutputFile& file, PicturePainter& painter, const Steps& steps)
{
    const TileGrid& grid = painter.grid();
    const auto writer = PictureWriter::create(file, grid.size(), !painter.isOpaque());
    const double tiles = grid.tileCount();
    int done = 0;
    for (int band = 0; band < grid.bandCount(); ++band) {
        const QRect rows = grid.bandRows(band);
        QImage pixels(rows.size(), writer->rowFormat());
        if (pixels.isNull()) throw std::bad_alloc();
        for (const Tile& tile : grid.tiles(band)) {
            const QImage drawn = steps.draw([&] { return painter.drawTile(tile); });
            copyPixels(drawn.convertToFormat(writer->rowFormat()), pixels,
                       tile.pixels.topLeft() - rows.topLeft());
            steps.report(++done / tiles);
        }
        for (int row = 0; row < pixels.height(); ++row) {
            writer->writeRow(pixels.constScanLine(row));
            steps.report(done / tiles);
        }
    }
    writer->finish();
}
