#include <gmock/gmock.h>

#include "ImportedModel.h"
#include "SmallIfc.h"

/// Files that are wrong in one place: the product concerned is left out or repaired and named, the others come in.
namespace Quorlan::Testing {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

/// A file with a sound wall, to which a bad one is added.
class BadInput : public testing::Test {
protected:
    void SetUp() override { ifc_.AddWall(1, ifc_.AddShape(ifc_.AddBox(1, 2, 3)), "$"); }

    static std::string NameOf(int guid) { return SmallIfc::Guid(guid) + " IfcWall"; }

    /// The sound wall is there, with its shape; the second one is there too only if `entities` is 2.
    ImportedModel Import(std::uint32_t entities, std::uint32_t instances) const {
        ImportedModel model(ifc_.GetText());
        EXPECT_EQ(model.GetReader().GetEntities().GetCount(), entities);
        EXPECT_EQ(model.GetGeometry().GetInstanceCount(), instances);
        EXPECT_GE(model.GetReport().CountWarnings(), 1u);
        return model;
    }

    std::string AddBrep(std::vector<std::vector<std::string>> const& loops) {
        std::string faces;
        for (auto const& loop : loops) {
            std::string points;
            for (auto const& point : loop) points += (points.empty() ? "" : ",") + point;
            auto const bound = ifc_.Add("IFCFACEOUTERBOUND(" + ifc_.Add("IFCPOLYLOOP((" + points + "))") + ",.T.)");
            faces += (faces.empty() ? "" : ",") + ifc_.Add("IFCFACE((" + bound + "))");
        }
        return ifc_.Add("IFCFACETEDBREP(" + ifc_.Add("IFCCLOSEDSHELL((" + faces + "))") + ")");
    }

    std::string AddTurned(std::string const& axis, std::string const& reference) {
        auto const place =
            ifc_.Add("IFCAXIS2PLACEMENT3D(" + ifc_.AddPoint(1, 2, 3) + "," + ifc_.Add("IFCDIRECTION((" + axis + "))") +
                     "," + ifc_.Add("IFCDIRECTION((" + reference + "))") + ")");
        return ifc_.Add("IFCLOCALPLACEMENT($," + place + ")");
    }

