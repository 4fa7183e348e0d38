#include "tests/support/LogTrap.h"

#include <framework/ksp/Canceled.h>
#include <framework/ksp/StagedProgress.h>

#include <QtCore/QStringList>
#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <vector>

using ksp::StagedProgress;

namespace {

struct Shown
{
    std::vector<double> percentages;
    QStringList titles;
    StagedProgress::Sink sink()
    {
        return [this](double percentage, const QString& title) {
            percentages.push_back(percentage);
            titles << title;
        };
    }
    double last() const { return percentages.empty() ? 0.0 : percentages.back(); }
};

} // namespace

TEST(StagedProgress, stageCoversItsWeightOfTheParentFromWhereThatStands)
{
    Shown shown;
    StagedProgress whole(shown.sink());
    whole.setPercentage(10);
    StagedProgress stage = whole.startStage(40);
    stage.setPercentage(50);
    EXPECT_DOUBLE_EQ(whole.getPercentage(), 30); // 10 + 40 * 0.5
    EXPECT_DOUBLE_EQ(stage.getPercentage(), 50);
    EXPECT_DOUBLE_EQ(shown.last(), 30);
}

TEST(StagedProgress, stagesNest)
{
    Shown shown;
    StagedProgress whole(shown.sink());
    StagedProgress outer = whole.startStage(50);
    outer.setPercentage(20);
    StagedProgress inner = outer.startStage(40);
    inner.setPercentage(25);
    EXPECT_DOUBLE_EQ(outer.getPercentage(), 30);
    EXPECT_DOUBLE_EQ(shown.last(), 15);
}

TEST(StagedProgress, closingMovesTheParentToTheEndOfTheStage)
{
    StagedProgress whole = StagedProgress::dummy();
    StagedProgress stage = whole.startStage(40);
    stage.setPercentage(3);
    stage.close();
    EXPECT_DOUBLE_EQ(whole.getPercentage(), 40);
    stage.close();
    stage.setPercentage(100);
    EXPECT_DOUBLE_EQ(whole.getPercentage(), 40);
}

TEST(StagedProgress, lastHandleCloses)
{
    StagedProgress whole = StagedProgress::dummy();
    {
        StagedProgress copy = whole;
        {
            StagedProgress stage = whole.startStage(30);
            copy = stage;
        }
        EXPECT_DOUBLE_EQ(whole.getPercentage(), 0);
        copy.setPercentage(50);
        EXPECT_DOUBLE_EQ(whole.getPercentage(), 15);
    }
    EXPECT_DOUBLE_EQ(whole.getPercentage(), 30);
}

TEST(StagedProgress, stageWorksOnWhenItsParentsHandleIsGone)
{
    Shown shown;
    StagedProgress whole(shown.sink());
    StagedProgress inner = whole.startStage(50).startStage(50);
    inner.setPercentage(100);
    EXPECT_DOUBLE_EQ(shown.last(), 25);
    inner = StagedProgress::dummy();
    EXPECT_DOUBLE_EQ(shown.last(), 50);
}

TEST(StagedProgress, reportsThroughStagesOfAClosedParentAreIgnored)
{
    StagedProgress whole = StagedProgress::dummy();
    StagedProgress outer = whole.startStage(20);
    StagedProgress inner = outer.startStage(50);
    outer.close();
    inner.setPercentage(80);
    EXPECT_DOUBLE_EQ(inner.getPercentage(), 0);
    EXPECT_DOUBLE_EQ(whole.getPercentage(), 20);
}

TEST(StagedProgress, weightIsClampedToWhatIsLeft)
{
    StagedProgress whole = StagedProgress::dummy();
    whole.setPercentage(80);
    whole.startStage(50).close();
    EXPECT_DOUBLE_EQ(whole.getPercentage(), 100);
    whole = StagedProgress::dummy();
    whole.setPercentage(80);
    whole.startStage(-5).close();
    whole.startStage(std::nan("")).close();
    EXPECT_DOUBLE_EQ(whole.getPercentage(), 80);
}

TEST(StagedProgress, percentagesNeverGoBackAndStayWithinTheirRange)
{
    Shown shown;
    StagedProgress whole(shown.sink());
    for (double percentage : {30.0, 10.0, -5.0, std::nan(""), 60.0, 1e300, 20.0})
        whole.setPercentage(percentage);
    StagedProgress stage = whole.startStage(10);
    stage.setPercentage(50);
    ASSERT_EQ(shown.percentages, (std::vector<double>{30, 60, 100}));
}

