#include "step/TextRepair.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace QuorlanProgram::Import {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using testing::UnorderedElementsAre;

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
    EXPECT_EQ(CheckText(whole.substr(0, whole.size() - 3)), TextProblem::kNone);
    EXPECT_EQ(CheckText(whole.substr(0, whole.size() / 2)), TextProblem::kNoIfcSchema);
}

TEST(TextRepair, NothingToRepairLeavesEveryByte) {
    auto const text = MakeFile("IFC4", "#1=IFCPOLYLINE((#2,#3));\n/* IFCINDEXEDPOLYCURVE */\n#2=IFCLABEL('IFC4X3');");
    auto const repaired = RepairText(text, Chords());
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
        Chords());
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
                                     Chords());
    EXPECT_EQ(repaired.curvesRewritten, 1u);
    EXPECT_THAT(repaired.text, HasSubstr("((1.5E-10,0.,0.))"));
    EXPECT_THAT(repaired.text, HasSubstr("((1.,2.,3.))"));
}

TEST(TextRepair, ACurveThatIsNotUnderstoodIsKeptAndCounted) {
    auto const text = MakeFile("IFC4", "#1=IFCINDEXEDPOLYCURVE(#99,$,.F.);\n#2=IFCINDEXEDPOLYCURVE($,$,.F.);");
    auto const repaired = RepairText(text, Chords());
    EXPECT_EQ(repaired.text, text);
    EXPECT_EQ(repaired.curvesKept, 2u);
}

TEST(TextRepair, ALaterSchemaOfTheFamilyIsReadAsIfc4) {
    auto const repaired = RepairText(MakeFile("IFC4X3_ADD2", "#1=IFCALIGNMENT();"), Chords());
    EXPECT_EQ(repaired.schema, "IFC4X3_ADD2");
    EXPECT_TRUE(repaired.schemaReplaced);
    EXPECT_EQ(repaired.text, MakeFile("IFC4", "#1=IFCALIGNMENT();"));
    EXPECT_FALSE(RepairText(MakeFile("IFC2X3", ""), Chords()).schemaReplaced);
}

TEST(TextRepair, ListsEveryInstanceWithItsClassAndPlace) {
    auto const text = MakeFile("IFC4", "#5=IfcWall();#2=IFCDOOR();#9=IFCWALL();");
    auto const repaired = RepairText(text, Chords());
    EXPECT_THAT(repaired.classes, ElementsAre("IFCWALL", "IFCDOOR"));
    ASSERT_EQ(repaired.instances.size(), 3u);
    EXPECT_EQ(repaired.instances[1].id, 2u);
    EXPECT_EQ(repaired.instances[1].classIndex, 1u);
    EXPECT_EQ(repaired.instances[2].classIndex, 0u);
    auto const& door = repaired.instances[1];
    EXPECT_EQ(text.substr(door.begin, door.end - door.begin), "#2=IFCDOOR();");
}

TEST(TextRepair, AValueWithoutContentLosesItsType) {
    auto const repaired = RepairText(
        MakeFile("IFC4", "#1=IFCPROPERTYSINGLEVALUE('IFCLABEL($)',$,IFCLABEL($),$);\n#2=IFCPOLYLINE(($));"), Chords());
    EXPECT_EQ(repaired.text, MakeFile("IFC4", "#1=IFCPROPERTYSINGLEVALUE('IFCLABEL($)',$,$,$);\n#2=IFCPOLYLINE(($));"));
    EXPECT_EQ(repaired.typedNulls, 1u);
}

TEST(TextRepair, ANumberBeyondTheRangeOfADoubleIsNoNumber) {
    auto const repaired = RepairText(
        MakeFile("IFC4",
                 "#1=IFCCARTESIANPOINT((1.E400,-1.5E-3,1.E300));\n#2=IFCCARTESIANPOINT((1.#QNAN, 2.,'1.E400'));"),
        Chords());
    EXPECT_EQ(
        repaired.text,
        MakeFile("IFC4", "#1=IFCCARTESIANPOINT((NAN,-1.5E-3,1.E300));\n#2=IFCCARTESIANPOINT((NAN, 2.,'1.E400'));"));
    EXPECT_EQ(repaired.absurdNumbers, 2u);
}

