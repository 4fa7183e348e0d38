#include <tests/support/ProgramList.h>

#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>

// The document of the shaders tells what is so.

namespace {

QString document()
{
    QFile file(QStringLiteral(V3D_SOURCE_DIR "/docs/shaders.md"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QString::fromUtf8(file.readAll());
}

// The cells of all rows of the document's tables of so many columns, but the heads.
std::vector<QStringList> rows(int columns)
{
    std::vector<QStringList> found;
    for (const QString& line : document().split('\n')) {
        if (!line.startsWith(QLatin1String("| `")) || !line.endsWith(QLatin1String(" |"))) continue;
        QStringList cells;
        for (const QString& cell : line.mid(1, line.size() - 2).split('|'))
            cells.append(cell.trimmed().remove('`'));
        if (cells.size() == columns) found.push_back(cells);
    }
    return found;
}

QString nameOf(const QString& path)
{
    return QFileInfo(path.section('/', -1)).completeBaseName();
}

TEST(ShaderTableTest, ProgramsAreThoseOfTheTests)
{
    std::vector<QStringList> expected;
    for (const auto* programs : {&defaultPrograms(), &furtherPrograms()})
        for (const ProgramRecipe& program : *programs) {
            QStringList stages;
            for (const QString& file : program.files)
                stages.append(nameOf(file));
            QStringList defines;
            for (const std::string& define : program.defines)
                defines.append(QString::fromStdString(define));
            expected.push_back({QString::fromStdString(program.name), stages.join(", "), defines.join(", ")});
        }
    std::vector<QStringList> told = rows(4);
    for (QStringList& row : told) {
        EXPECT_FALSE(row[3].isEmpty()) << qPrintable(row[0]);
        row.removeLast();
    }
    EXPECT_EQ(told.size(), expected.size());
    for (std::size_t i = 0; i < std::min(told.size(), expected.size()); ++i)
        EXPECT_EQ(told[i].join(" | ").toStdString(), expected[i].join(" | ").toStdString());
}

TEST(ShaderTableTest, EverySourceIsInATable)
{
    QStringList told;
    for (const QStringList& row : rows(4))
        told += row[1].split(", ");
    for (const QStringList& row : rows(2))
        told.append(row[0]);
    told.removeDuplicates();
    told.sort();
    QStringList sources;
    for (const QString& file : QDir(QStringLiteral(V3D_SOURCE_DIR "/Viewer3dModule/resources/Viewer3dModule"))
                                   .entryList(QDir::Files))
        sources.append(nameOf(file));
    sources.sort();
    EXPECT_EQ(told.join('\n').toStdString(), sources.join('\n').toStdString());
}

} // namespace
