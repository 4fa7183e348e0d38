#include "../ksp/ArchiveSamples.h"
#include "FenceShapes.h"

#include <Viewer3dModule/fences/SphereFence.h>

#include <framework/gmx/IFence3D.h>
#include <framework/ksp/CFileException.h>
#include <framework/ksp/CQtArchive.h>

#include <QtCore/QtEndian>

#include <cstring>
#include <limits>

namespace {

using ksp::CFileException;

template <typename Fence>
QByteArray stored(Fence fence)
{
    CQtArchive archive;
    fence.serialize(archive);
    return archive.data();
}

template <typename Fence>
void load(Fence& fence, const QByteArray& bytes)
{
    CQtArchive archive(bytes);
    fence.serialize(archive);
}

/// Whether the bytes were refused, which leaves the fence as it was.
template <typename Fence>
bool isRefused(const Fence& before, const QByteArray& bytes, int* code = nullptr)
{
    Fence fence = before;
    try {
        load(fence, bytes);
        return false;
    } catch (const CFileException& error) {
        if (code) *code = error.code();
    }
    EXPECT_EQ(stored(fence), stored(before));
    return true;
}

Frustum3D sampleFrustum()
{
    Dice dice(1);
    return frustum(Frame::random(dice, farAway), randomRing(dice, 6, 1.0), 2.0, 30.0, 0.4);
}

Prism3D samplePrism()
{
    Dice dice(2);
    return prism(Frame::random(dice, farAway), randomRing(dice, 6, 10.0), 30.0);
}

SphereFence sampleSphere()
{
    SphereFence fence;
    fence.setFence(farAway, 12.5);
    return fence;
}

/// Fields written by hand.
class HandMade
{
public:
    HandMade() { m_archive.beginObject(); }
    HandMade& add(std::initializer_list<double> numbers)
    {
        for (const double number : numbers)
            m_archive.writeDouble(number);
        return *this;
    }
    HandMade& add(const glm::dmat4& matrix)
    {
        for (glm::length_t i = 0; i < 16; ++i)
            m_archive.writeDouble(matrix[i / 4][i % 4]);
        return *this;
    }
    HandMade& add(const std::vector<glm::vec2>& polygon)
    {
        m_archive.writeUInt(quint32(polygon.size()));
        for (const glm::vec2& point : polygon) {
            m_archive.writeFloat(point.x);
            m_archive.writeFloat(point.y);
        }
        return *this;
    }
    CQtArchive& archive() { return m_archive; }
    QByteArray bytes(unsigned version = 1)
    {
        if (version > 0) m_archive.endObject(version);
        m_archive.finish();
        return m_archive.data();
    }

private:
    CQtArchive m_archive;
};

const std::vector<glm::vec2> triangle = {{0.0f, 0.0f}, {1.0f, 0.0f}, {0.0f, 1.0f}, {0.0f, 0.0f}};

QByteArray frustumRecord(std::initializer_list<double> leading, const glm::dmat4& matrix,
                         std::initializer_list<double> planes, const std::vector<glm::vec2>& polygon)
{
    return HandMade().add(leading).add(matrix).add(planes).add(polygon).bytes();
}

QByteArray prismRecord(std::initializer_list<double> numbers, const std::vector<glm::vec2>& polygon)
{
    return HandMade().add(numbers).add(polygon).bytes();
}

void expectSame(const Frustum3D& actual, const Frustum3D& expected)
{
    EXPECT_EQ(actual.eye(), expected.eye());
    EXPECT_EQ(actual.direction(), expected.direction());
    EXPECT_EQ(actual.fromWorldMatrix(), expected.fromWorldMatrix());
    EXPECT_EQ(actual.zNear(), expected.zNear());
    EXPECT_EQ(actual.zFar(), expected.zFar());
    EXPECT_EQ(actual.tanHalfFovy(), expected.tanHalfFovy());
    EXPECT_EQ(actual.fence(), expected.fence());
    EXPECT_EQ(actual.getFarFence(), expected.getFarFence());
}

void expectSame(const Prism3D& actual, const Prism3D& expected)
{
    EXPECT_EQ(actual.matrix(), expected.matrix());
    EXPECT_EQ(actual.zFar(), expected.zFar());
    EXPECT_EQ(actual.fence(), expected.fence());
    EXPECT_EQ(actual.getRay(), expected.getRay());
}

TEST(FenceArchive, FrustumsComeBackBitByBit)
{
    Dice dice(3);
    int fences = 0;
    for (; fences < 300; ++fences) {
        Frustum3D fence = frustum(Frame::random(dice, fences % 2 ? farAway : dice.point(-1.0, 1.0)),
                                  randomRing(dice, dice.between(3, 50), 1.0), dice.between(0.0, 9.0),
                                  dice.between(-1.0, 99.0), dice.between(0.01, 2.0));
        if (fences % 3 == 0) fence.movePlane(dice.point(-10.0, 10.0), dice.oneIn(2));
        if (fences % 10 == 0) fence.reset();
        Frustum3D read = sampleFrustum();
        load(read, stored(fence));
        expectSame(read, fence);
    }
    std::printf("%d frustums read as they were stored\n", fences);
}

TEST(FenceArchive, PrismsComeBackBitByBit)
{
    Dice dice(4);
    int fences = 0;
    for (; fences < 300; ++fences) {
        Prism3D fence = prism(Frame::random(dice, fences % 2 ? farAway : dice.point(-1.0, 1.0)),
                              randomRing(dice, dice.between(3, 50), 10.0), dice.between(-1.0, 99.0));
        if (fences % 3 == 0) fence.movePlane(dice.point(-10.0, 10.0), dice.oneIn(2));
        if (fences % 10 == 0) fence.reset();
        Prism3D read = samplePrism();
        load(read, stored(fence));
        expectSame(read, fence);
    }
    std::printf("%d prisms read as they were stored\n", fences);
}

TEST(FenceArchive, SpheresComeBackWhateverTheirNumbers)
{
    const double numbers[] = {0.0,       -0.0, 1.5, -2.7e6, 1e-310, std::numeric_limits<double>::infinity(),
                              notANumber};
    for (const double x : numbers)
        for (const double radius : numbers) {
            SphereFence fence, read = sampleSphere();
            fence.setFence({x, 2.0, 3.0}, radius);
            load(read, stored(fence));
            EXPECT_EQ(stored(read), stored(fence));
            EXPECT_EQ(read.empty(), std::isnan(x));
        }
}

TEST(FenceArchive, NewFencesComeBack)
{
    Frustum3D swept = sampleFrustum();
    load(swept, stored(Frustum3D()));
    expectSame(swept, Frustum3D());
    Prism3D straight = samplePrism();
    load(straight, stored(Prism3D()));
    expectSame(straight, Prism3D());
    SphereFence ball = sampleSphere();
    load(ball, stored(SphereFence()));
    EXPECT_EQ(ball.getCenter(), glm::dvec3(0.0));
    EXPECT_EQ(ball.getRadius(), 0.0);
}

TEST(FenceArchive, AFrustumWithAMatrixWithoutInverseComesBack)
{
    Frustum3D fence = sampleFrustum(), read;
    fence.setFromWorldMatrix(glm::dmat4(notANumber));
    load(read, stored(fence));
    EXPECT_EQ(stored(read), stored(fence));
    EXPECT_EQ(read.fence(), fence.fence());
}

TEST(FenceArchive, AFrustumsFieldsAreInOrder)
{
    const glm::dmat4 matrix({1.0, 0.0, 0.0, 0.0}, {0.0, 2.0, 0.0, 0.0}, {0.0, 0.0, 4.0, 0.0},
                            {7.0, 8.0, 9.0, 1.0});
    const QByteArray record =
        frustumRecord({1.0, 2.0, 3.0, 4.0, 5.0, 6.0}, matrix, {0.5, 20.0, 0.25}, triangle);
    Frustum3D fence;
    load(fence, record);
    EXPECT_EQ(fence.eye(), glm::dvec3(1.0, 2.0, 3.0));
    EXPECT_EQ(fence.direction(), glm::dvec3(4.0, 5.0, 6.0));
    EXPECT_EQ(fence.fromWorldMatrix(), matrix);
    EXPECT_EQ(fence.zNear(), 0.5);
    EXPECT_EQ(fence.zFar(), 20.0);
    EXPECT_EQ(fence.tanHalfFovy(), 0.25);
    EXPECT_EQ(fence.fence(), triangle);
    expectNear(fence.getNearFence()[1], {(0.125 - 7.0), -4.0, (0.5 - 9.0) / 4.0}, 1e-12);
    EXPECT_EQ(stored(fence), record);
}

TEST(FenceArchive, APrismsFieldsAreInOrder)
{
    const QByteArray record = prismRecord({1.0, 2.0, 3.0, 0.0, 1.0, 0.0, 5.0}, triangle);
    Prism3D fence;
    load(fence, record);
    EXPECT_EQ(fence.matrix(), Prism3D::lookAt({1.0, 2.0, 3.0}, {0.0, 1.0, 0.0}));
    EXPECT_EQ(fence.zFar(), 5.0);
    EXPECT_EQ(fence.fence(), triangle);
    EXPECT_EQ(stored(fence), record);
}

TEST(FenceArchive, ASpheresFieldsAreInOrder)
{
    const QByteArray record = HandMade().add({1.0, 2.0, 3.0, 4.0}).bytes();
    SphereFence fence;
    load(fence, record);
    EXPECT_EQ(fence.getCenter(), glm::dvec3(1.0, 2.0, 3.0));
    EXPECT_EQ(fence.getRadius(), 4.0);
    EXPECT_EQ(stored(fence), record);
}

TEST(FenceArchive, WhatANewerVersionAddedIsSkipped)
{
    HandMade record;
    record.add({1.0, 2.0, 3.0, 4.0});
    record.archive().checkVersion(7);
    record.add({99.0, 98.0});
    CQtArchive archive(record.bytes());
    SphereFence fence;
    fence.serialize(archive);
    EXPECT_EQ(fence.getRadius(), 4.0);
    EXPECT_EQ(archive.remaining(), 0u);
}

TEST(FenceArchive, AVersionBeforeTheFirstIsRefused)
{
    int code = 0;
    EXPECT_TRUE(isRefused(sampleSphere(), HandMade().add({1.0, 2.0, 3.0, 4.0}).bytes(0), &code));
    EXPECT_EQ(code, CFileException::Version);
}

/// Cut off anywhere: the file, what the head says is there, and what the frame says is there.
template <typename Fence>
int refusedTruncations(const Fence& fence)
{
    const QByteArray bytes = stored(fence), payload = archivePayload(bytes);
    int refused = 0;
    for (int size = 0; size < bytes.size(); ++size)
        refused += isRefused(fence, bytes.left(size));
    EXPECT_EQ(refused, bytes.size());
    for (int size = 0; size < payload.size(); ++size) {
        QByteArray cut = payload.left(size);
        refused += isRefused(fence, sealArchive(cut));
        if (size < 8) continue;
        qToLittleEndian(quint32(size - 8), cut.data()); // a frame begins with the number of its bytes
        refused += isRefused(fence, sealArchive(cut));
    }
    EXPECT_EQ(refused, bytes.size() + 2 * payload.size() - 8);
    return refused;
}

TEST(FenceArchive, EveryTruncationIsRefused)
{
    const int refused = refusedTruncations(sampleFrustum()) + refusedTruncations(samplePrism()) +
                        refusedTruncations(sampleSphere());
    std::printf("%d truncations refused\n", refused);
}

/// With a right checksum: refused, or a fence that can be stored again and asked.
template <typename Fence>
void damageBytes(const Fence& fence, int& refused, int& read)
{
    const QByteArray payload = archivePayload(stored(fence));
    for (int i = 0; i < payload.size(); ++i)
        for (const int mask : {0x01, 0x10, 0x40, 0x80, 0x7f, 0xff}) {
            QByteArray damaged = payload;
            damaged[i] = char(damaged[i] ^ mask);
            if (isRefused(fence, sealArchive(damaged))) {
                ++refused;
                continue;
            }
            Fence other = fence;
            load(other, sealArchive(damaged));
            EXPECT_FALSE(isRefused(fence, stored(other)));
            other.contains(farAway);
            other.getIFence3D(glm::dmat4(1.0))->contains(farAway);
            ++read;
        }
}

TEST(FenceArchive, DamageWithARightChecksumIsRefusedOrHarmless)
{
    int refused = 0, read = 0;
    damageBytes(sampleFrustum(), refused, read);
    damageBytes(samplePrism(), refused, read);
    damageBytes(sampleSphere(), refused, read);
    EXPECT_GT(refused, 0);
    std::printf("%d damaged records refused, %d read as other fences\n", refused, read);
}

TEST(FenceArchive, AFrustumThatNoneCanBeIsRefused)
{
    const Frustum3D before = sampleFrustum();
    const glm::dmat4 one(1.0);
    const float bad = std::numeric_limits<float>::quiet_NaN();
    const std::initializer_list<double> zeros = {0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
    const auto planes = [&](std::initializer_list<double> numbers) {
        return isRefused(before, frustumRecord(zeros, one, numbers, triangle));
    };
    const auto polygon = [&](const std::vector<glm::vec2>& points) {
        int code = 0;
        const bool refused = isRefused(before, frustumRecord(zeros, one, {1.0, 2.0, 1.0}, points), &code);
        EXPECT_EQ(refused, code == CFileException::Damaged);
        return refused;
    };
    EXPECT_FALSE(planes({1.0, 2.0, 1.0}));
    EXPECT_FALSE(planes({1.0, -2.0, 1.0}));
    EXPECT_TRUE(planes({-1.0, 2.0, 1.0}));
    EXPECT_TRUE(planes({1.0, 2.0, 0.0}));
    EXPECT_TRUE(planes({1.0, 2.0, -1.0}));
    EXPECT_TRUE(planes({notANumber, 2.0, 1.0}));
    EXPECT_TRUE(planes({1.0, notANumber, 1.0}));
    EXPECT_TRUE(planes({1.0, 2.0, notANumber}));
    EXPECT_TRUE(isRefused(
        before, frustumRecord({0.0, notANumber, 0.0, 0.0, 0.0, 0.0}, one, {1.0, 2.0, 1.0}, triangle)));
    EXPECT_TRUE(isRefused(
        before, frustumRecord({0.0, 0.0, 0.0, 0.0, 0.0, notANumber}, one, {1.0, 2.0, 1.0}, triangle)));
    EXPECT_FALSE(polygon({}));
    EXPECT_TRUE(polygon({{0.0f, 0.0f}}));
    EXPECT_TRUE(polygon({{0.0f, 0.0f}, {1.0f, 0.0f}, {0.0f, 0.0f}}));
    EXPECT_TRUE(polygon({{0.0f, 0.0f}, {1.0f, 0.0f}, {0.0f, 1.0f}, {0.5f, 0.0f}}));
    EXPECT_TRUE(polygon({{0.0f, 0.0f}, {1.0f, bad}, {0.0f, 1.0f}, {0.0f, 0.0f}}));
    EXPECT_TRUE(polygon({{0.0f, bad}, {1.0f, 1.0f}, {0.0f, 1.0f}, {0.0f, bad}}));
}

TEST(FenceArchive, APrismThatNoneCanBeIsRefused)
{
    const Prism3D before = samplePrism();
    const auto refused = [&](std::initializer_list<double> numbers, const std::vector<glm::vec2>& points) {
        int code = 0;
        const bool isBad = isRefused(before, prismRecord(numbers, points), &code);
        EXPECT_EQ(isBad, code == CFileException::Damaged);
        return isBad;
    };
    EXPECT_FALSE(refused({1.0, 2.0, 3.0, 0.0, 1.0, 0.0, -5.0}, triangle));
    EXPECT_TRUE(refused({1.0, 2.0, 3.0, 0.0, 1.1, 0.0, 5.0}, triangle));
    EXPECT_TRUE(refused({1.0, 2.0, 3.0, 0.0, 0.0, 0.0, 5.0}, triangle));
    EXPECT_FALSE(refused({1.0, 2.0, 3.0, 0.0, 0.0, 0.0, 5.0}, {}));
    EXPECT_TRUE(refused({notANumber, 2.0, 3.0, 0.0, 1.0, 0.0, 5.0}, triangle));
    EXPECT_TRUE(refused({1.0, 2.0, 3.0, 0.0, notANumber, 0.0, 5.0}, {}));
    EXPECT_TRUE(refused({1.0, 2.0, 3.0, 0.0, 1.0, 0.0, notANumber}, triangle));
    EXPECT_TRUE(refused({1.0, 2.0, 3.0, 0.0, 1.0, 0.0, 5.0}, {{0.0f, 0.0f}, {1.0f, 0.0f}, {0.0f, 1.0f}}));
}

TEST(FenceArchive, HugeCountsAreRefusedWithoutTheirMemory)
{
    const QByteArray payload = archivePayload(
        frustumRecord({0.0, 0.0, 0.0, 0.0, 0.0, 0.0}, glm::dmat4(1.0), {1.0, 2.0, 1.0}, triangle));
    const int countAt = 8 + 8 * (6 + 16 + 3);
    for (const quint32 count : {5u, 0x00FFFFFFu, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        QByteArray damaged = payload;
        qToLittleEndian(count, damaged.data() + countAt);
        int code = 0;
        EXPECT_TRUE(isRefused(sampleFrustum(), sealArchive(damaged), &code));
        EXPECT_EQ(code, CFileException::Damaged);
    }
}

} // namespace
