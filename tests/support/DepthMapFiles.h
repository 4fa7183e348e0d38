#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <gtest/gtest.h>

#include <glm/glm.hpp>

#include <cstring>
#include <vector>

// Readers of depth maps and their cameras as any program would write them from the user guide alone.

/// A map read from PFM.
struct DepthMapFile
{
    int width = 0;
    int height = 0;
    std::vector<float> distances; ///< top row first

    DepthMapFile() = default;
    explicit DepthMapFile(const QByteArray& bytes)
    {
        const QList<QByteArray> lines = bytes.left(64).split('\n');
        if (lines.size() < 4 || lines[0] != "Pf" || lines[2] != "-1.0") {
            ADD_FAILURE() << "no PFM of one channel, little endian: " << bytes.left(32).constData();
            return;
        }
        const int columns = lines[1].split(' ').value(0).toInt();
        const int rows = lines[1].split(' ').value(1).toInt();
        const int head = lines[0].size() + lines[1].size() + lines[2].size() + 3;
        const auto rowLength = static_cast<std::size_t>(columns) * sizeof(float);
        if (static_cast<std::size_t>(bytes.size() - head) != rowLength * static_cast<std::size_t>(rows)) {
            ADD_FAILURE() << "not as long as its head says";
            return;
        }
        width = columns;
        height = rows;
        distances.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        for (int row = 0; row < height; ++row) // the bottom one comes first
            std::memcpy(distances.data() + static_cast<std::ptrdiff_t>(height - 1 - row) * width,
                        bytes.constData() + head + static_cast<std::ptrdiff_t>(rowLength) * row, rowLength);
    }
    float at(int column, int row) const
    {
        return distances[static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
                         static_cast<std::size_t>(column)];
    }
};

/// A camera read from its JSON file.
struct DepthCameraFile
{
    QJsonObject object;
    glm::dvec3 eye{0.0};
    int width = 0, height = 0;
    double view[4][4] = {}, projection[4][4] = {}; ///< [row][column]

    DepthCameraFile() = default;
    explicit DepthCameraFile(const QByteArray& bytes)
        : object(QJsonDocument::fromJson(bytes).object())
        , eye(vector("eye"))
        , width(object["size"].toArray()[0].toInt())
        , height(object["size"].toArray()[1].toInt())
    {
        EXPECT_EQ(object["matrixOrder"].toString(), "rows");
        for (int row = 0; row < 4; ++row)
            for (int column = 0; column < 4; ++column) {
                view[row][column] = object["viewMatrix"].toArray()[row].toArray()[column].toDouble();
                projection[row][column] =
                    object["projectionMatrix"].toArray()[row].toArray()[column].toDouble();
            }
    }
    glm::dvec3 vector(const char* name) const
    {
        const QJsonArray numbers = object[name].toArray();
        return {numbers[0].toDouble(), numbers[1].toDouble(), numbers[2].toDouble()};
    }
    bool isParallel() const { return object["projection"].toString() == "parallel"; }

    /// The point of the model that the pixel shows at the distance: the formula of the user guide.
    glm::dvec3 point(double column, double row, double distance) const
    {
        const double x = 2.0 * (column + 0.5) / width - 1.0;
        const double y = 1.0 - 2.0 * (row + 0.5) / height;
        const double k = isParallel() ? 1.0 : distance;
        const double right = x * k / projection[0][0];
        const double up = y * k / projection[1][1];
        glm::dvec3 result = eye;
        for (int i = 0; i < 3; ++i)
            result[i] += right * view[0][i] + up * view[1][i] - distance * view[2][i];
        return result;
    }
};
