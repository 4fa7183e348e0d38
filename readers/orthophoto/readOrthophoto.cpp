#include <readers/orthophoto/readOrthophoto.h>

#include <framework/ksp/CommonError.h>
#include <readers/common/numbers.h>
#include <readers/common/reading.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtGui/QImageReader>

#include <algorithm>
#include <cmath>

namespace readers {

namespace {

// .pgw beside .png: the first letter of the extension, its last one, and w; or a w behind the whole of it.
QString findWorldFile(const QString& path)
{
    const QFileInfo file(path);
    const QString extension = file.suffix();
    const QString stem = path.left(path.size() - extension.size());
    const QString shown = extension.toLower() == QLatin1String("tiff") ? extension.left(3) : extension;
    const QString usual = shown.left(1) + shown.right(1) + QLatin1Char('w');
    for (const QString& name : {usual, usual.toLower(), usual.toUpper(), extension + QLatin1Char('w')})
        if (QFileInfo(stem + name).isFile()) return stem + name;
    throw ksp::CommonError(
        QStringLiteral("there is no world file (.%1) beside it that tells where the picture lies")
            .arg(usual.toLower()));
}

// The size of a pixel along x, two rotations, its size along y, and the middle of the upper left pixel.
struct World
{
    double numbers[6] = {};
    glm::dvec2 column() const { return {numbers[0], numbers[1]}; }
    glm::dvec2 row() const { return {numbers[2], numbers[3]}; }
    glm::dvec2 first() const { return {numbers[4], numbers[5]}; }
};

World readWorld(const QString& path)
{
    constexpr qint64 longest = 4096; // bytes; six numbers take far less
    constexpr double largest = 1e15;
    QFile file(path);
    const QString name = QFileInfo(path).fileName();
    if (!file.open(QIODevice::ReadOnly))
        throw ksp::CommonError(QStringLiteral("its world file %1 cannot be opened").arg(name));
    const QByteArray text = file.read(longest).simplified();
    const QList<QByteArray> words = text.split(' ');
    World world;
    for (int i = 0; i < 6; ++i) {
        const QByteArray word = words.value(i);
        if (!toDouble(std::string_view(word.constData(), static_cast<std::size_t>(word.size())),
                      world.numbers[i]) ||
            !(std::abs(world.numbers[i]) <= largest))
            throw ksp::CommonError(QStringLiteral("its world file %1 has not six numbers").arg(name));
    }
    const double area = world.column().x * world.row().y - world.column().y * world.row().x;
    if (!(std::abs(area) > 0.0))
        throw ksp::CommonError(QStringLiteral("the pixels of its world file %1 have no area").arg(name));
    return world;
}

// A PNG file that ends early is told by its end: the library that decodes it would speak up by itself.
bool isWhole(const QString& path, const QByteArray& format)
{
    if (format != "png") return true;
    constexpr qint64 end =
        4096; // bytes: the last chunk takes 12, and some programs leave something behind it
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.seek(std::max(qint64(0), file.size() - end)) &&
           file.read(end).contains("IEND");
}

// Decodes the picture, too: one that nobody can show is refused with the other files.
QSize readSize(const QString& path)
{
    constexpr qint64 mostPixels = 400'000'000;
    QImageReader reader(path);
    const QSize size = reader.size();
    if (!reader.canRead() || size.isEmpty())
        throw ksp::CommonError(QStringLiteral("cannot be read as a picture: %1").arg(reader.errorString()));
    if (qint64(size.width()) * size.height() > mostPixels)
        throw ksp::CommonError(QStringLiteral("has more than 400 million pixels"));
    if (!isWhole(path, reader.format()) || reader.read().isNull())
        throw ksp::CommonError(QStringLiteral("cannot be read as a picture: it is damaged"));
    return size;
}

OrthophotoElement::Frame frameOf(const World& world, const QSize& size, double height)
{
    const glm::dvec2 upperLeft = world.first() - 0.5 * (world.column() + world.row());
    const glm::dvec2 right = world.column() * static_cast<double>(size.width());
    const glm::dvec2 down = world.row() * static_cast<double>(size.height());
    return {glm::dvec3(upperLeft + down, height), glm::dvec3(right, 0.0), glm::dvec3(-down, 0.0)};
}

} // namespace

std::unique_ptr<OrthophotoElement> readOrthophoto(const QString& path, double groundHeight)
{
    auto element = std::make_unique<OrthophotoElement>();
    withFile(path, [&](QIODevice&) {
        const QSize size = readSize(path);
        element->setFrame(frameOf(readWorld(findWorldFile(path)), size, groundHeight));
    });
    const QFileInfo file(path);
    element->setName(file.completeBaseName());
    element->setPath(file.absoluteFilePath());
    return element;
}

} // namespace readers