TEST(TextRepair, AnElementOfALaterSchemaBecomesAProxy) {
    auto const repaired = RepairText(
        MakeFile("IFC4X3", "#1=IfcPavement('g',$,$,$,$,#2,#3,$,.FLEXIBLE.);\n#2=IFCKERB('too few');"), Chords());
    EXPECT_EQ(repaired.text,
              MakeFile("IFC4", "#1=IFCBUILDINGELEMENTPROXY('g',$,$,$,$,#2,#3,$,$);\n#2=IFCKERB('too few');"));
    EXPECT_THAT(repaired.standIns, testing::ElementsAre(testing::Pair(1u, "IfcPavement")));
    EXPECT_TRUE(RepairText(MakeFile("IFC4", "#1=IFCKERB('g',$,$,$,$,$,$,$,$);"), Chords()).standIns.empty());
}

TEST(TextRepair, AFileThatIsCutOffEndsBehindItsLastWholeInstance) {
    auto const whole = MakeFile("IFC4", "#1=IFCLABEL('a');\n#2=IFCLABEL('b;');");
    auto const repaired = RepairText(whole.substr(0, whole.find("b;")), Chords());
    EXPECT_TRUE(repaired.isCutOff);
    EXPECT_EQ(repaired.text, MakeFile("IFC4", "#1=IFCLABEL('a');"));
    EXPECT_FALSE(RepairText(whole, Chords()).isCutOff);
}

TEST(TextRepair, AReferenceThatClosesACircleIsCut) {
    auto const repaired = RepairText(MakeFile("IFC4", "#1=IFCA(#2,'#1');\n#2=IFCB((#3));\n#3=IFCC(#1);"), Chords());
    EXPECT_EQ(repaired.text, MakeFile("IFC4", "#1=IFCA(#2,'#1');\n#2=IFCB((#3));\n#3=IFCC($);"));
    EXPECT_THAT(repaired.faults.circles, SizeIs(1));
    EXPECT_THAT(repaired.faults.damaged, UnorderedElementsAre(1u, 2u, 3u));
}

TEST(TextRepair, AnArcOfAnIndexedCurveIsKeptBesideItsPolyline) {
    auto const repaired = RepairText(MakeFile("IFC4",
                                              "#7=IFCCARTESIANPOINTLIST2D(((0.,0.),(1.,1.),(2.,0.)));\n"
                                              "#9=IFCINDEXEDPOLYCURVE(#7,(IFCARCINDEX((1,2,3))),.F.);"),
                                     Chords());
    ASSERT_EQ(repaired.arcs.count(9), 1u);
    EXPECT_TRUE(repaired.arcs.at(9).front().isArc);
}

TEST(TextRepair, TheChordsOfAnArcFollowTheUnitOfTheFile) {
    auto const count = [](std::string const& prefix) {
        auto const repaired =
            RepairText(MakeFile("IFC4", "#1=IFCUNITASSIGNMENT((#2));\n#2=IFCSIUNIT(*,.LENGTHUNIT.," + prefix +
                                            ",.METRE.);\n"
                                            "#7=IFCCARTESIANPOINTLIST2D(((-1000.,0.),(0.,1000.),"
                                            "(1000.,0.)));\n"
                                            "#9=IFCINDEXEDPOLYCURVE(#7,(IFCARCINDEX((1,2,3))),.F.);"),
                       Chords());
        return std::count(repaired.text.begin(), repaired.text.end(), '\n');
    };
    EXPECT_LT(count(".MILLI."), count("$"));
}

}  // namespace
}  // namespace QuorlanProgram::Import
