#include <gtest/gtest.h>

#include "workbench/desktop/windows/placement.h"

namespace {

std::string Places(const AxisPlan& plan, int length) {
    std::string text;
    for (const Placed& placed : plan.Place(length)) {
        text += std::to_string(placed.from) + ".." + std::to_string(placed.to) + " ";
    }
    return text;
}

// A label, a field behind it, a button behind that; below them a list across, and a button that must stay at the right.
std::vector<Span> Window() {
    return {
        {10, 40, 0, true, -3}, {50, 150, 0, true, 3}, {160, 190, 0, false, 0}, {10, 190, 0, true, 4}, {150, 190, 0, false, 0}};
}

} // namespace

TEST(Placement, ShowsALayoutAsItWasDrawn) {
    const AxisPlan plan(Window(), 200, 1.0);
    EXPECT_EQ(plan.Natural(), 200);
    EXPECT_EQ(Places(plan, 200), "10..40 50..150 160..190 10..190 150..190 ");
    EXPECT_EQ(Places(AxisPlan(Window(), 200, 1.5), 300), "15..60 75..225 240..285 15..285 225..285 ");
}

TEST(Placement, GivesFurtherLengthToWhatGainsByIt) {
    EXPECT_EQ(Places(AxisPlan(Window(), 200, 1.0), 260), "10..40 50..210 220..250 10..250 210..250 ");
}

TEST(Placement, PushesAwayWhatStandsBehindALongText) {
    std::vector<Span> spans = Window();
    spans[0].least = 70;
    const AxisPlan plan(spans, 200, 1.0);
    EXPECT_EQ(plan.Natural(), 240);
    EXPECT_EQ(Places(plan, 240), "10..80 90..190 200..230 10..230 190..230 ");
}

TEST(Placement, KeepsWhatWasNearlyOnOneLineOnOneLine) {
    const std::vector<Span> spans = {{8, 471, 0, true, 0}, {8, 472, 500, true, 0}};
    EXPECT_EQ(Places(AxisPlan(spans, 480, 1.0), 516), "8..508 8..508 ");
}

TEST(Placement, GetsSmallerOnlyAsFarAsTextsAllow) {
    std::vector<Span> spans = Window();
    spans[1].least = 90;
    const AxisPlan plan(spans, 200, 1.0);
    EXPECT_EQ(plan.Least(), 190);
    EXPECT_EQ(Places(plan, 100), Places(plan, 190)) << "never below the least";
    EXPECT_EQ(AxisPlan({{10, 40, 0, false, 0}}, 50, 1.0).Least(), 50);
    EXPECT_FALSE(AxisPlan({{10, 40, 0, true, 0}}, 50, 1.0).CanGrow()) << "a frame around nothing that gains";
}
