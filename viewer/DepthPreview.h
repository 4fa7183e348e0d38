#pragma once

#include <QtCore/QSize>
#include <QtGui/QImage>

#include <vector>

/// A depth map as a picture for people: grey, white at the nearest distance and dark at the farthest,
/// transparent where nothing is. Of the map's size as far as that is no more than 2048 pixels a side; a pixel
/// of a smaller picture shows the nearest of its square of the map.
class DepthPreview
{
public:
    /// For a map of this size.
    explicit DepthPreview(const QSize& size);

    /// The next rows, from the top, one after the other.
    void add(const float* distances, int rowCount);
    /// The picture, when all rows have been added.
    QImage image() const;

private:
    QSize m_mapSize;
    int m_step; // pixels of the map that become one, each way
    QSize m_size;
    std::vector<float> m_nearest;
    int m_rowCount = 0;
};