    SmallIfc ifc_{"IFC4", "$"};
};

TEST_F(BadInput, AProductWhoseShapeIsNotThereIsNamed) {
    ifc_.AddWall(2, "#99999", "$");
    auto const model = Import(1, 1);
    EXPECT_EQ(model.GetReport().missingReferences, 1u);
    EXPECT_THAT(model.GetReport().damagedProducts, ElementsAre(NameOf(2)));
}

TEST_F(BadInput, AMissingReferenceDeepBelowAProductNamesIt) {
    auto const up = ifc_.Add("IFCDIRECTION((0.,0.,1.))");
    ifc_.AddWall(2, ifc_.AddShape(ifc_.Add("IFCEXTRUDEDAREASOLID(#99999,$," + up + ",1.)")), "$");
    auto const model = Import(2, 1);
    EXPECT_THAT(model.GetReport().damagedProducts, ElementsAre(NameOf(2)));
    EXPECT_THAT(model.GetReport().productsWithoutShape, ElementsAre(NameOf(2)));
}

TEST_F(BadInput, PlacementsThatReferToEachOtherAreCut) {
    auto const axes = ifc_.AddAxes(0, 0, 0);
    auto const first = std::stoi(axes.substr(1)) + 1;
    auto const a = ifc_.Add("IFCLOCALPLACEMENT(#" + std::to_string(first + 1) + "," + axes + ")");
    ifc_.Add("IFCLOCALPLACEMENT(" + a + "," + axes + ")");
    ifc_.AddWall(2, ifc_.AddShape(ifc_.AddBox(1, 1, 1)), a);
    auto const model = Import(2, 2);
    EXPECT_EQ(model.GetReport().circularReferences, 1u);
    EXPECT_THAT(model.GetReport().damagedProducts, ElementsAre(NameOf(2)));
}

TEST_F(BadInput, AProfileDerivedFromItselfIsCut) {
    auto const up = ifc_.Add("IFCDIRECTION((0.,0.,1.))");
    auto const self = "#" + std::to_string(std::stoi(up.substr(1)) + 1);
    auto const profile = ifc_.Add("IFCDERIVEDPROFILEDEF(.AREA.,$," + self + ",$,$)");
    ifc_.AddWall(2, ifc_.AddShape(ifc_.Add("IFCEXTRUDEDAREASOLID(" + profile + ",$," + up + ",1.)")), "$");
    auto const model = Import(2, 1);
    EXPECT_EQ(model.GetReport().circularReferences, 1u);
    EXPECT_THAT(model.GetReport().productsWithoutShape, ElementsAre(NameOf(2)));
}

TEST_F(BadInput, ACurveMadeOfItselfIsCut) {
    auto const up = ifc_.Add("IFCDIRECTION((0.,0.,1.))");
    auto const curve = "#" + std::to_string(std::stoi(up.substr(1)) + 2);
    auto const segment = ifc_.Add("IFCCOMPOSITECURVESEGMENT(.CONTINUOUS.,.T.," + curve + ")");
    ifc_.Add("IFCCOMPOSITECURVE((" + segment + "),.F.)");
    auto const profile = ifc_.Add("IFCARBITRARYCLOSEDPROFILEDEF(.AREA.,$," + curve + ")");
    ifc_.AddWall(2, ifc_.AddShape(ifc_.Add("IFCEXTRUDEDAREASOLID(" + profile + ",$," + up + ",1.)")), "$");
    auto const model = Import(2, 1);
    EXPECT_EQ(model.GetReport().circularReferences, 1u);
}

TEST_F(BadInput, AFileWithoutUnitsIsTakenForMetres) {
    auto text = ifc_.GetText();
    auto const begin = text.find("IFCUNITASSIGNMENT((");
    text.replace(begin, text.find(");", begin) - begin, "IFCUNITASSIGNMENT(()");
    ImportedModel const model(text);
    EXPECT_TRUE(model.GetReport().lacksUnit);
    EXPECT_EQ(model.GetReport().CountWarnings(), 1u);
    DefinitionBounds bounds;
    model.GetGeometry().GetDefinitionBounds(bounds, 0);
    EXPECT_EQ(bounds.max.z, 3);
}

TEST_F(BadInput, AProductWhoseOriginIsNoNumberIsLeftOut) {
    for (auto const* coordinate : {"1.E400", "1.E300", "-1.E300", "NAN", "1.#QNAN", "-1.#IND"}) {
        auto const point = ifc_.Add(std::string("IFCCARTESIANPOINT((") + coordinate + ",0.,0.))");
        auto const axes = ifc_.Add("IFCAXIS2PLACEMENT3D(" + point + ",$,$)");
        ifc_.AddWall(2, ifc_.AddShape(ifc_.AddBox(1, 1, 1)), ifc_.Add("IFCLOCALPLACEMENT($," + axes + ")"));
    }
    auto const model = Import(1, 1);
    EXPECT_THAT(model.GetReport().misplacedProducts, SizeIs(6));
}

TEST_F(BadInput, AFaceWithAnAbsurdCoordinateIsDroppedAndCounted) {
    auto const o = ifc_.AddPoint(0, 0, 0);
    auto const x = ifc_.AddPoint(1, 0, 0);
    auto const y = ifc_.AddPoint(0, 1, 0);
    auto const far = ifc_.Add("IFCCARTESIANPOINT((1.E300,0.,1.))");
    ifc_.AddWall(2, ifc_.AddShape(AddBrep({{o, y, x}, {o, x, far}})), "$");
    auto const model = Import(2, 2);
    EXPECT_THAT(model.GetReport().droppedFaces, ElementsAre(Pair(SmallIfc::Guid(2), 1u)));
    EXPECT_THAT(model.GetReport().openSolids, SizeIs(1));
    EXPECT_THAT(model.GetShape(1).faces, SizeIs(1));
}

TEST_F(BadInput, AnExtrusionToInfinityGivesNoShape) {
    auto const profile = ifc_.Add("IFCRECTANGLEPROFILEDEF(.AREA.,$,$,1.,1.)");
    auto const up = ifc_.Add("IFCDIRECTION((0.,0.,1.))");
    ifc_.AddWall(2, ifc_.AddShape(ifc_.Add("IFCEXTRUDEDAREASOLID(" + profile + ",$," + up + ",1.E300)")), "$");
    auto const model = Import(2, 1);
    EXPECT_THAT(model.GetReport().productsWithoutShape, ElementsAre(NameOf(2)));
}

TEST_F(BadInput, ParallelAxesAreRepairedAndNamed) {
    ifc_.AddWall(2, ifc_.AddShape(ifc_.AddBox(1, 1, 1)), AddTurned("0.,0.,1.", "0.,0.,2."));
    auto const model = Import(2, 2);
    EXPECT_THAT(model.GetReport().repairedPlacements, ElementsAre(NameOf(2)));
    EXPECT_EQ(model.GetEntity(1).placement.offset.z, 3);
}

TEST_F(BadInput, DirectionsWithoutLengthAreRepairedAndNamed) {
    ifc_.AddWall(2, ifc_.AddShape(ifc_.AddBox(1, 1, 1)), AddTurned("0.,0.,0.", "1.,0.,0."));
    ifc_.AddWall(3, ifc_.AddShape(ifc_.AddBox(1, 1, 1)), AddTurned("0.,0.,1.", "0.,0.,0."));
    auto const model = Import(3, 3);
    EXPECT_THAT(model.GetReport().repairedPlacements, ElementsAre(NameOf(2), NameOf(3)));
}

TEST_F(BadInput, AnExtrusionAlongNoDirectionGivesNoShape) {
    auto const profile = ifc_.Add("IFCRECTANGLEPROFILEDEF(.AREA.,$,$,1.,1.)");
    auto const none = ifc_.Add("IFCDIRECTION((0.,0.,0.))");
    ifc_.AddWall(2, ifc_.AddShape(ifc_.Add("IFCEXTRUDEDAREASOLID(" + profile + ",$," + none + ",1.)")), "$");
    auto const model = Import(2, 1);
    EXPECT_THAT(model.GetReport().productsWithoutShape, ElementsAre(NameOf(2)));
}

TEST_F(BadInput, AFaceOfTwoPointsIsDroppedAndCounted) {
    auto const o = ifc_.AddPoint(0, 0, 0);
    auto const x = ifc_.AddPoint(1, 0, 0);
    auto const y = ifc_.AddPoint(0, 1, 0);
    auto const z = ifc_.AddPoint(0, 0, 1);
    ifc_.AddWall(2, ifc_.AddShape(AddBrep({{o, y, x}, {o, x, z}, {x, y, z}, {y, o, z}, {o, x}})), "$");
    auto const model = Import(2, 2);
    EXPECT_THAT(model.GetReport().droppedFaces, ElementsAre(Pair(SmallIfc::Guid(2), 1u)));
    EXPECT_THAT(model.GetReport().openSolids, IsEmpty());
    EXPECT_THAT(model.GetShape(1).faces, SizeIs(4));
}

TEST_F(BadInput, ALoopThatTouchesItselfComesInAsItIs) {
    // A bow: two triangles that meet in a corner, drawn as one loop.
    std::vector<std::string> loop;
    for (auto const& [x, y] :
         {std::pair(0, 0), std::pair(1, 1), std::pair(2, 0), std::pair(2, 2), std::pair(1, 1), std::pair(0, 2)}) {
        loop.push_back(ifc_.AddPoint(x, y, 0));
    }
    ifc_.AddWall(2, ifc_.AddShape(AddBrep({loop})), "$");
    auto const model = Import(2, 2);
    EXPECT_THAT(model.GetShape(1).faces, ElementsAre(SizeIs(6)));
    EXPECT_THAT(model.GetReport().openSolids, ElementsAre(Pair(SmallIfc::Guid(2) + " IfcFacetedBrep", 1u)));
}

TEST_F(BadInput, AProfileThatTouchesItselfDoesNoHarm) {
    std::string points;
    for (auto const& [x, y] : {std::pair(0, 0), std::pair(1, 1), std::pair(2, 0), std::pair(2, 2), std::pair(1, 1),
                               std::pair(0, 2), std::pair(0, 0)}) {
        points += (points.empty() ? "" : ",") + ifc_.AddPoint(x, y, 0);
    }
    auto const curve = ifc_.Add("IFCPOLYLINE((" + points + "))");
    auto const profile = ifc_.Add("IFCARBITRARYCLOSEDPROFILEDEF(.AREA.,$," + curve + ")");
    auto const up = ifc_.Add("IFCDIRECTION((0.,0.,1.))");
    ifc_.AddWall(2, ifc_.AddShape(ifc_.Add("IFCEXTRUDEDAREASOLID(" + profile + ",$," + up + ",1.)")), "$");
    ImportedModel const model(ifc_.GetText());
    EXPECT_EQ(model.GetReader().GetEntities().GetCount(), 2u);
    EXPECT_GE(model.GetGeometry().GetInstanceCount(), 1u);
}

}  // namespace
}  // namespace Quorlan::Testing
