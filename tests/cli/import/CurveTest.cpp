#include <gmock/gmock.h>

#include <cmath>

#include "ImportedModel.h"
#include "SmallIfc.h"

/// Axis and annotation representations, imported as line graphics.
namespace Quorlan::Testing {
namespace {

using testing::ElementsAre;
using testing::Pair;
using testing::SizeIs;

constexpr double kPi = 3.14159265358979323846;

class ImportedCurve : public testing::Test {
protected:
    ImportedModel Import() const {
        QuorlanProgram::Import::ImportOptions options;
        options.curveNames = {"Axis", "Annotation"};
        return ImportedModel(ifc_.GetText(), options);
    }

    static GraphicsContainer GetGraphics(ImportedModel const& model, std::uint32_t instance) {
        GraphicsContainer graphics;
        EXPECT_TRUE(model.GetGeometry().GetGraphicsContainer(graphics, model.GetInstance(instance).definitionIndex));
        return graphics;
    }

    std::string AddCircle(double radius, double x) {
        return ifc_.Add("IFCCIRCLE(" + ifc_.AddAxes(x, 0, 0) + "," + std::to_string(radius) + ")");
    }

    std::string AddAxis(std::string const& items) { return ifc_.AddShape(items, "Axis"); }

    SmallIfc ifc_;
};

TEST_F(ImportedCurve, AreLeftOutUnlessAskedFor) {
    auto const line = ifc_.Add("IFCPOLYLINE((" + ifc_.AddPoint(0, 0, 0) + "," + ifc_.AddPoint(1000, 0, 0) + "))");
    ifc_.AddWall(1, AddAxis(line), "$");
    EXPECT_EQ(ImportedModel(ifc_.GetText()).GetReader().GetEntities().GetCount(), 0u);
    auto const model = Import();
    EXPECT_EQ(model.GetReader().GetEntities().GetCount(), 1u);
    EXPECT_EQ(model.GetLayer(0), "Axis");
    auto const graphics = GetGraphics(model, 0);
    ASSERT_THAT(graphics.lines, SizeIs(1));
    EXPECT_DOUBLE_EQ(graphics.lines[0].end.x, 1);
    EXPECT_THAT(graphics.arcs, SizeIs(0));
    EXPECT_EQ(model.GetReport().CountWarnings(), 0u);
}

TEST_F(ImportedCurve, ACircleIsAnArcAllTheWayRound) {
    ifc_.AddWall(1, AddAxis(AddCircle(500, 2000)), "$");
    auto const graphics = GetGraphics(Import(), 0);
    ASSERT_THAT(graphics.arcs, SizeIs(1));
    EXPECT_NEAR(graphics.arcs[0].radius, 0.5, 1e-6);
    EXPECT_NEAR(graphics.arcs[0].sweepAngle, 2 * kPi, 1e-6);
    EXPECT_NEAR(graphics.arcs[0].center.x, 2, 1e-6);
}

TEST_F(ImportedCurve, ATrimmedCircleIsAnArcInTheSenseItIsDrawn) {
    auto const circle = AddCircle(1000, 0);
    auto const trimmed = [&](std::string const& sense) {
        return ifc_.Add("IFCTRIMMEDCURVE(" + circle + ",(IFCPARAMETERVALUE(0.)),(IFCPARAMETERVALUE(1.5)),." + sense +
                        ".,.PARAMETER.)");
    };
    ifc_.AddWall(1, AddAxis(trimmed("T")), "$");
    ifc_.AddWall(2, AddAxis(trimmed("F")), "$");
    auto const model = Import();
    auto const forward = GetGraphics(model, 0).arcs.at(0);
    EXPECT_NEAR(forward.sweepAngle, 1.5, 1e-6);
    EXPECT_NEAR(forward.axis.z, 1, 1e-6);
    auto const backward = GetGraphics(model, 1).arcs.at(0);
    EXPECT_NEAR(backward.sweepAngle, 2 * kPi - 1.5, 1e-6);
    EXPECT_NEAR(backward.axis.z, -1, 1e-6);
}

TEST_F(ImportedCurve, ATrimmedCurveTakesThePointsThatItPrefers) {
    auto const circle = AddCircle(1000, 0);
    auto const line = ifc_.Add("IFCLINE(" + ifc_.AddPoint(0, 0, 0) + "," +
                               ifc_.Add("IFCVECTOR(" + ifc_.Add("IFCDIRECTION((0.,2.,0.))") + ",1000.)") + ")");
    auto const arc = ifc_.Add("IFCTRIMMEDCURVE(" + circle + ",(IFCPARAMETERVALUE(9.)," + ifc_.AddPoint(1000, 0, 0) +
                              "),(IFCPARAMETERVALUE(9.)," + ifc_.AddPoint(0, 1000, 0) + "),.T.,.CARTESIAN.)");
    auto const part =
        ifc_.Add("IFCTRIMMEDCURVE(" + line + ",(IFCPARAMETERVALUE(1.)),(IFCPARAMETERVALUE(3.)),.T.,.PARAMETER.)");
    ifc_.AddWall(1, AddAxis(arc + "," + part), "$");
    auto const graphics = GetGraphics(Import(), 0);
    EXPECT_NEAR(graphics.arcs.at(0).sweepAngle, kPi / 2, 1e-6);
    EXPECT_DOUBLE_EQ(graphics.lines.at(0).start.y, 1);
    EXPECT_DOUBLE_EQ(graphics.lines.at(0).end.y, 3);
}

TEST_F(ImportedCurve, AnIndexedCurveKeepsItsArcs) {
    auto const points = ifc_.Add("IFCCARTESIANPOINTLIST2D(((0.,0.),(1000.,1000.),(2000.,0.),(3000.,0.)))");
    ifc_.AddWall(
        1, AddAxis(ifc_.Add("IFCINDEXEDPOLYCURVE(" + points + ",(IFCARCINDEX((1,2,3)),IFCLINEINDEX((3,4))),.F.)")),
        "$");
    auto const graphics = GetGraphics(Import(), 0);
    ASSERT_THAT(graphics.arcs, SizeIs(1));
    EXPECT_NEAR(graphics.arcs[0].radius, 1, 1e-6);
    EXPECT_NEAR(graphics.arcs[0].sweepAngle, kPi, 1e-6);
    EXPECT_NEAR(graphics.arcs[0].axis.z, -1, 1e-6);  // over the top, from left to right
    EXPECT_THAT(graphics.lines, SizeIs(1));
}

TEST_F(ImportedCurve, ACompositeCurveInASetIsReadThroughAMap) {
    auto const line = ifc_.Add("IFCPOLYLINE((" + ifc_.AddPoint(0, 0, 0) + "," + ifc_.AddPoint(1000, 0, 0) + "))");
    auto const segments = ifc_.Add("IFCCOMPOSITECURVESEGMENT(.CONTINUOUS.,.T.," + line + ")") + "," +
                          ifc_.Add("IFCCOMPOSITECURVESEGMENT(.CONTINUOUS.,.T.," + AddCircle(1000, 0) + ")");
    auto const set = ifc_.Add("IFCGEOMETRICCURVESET((" + ifc_.Add("IFCCOMPOSITECURVE((" + segments + "),.F.)") + "))");
    auto const map =
        ifc_.Add("IFCREPRESENTATIONMAP(" + ifc_.AddAxes(0, 0, 0) + "," + ifc_.AddRepresentation(set, "Axis") + ")");
    auto const target = ifc_.Add("IFCCARTESIANTRANSFORMATIONOPERATOR3D($,$," + ifc_.AddPoint(5000, 0, 0) + ",2.,$)");
    ifc_.AddWall(1, AddAxis(ifc_.Add("IFCMAPPEDITEM(" + map + "," + target + ")")), "$");
    auto const graphics = GetGraphics(Import(), 0);
    EXPECT_NEAR(graphics.arcs.at(0).radius, 2, 1e-6);
    EXPECT_NEAR(graphics.arcs.at(0).center.x, 5, 1e-6);
    EXPECT_DOUBLE_EQ(graphics.lines.at(0).end.x, 7);
}

TEST_F(ImportedCurve, TheColourOfACurveIsItsMaterial) {
    auto const line = ifc_.Add("IFCPOLYLINE((" + ifc_.AddPoint(0, 0, 0) + "," + ifc_.AddPoint(1000, 0, 0) + "))");
    auto const style = ifc_.Add("IFCCURVESTYLE($,$,$," + ifc_.Add("IFCCOLOURRGB($,1.,0.,0.)") + ",$)");
    ifc_.Add("IFCSTYLEDITEM(" + line + ",(" + style + "),$)");
    ifc_.AddWall(1, ifc_.AddShape(line, "Annotation"), "$");
    auto const model = Import();
    EXPECT_THAT(model.GetMaterial(0).color, ElementsAre(255, 0, 0, 255));
    EXPECT_EQ(model.GetLayer(0), "Annotation");
}

TEST_F(ImportedCurve, WhatIsNoCurveIsCounted) {
    auto const line = ifc_.Add("IFCPOLYLINE((" + ifc_.AddPoint(0, 0, 0) + "," + ifc_.AddPoint(1000, 0, 0) + "))");
    ifc_.AddWall(1, AddAxis(line + "," + ifc_.AddPoint(0, 0, 0)), "$");
    auto const model = Import();
    EXPECT_THAT(GetGraphics(model, 0).lines, SizeIs(1));
    EXPECT_THAT(model.GetReport().unreadItems, ElementsAre(Pair("IfcCartesianPoint", 1u)));
}

TEST_F(ImportedCurve, EqualDrawingsAreOneDefinition) {
    auto const line = ifc_.Add("IFCPOLYLINE((" + ifc_.AddPoint(0, 0, 0) + "," + ifc_.AddPoint(1000, 0, 0) + "))");
    ifc_.AddWall(1, AddAxis(line), "$");
    ifc_.AddWall(2, AddAxis(line), "$");
    auto const model = Import();
    EXPECT_EQ(model.GetGeometry().GetInstanceCount(), 2u);
    EXPECT_EQ(model.GetGeometry().GetDefinitionCount(), 1u);
}

}  // namespace
}  // namespace Quorlan::Testing
