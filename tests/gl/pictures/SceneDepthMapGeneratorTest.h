#pragma once

#include "DepthMap.h"
#include "SolidsTest.h"

#include <Viewer3dModule/camera/CentralProjection.h>
#include <Viewer3dModule/scene/SceneDepthMapGenerator.h>
#include <framework/ksp/CommonError.h>

#include <QtCore/QSizeF>

/// The eye is at the origin and looks along -z. The near plane is at 1, the far plane at 100.
class SceneDepthMapGeneratorTest : public SolidsTest
{
protected:
    static glm::dmat4 central(const QSize& size)
    {
        return CentralProjection().calcProjectionMatrix(QSizeF(size), 100.0, 1.0);
    }
    /// A square that faces the eye, larger than what it sees at this distance or covering its upper half.
    SolidItem* addWall(float distance, bool upperHalf = false)
    {
        return add(squareVertices(-50, upperHalf ? 0 : -50, 50, 50, -distance));
    }
    static QImage map(const std::vector<Drawable3dItem*>& items, const QSize& size = Size)
    {
        return SceneDepthMapGenerator(size).generate(items, glm::dmat4(1.0), central(size));
    }
    /// The text of the error that making a generator of this size throws; empty when it throws none.
    static QString errorOf(const QSize& size)
    {
        try {
            const SceneDepthMapGenerator generator(size);
        } catch (const ksp::CommonError& error) {
            return error.text();
        }
        return {};
    }
    /// All pixels hold the distance, within a few of the 2^24 steps of the depth buffer, which are 100 / 1
    /// * distance^2 / 100 wide.
    static void expectDistance(const QImage& image, float distance)
    {
        ASSERT_FALSE(image.isNull());
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                ASSERT_NEAR(distanceAt(image, x, y), distance, 4.0f * distance * distance / 16777216.0f)
                    << x << ' ' << y;
    }

    static constexpr QSize Size{32, 24};
};
