#include "TextRepair.h"

#include <gmock/gmock.h>

namespace QuorlanProgram::Import {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;

std::string MakeFile(std::string const& schema, std::string const& data) {
    return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_SCHEMA(('" + schema + "'));\nENDSEC;\nDATA;\n" +
           data + "\nENDSEC;\nEND-ISO-10303-21;\n";
}

TEST(TextRepair, AWholeFileHasNoProblem) {
    EXPECT_EQ(CheckText(MakeFile("IFC4", "#1=IFCLABEL('a');")), TextProblem::kNone);
    EXPECT_EQ(CheckText("\xEF\xBB\xBF \r\n" + MakeFile("ifc2x3", "") + "\r\n"), TextProblem::kNone);
}

TEST(TextRepair, EachProblemIsToldFromTheOthers) {
    EXPECT_EQ(CheckText(""), TextProblem::kEmpty);
    EXPECT_EQ(CheckText(" \n"), TextProblem::kEmpty);
    EXPECT_EQ(CheckText("QLN8 and more"), TextProblem::kNoStepFile);
    EXPECT_EQ(CheckText(MakeFile("CONFIG_CONTROL_DESIGN", "")), TextProblem::kNoIfcSchema);
    EXPECT_EQ(CheckText("ISO-10303-21;\nHEADER;\nENDSEC;\nEND-ISO-10303-21;"), TextProblem::kNoIfcSchema);
    auto const whole = MakeFile("IFC4", "#1=IFCLABEL('a');");
    EXPECT_EQ(CheckText(whole.substr(0, whole.size() - 3)), TextProblem::kTruncated);
    EXPECT_EQ(CheckText(whole.substr(0, whole.size() / 2)), TextProblem::kNoIfcSchema);
}

TEST(TextRepair, NothingToRepairLeavesEveryByte) {
    auto const text = MakeFile("IFC4", "#1=IFCPOLYLINE((#2,#3));\n/* IFCINDEXEDPOLYCURVE */\n#2=IFCLABEL('IFC4X3');");
    auto const repaired = RepairText(text, 24);
    EXPECT_EQ(repaired.text, text);
    EXPECT_EQ(repaired.schema, "IFC4");
    EXPECT_FALSE(repaired.schemaReplaced);
    EXPECT_EQ(repaired.curvesRewritten, 0u);
}

TEST(TextRepair, AnIndexedCurveBecomesAPolylineOverNewPoints) {
    auto const repaired = RepairText(
        MakeFile("IFC4",
                 "#7=IFCCARTESIANPOINTLIST2D(((0.,0.),(1.,0.),(1.,0.25)));\n"
                 "#9=IFCINDEXEDPOLYCURVE(#7,(IFCLINEINDEX((1,2)),IFCLINEINDEX((2,3)),IFCLINEINDEX((3,1))),.F.);\n"
                 "#8=IFCLABEL('after');"),
        24);
    EXPECT_EQ(repaired.curvesRewritten, 1u);
    EXPECT_THAT(repaired.text, HasSubstr("#10=IFCCARTESIANPOINT((0.,0.));\n#11=IFCCARTESIANPOINT((1.,0.));\n"
                                         "#12=IFCCARTESIANPOINT((1.,0.25));\n"));
    EXPECT_THAT(repaired.text, HasSubstr("#9=IFCPOLYLINE((#10,#11,#12,#10));\n#8=IFCLABEL('after');"));
    EXPECT_THAT(repaired.text, Not(HasSubstr("IFCINDEXEDPOLYCURVE")));
}

TEST(TextRepair, APointListThatFollowsItsCurveIsFound) {
    auto const repaired = RepairText(MakeFile("IFC4",
                                              "#1=IfcIndexedPolyCurve(#2,$,$);\n"
                                              "#2=IfcCartesianPointList3D(((1.5E-10,0.,0.),(1.,2.,3.)));"),
                                     24);
    EXPECT_EQ(repaired.curvesRewritten, 1u);
    EXPECT_THAT(repaired.text, HasSubstr("((1.5E-10,0.,0.))"));
    EXPECT_THAT(repaired.text, HasSubstr("((1.,2.,3.))"));
}

TEST(TextRepair, ACurveThatIsNotUnderstoodIsKeptAndCounted) {
    auto const text = MakeFile("IFC4", "#1=IFCINDEXEDPOLYCURVE(#99,$,.F.);\n#2=IFCINDEXEDPOLYCURVE($,$,.F.);");
    auto const repaired = RepairText(text, 24);
    EXPECT_EQ(repaired.text, text);
    EXPECT_EQ(repaired.curvesKept, 2u);
}

TEST(TextRepair, ALaterSchemaOfTheFamilyIsReadAsIfc4) {
    auto const repaired = RepairText(MakeFile("IFC4X3_ADD2", "#1=IFCKERB();"), 24);
    EXPECT_EQ(repaired.schema, "IFC4X3_ADD2");
    EXPECT_TRUE(repaired.schemaReplaced);
    EXPECT_EQ(repaired.text, MakeFile("IFC4", "#1=IFCKERB();"));
    EXPECT_FALSE(RepairText(MakeFile("IFC2X3", ""), 24).schemaReplaced);
}

TEST(TextRepair, ListsTheClassOfEveryInstance) {
    auto const repaired = RepairText(MakeFile("IFC4", "#5=IfcWall();#2=IFCDOOR();#9=IFCWALL();"), 24);
    EXPECT_THAT(repaired.classes, ElementsAre("IFCWALL", "IFCDOOR"));
    EXPECT_THAT(repaired.ids, ElementsAre(Pair(5u, 0u), Pair(2u, 1u), Pair(9u, 0u)));
}

}  // namespace
}  // namespace QuorlanProgram::Import
