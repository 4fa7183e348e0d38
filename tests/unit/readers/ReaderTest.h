#pragma once

#include <Viewer3dModule/drawables/MeshData.h>
#include <framework/ksp/StagedProgress.h>
#include <readers/common/reading.h>

#include <gtest/gtest.h>

#include <QtCore/QTemporaryDir>

/// The parser of the plug-in that reads the extension; "geojson" gives no meshes but one empty MeshData a
/// feature.
readers::MeshParser parserOf(const QString& extension);

/// A test that writes small files and reads them.
class ReaderTest : public ::testing::Test
{
protected:
    /// Writes a file into the test's own folder and returns its path.
    QString write(const QString& name, const QByteArray& bytes) const;
    /// Reads a file of these bytes; throws as the plug-in does.
    std::vector<MeshData> read(const QString& extension, const QByteArray& bytes) const;
    /// The reason for which such a file is refused, without the path in front, which is checked; fails the
    /// test when it is read.
    QString refusal(const QString& extension, const QByteArray& bytes) const;

    QTemporaryDir folder;
};

/// Fails the test unless everything in the mesh fits together: indices, parts, attributes, finite positions.
void checkSound(const MeshData& mesh);

/// Model coordinates of the vertices that a part's indices name, in order.
std::vector<glm::dvec3> cornersOf(const MeshData& mesh, std::size_t part = 0);
/// Primitives of a kind in all parts.
std::size_t countOf(const MeshData& mesh, MeshData::Part::Kind kind);
/// Vector sum of half the cross products of a part's triangles.
glm::dvec3 areaOf(const MeshData& mesh, std::size_t part = 0);

/// Numbers one after the other, little-endian.
template <typename... Numbers>
QByteArray packed(Numbers... numbers)
{
    QByteArray bytes;
    (bytes.append(reinterpret_cast<const char*>(&numbers), sizeof numbers), ...);
    return bytes;
}
