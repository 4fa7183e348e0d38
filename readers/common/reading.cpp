#include <readers/common/reading.h>

#include <framework/ksp/Canceled.h>
#include <framework/ksp/Log.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <new>

namespace readers {

namespace {

constexpr int longestReason = 400;

QString toLine(const QString& text)
{
    QString line = text.left(longestReason);
    for (QChar& c : line) {
        if (!c.isPrint()) c = QLatin1Char(' ');
    }
    return line.simplified();
}

void open(QFile& file, const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists()) throw ksp::CommonError(QStringLiteral("there is no such file"));
    if (info.isDir()) throw ksp::CommonError(QStringLiteral("is a folder, not a file"));
    if (!info.isFile()) throw ksp::CommonError(QStringLiteral("is not a regular file"));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        throw ksp::CommonError(QStringLiteral("cannot be opened: %1").arg(file.errorString()));
    if (file.size() == 0) throw ksp::CommonError(QStringLiteral("is empty"));
}

} // namespace

void withFile(const QString& path, const std::function<void(QIODevice&)>& function)
{
    QString reason;
    try {
        QFile file(path);
        open(file, path);
        function(file);
        return;
    } catch (const ksp::Canceled&) {
        throw;
    } catch (const std::bad_alloc&) {
        reason = QStringLiteral("needs more memory than there is");
    } catch (const std::exception& error) {
        reason = QString::fromUtf8(error.what());
    }
    throw ksp::CommonError(path + QStringLiteral(": ") + toLine(reason));
}

std::vector<MeshData> readMeshFile(const QString& path, const MeshParser& parse, ksp::StagedProgress progress)
{
    std::vector<MeshData> meshes;
    withFile(path, [&](QIODevice& device) {
        meshes = parse(device, path, progress);
        if (meshes.empty()) throw ksp::CommonError(QStringLiteral("has nothing to draw"));
    });
    return meshes;
}

QString inQuotes(std::string_view text)
{
    constexpr std::size_t longest = 60;
    const bool cut = text.size() > longest;
    text = text.substr(0, longest);
    QString line = toLine(QString::fromUtf8(text.data(), static_cast<int>(text.size())));
    if (cut) line += QStringLiteral("...");
    return QLatin1Char('"') + line + QLatin1Char('"');
}

void LeftOut::log(const QString& path) const
{
    if (notFinite > 0)
        ksp::Log::warning(
            QStringLiteral("%1: %2 faces, lines or points were left out: their coordinates are not "
                           "finite or beyond 1e15")
                .arg(path)
                .arg(notFinite));
    if (tooFew > 0)
        ksp::Log::warning(
            QStringLiteral("%1: %2 faces or lines with too few corners were left out").arg(path).arg(tooFew));
    if (fanned > 0)
        ksp::Log::warning(
            QStringLiteral("%1: %2 polygons are too large to be divided properly, their triangles may "
                           "cover too much")
                .arg(path)
                .arg(fanned));
}

void LeftOut::refuse() const
{
    if (notFinite > 0)
        throw ksp::CommonError(
            QStringLiteral("has nothing to draw whose coordinates are finite and below 1e15"));
    if (tooFew > 0)
        throw ksp::CommonError(
            QStringLiteral("has nothing to draw but faces and lines with too few corners"));
    throw ksp::CommonError(QStringLiteral("has nothing to draw"));
}

} // namespace readers
