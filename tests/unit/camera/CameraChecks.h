#pragma once

#include "CameraReference.h"

#include <gtest/gtest.h>

/// Coordinates of some hundreds, a few roundings each.
constexpr double cameraTolerance = 1e-10;

inline void expectNear(const glm::dvec3& actual, const reference::Vector& expected,
                       double tolerance = cameraTolerance)
{
    EXPECT_NEAR(actual.x, expected[0], tolerance);
    EXPECT_NEAR(actual.y, expected[1], tolerance);
    EXPECT_NEAR(actual.z, expected[2], tolerance);
}

inline void expectNear(const CCamera& actual, const reference::Camera& expected)
{
    {
        SCOPED_TRACE("position");
        expectNear(actual.getPosition(), expected.position);
    }
    {
        SCOPED_TRACE("view");
        expectNear(actual.getView(), expected.view);
    }
    {
        SCOPED_TRACE("up");
        expectNear(actual.getUp(), expected.up);
    }
    SCOPED_TRACE("center");
    expectNear(actual.getCenter(), expected.center, 0.0);
}

/// Bit by bit the same vectors.
inline void expectSame(const CCamera& actual, const CCamera& expected)
{
    EXPECT_EQ(actual.getPosition(), expected.getPosition());
    EXPECT_EQ(actual.getView(), expected.getView());
    EXPECT_EQ(actual.getUp(), expected.getUp());
    EXPECT_EQ(actual.getCenter(), expected.getCenter());
    EXPECT_EQ(actual.getScale(), expected.getScale());
    EXPECT_EQ(actual.getCamSpeed(), expected.getCamSpeed());
    EXPECT_EQ(actual.getRotateSpeed(), expected.getRotateSpeed());
}
