#include "step/StepReferences.h"

#include <gmock/gmock.h>

#include <string>

#include "step/StepUnits.h"

namespace QuorlanProgram::Import {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

ReferenceFaults Check(std::string const& text) { return CheckReferences(text, ReadStatements(text)); }

TEST(StepReferences, ASoundFileHasNoFaults) {
    auto const faults = Check("#1=A(#2,#3);#2=B((#3,#3));#3=C('#9',/* #8 */1.);");
    EXPECT_EQ(faults.missing, 0u);
    EXPECT_THAT(faults.circles, IsEmpty());
    EXPECT_THAT(faults.damaged, IsEmpty());
}

TEST(StepReferences, WhatReachesAMissingInstanceIsDamaged) {
    auto const faults = Check("#1=A(#2);#2=B(#3);#3=C(#4);#5=D(#6,#7);#6=E();");
    EXPECT_EQ(faults.missing, 2u);
    EXPECT_THAT(faults.damaged, UnorderedElementsAre(1u, 2u, 3u, 5u));
}

TEST(StepReferences, AReferenceToItselfIsACircle) {
    std::string const text = "#1=A(1,#1);";
    auto const faults = Check(text);
    ASSERT_THAT(faults.circles, ElementsAre(Pair(text.rfind("#1"), text.rfind(')'))));
}

TEST(StepReferences, TwoWaysToOneInstanceAreNoCircle) {
    EXPECT_THAT(Check("#1=A(#2,#3);#2=B(#4);#3=C(#4);#4=D();").circles, IsEmpty());
}

TEST(StepReferences, AChainAsLongAsAFileIsWalked) {
    std::string text;
    constexpr int kLength = 20000;
    for (int i = 1; i <= kLength; ++i)
        text += "#" + std::to_string(i) + "=A(#" + std::to_string(i % kLength + 1) + ");";
    auto const faults = Check(text);
    EXPECT_EQ(faults.circles.size(), 1u);
    EXPECT_EQ(faults.damaged.size(), static_cast<std::size_t>(kLength));
}

TEST(StepUnits, AreFoundThroughPrefixesAndConversions) {
    auto const find = [](std::string const& text) { return FindMetresPerUnit(ReadStatements(text)); };
    EXPECT_EQ(find("#1=IFCWALL();"), 0);
    EXPECT_EQ(find("#1=IFCUNITASSIGNMENT((#2,#3));#2=IFCSIUNIT(*,.AREAUNIT.,$,.SQUARE_METRE.);"
                   "#3=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);"),
              0.001);
    EXPECT_EQ(find("#1=IFCUNITASSIGNMENT((#2));#2=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);"), 1);
    EXPECT_DOUBLE_EQ(find("#1=IFCUNITASSIGNMENT((#2));#2=IFCCONVERSIONBASEDUNIT(#9,.LENGTHUNIT.,'INCH',#3);"
                          "#3=IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(25.4),#4);"
                          "#4=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);"),
                     0.0254);
    EXPECT_EQ(find("#1=IFCUNITASSIGNMENT((#2));#2=IFCCONVERSIONBASEDUNIT(#9,.LENGTHUNIT.,'X',#3);"
                   "#3=IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(2.),#2);"),
              0);
}

}  // namespace
}  // namespace QuorlanProgram::Import