TEST(StagedProgress, setDoneIsAFraction)
{
    StagedProgress whole = StagedProgress::dummy();
    whole.setDone(0, 0);
    EXPECT_DOUBLE_EQ(whole.getPercentage(), 0);
    whole.setDone(1, 8);
    EXPECT_DOUBLE_EQ(whole.getPercentage(), 12.5);
    whole.setDone(9, 8);
    EXPECT_DOUBLE_EQ(whole.getPercentage(), 100);
}

TEST(StagedProgress, sinkHearsOnlyWhatCanBeSeen)
{
    Shown shown;
    StagedProgress whole(shown.sink());
    for (int i = 0; i <= 1000000; ++i)
        whole.setDone(i, 1000000);
    EXPECT_EQ(shown.percentages.size(), 1000u); // every tenth of a percent
    EXPECT_DOUBLE_EQ(shown.last(), 100);
}

TEST(StagedProgress, sinkHearsTheEndEvenWhenItIsNear)
{
    Shown shown;
    StagedProgress whole(shown.sink());
    whole.setPercentage(99.96);
    whole.close();
    EXPECT_EQ(shown.percentages, (std::vector<double>{99.96, 100}));
}

TEST(StagedProgress, titlesFollowTheStageThatReports)
{
    Shown shown;
    StagedProgress whole(shown.sink(), "whole");
    StagedProgress outer = whole.startStage(50, "outer");
    StagedProgress unnamed = outer.startStage(50);
    unnamed.setPercentage(100);
    unnamed.close();
    outer.close();
    EXPECT_EQ(shown.titles, (QStringList{"whole", "outer", "outer", "whole"}));
    EXPECT_EQ(shown.percentages, (std::vector<double>{0, 0, 25, 50}));
}

TEST(StagedProgress, cancelHoldsForTheWholeTree)
{
    StagedProgress whole = StagedProgress::dummy();
    StagedProgress early = whole.startStage(10);
    StagedProgress inner = early.startStage(10);
    EXPECT_FALSE(whole.isCanceled());
    EXPECT_NO_THROW(whole.throwIfCanceled());
    inner.cancel();
    EXPECT_TRUE(whole.isCanceled());
    EXPECT_TRUE(early.isCanceled());
    EXPECT_TRUE(whole.startStage(5).isCanceled());
    EXPECT_THROW(early.throwIfCanceled(), ksp::Canceled);
}

TEST(StagedProgress, dummiesAreIndependent)
{
    StagedProgress a = StagedProgress::dummy();
    StagedProgress b = StagedProgress::dummy();
    a.cancel();
    a.setPercentage(50);
    EXPECT_FALSE(b.isCanceled());
    EXPECT_DOUBLE_EQ(b.getPercentage(), 0);
}

TEST(StagedProgress, sinkMayCancel)
{
    std::function<void()> stop;
    StagedProgress whole([&](double, const QString&) { stop(); });
    stop = [&] { whole.cancel(); };
    whole.setPercentage(1);
    EXPECT_TRUE(whole.isCanceled());
}

TEST(StagedProgress, sinkThatThrowsIsLoggedOnceAndNotCalledAgain)
{
    int calls = 0;
    StagedProgress whole([&](double percentage, const QString&) {
        ++calls;
        if (percentage > 5.0) throw std::runtime_error("no window");
    });
    EXPECT_NO_THROW(whole.setPercentage(1));
    EXPECT_NO_THROW(whole.startStage(10).close());
    EXPECT_NO_THROW(whole.setPercentage(50));
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(LogTrap::take(), QStringList{"Progress is shown no more: no window"});
    EXPECT_DOUBLE_EQ(whole.getPercentage(), 50);
    EXPECT_FALSE(whole.isCanceled());
}

TEST(StagedProgress, sinkThatThrowsDoesNotEndTheProgramWhenAHandleGoes)
{
    bool thrown = false;
    StagedProgress whole([&](double, const QString&) {
        thrown = true;
        throw 5;
    });
    {
        StagedProgress stage = whole.startStage(10);
    }
    EXPECT_TRUE(thrown);
    EXPECT_DOUBLE_EQ(whole.getPercentage(), 10);
    EXPECT_EQ(LogTrap::take(), QStringList{"Progress is shown no more: unknown exception"});
}
