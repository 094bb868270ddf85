#include <gmock/gmock.h>

#include <cmath>

#include "ImportedModel.h"
#include "SmallIfc.h"
#include "cut/SolidCuts.h"

/// Cuts, and how they are checked.
namespace QuorlanProgram::Import {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

FacetedBRep MakeBox(Vertex const& min, Vertex const& max) {
    auto box =
        Extrude({{{min.x, min.y, 0}, {max.x, min.y, 0}, {max.x, max.y, 0}, {min.x, max.y, 0}}}, {0, 0, max.z - min.z});
    Transform(box, MakeTranslation({0, 0, min.z}));
    return box;
}

FacetedBRep Turned(FacetedBRep shape, double angle) {
    Matrix4 matrix;
    matrix(0, 0) = matrix(1, 1) = std::cos(angle);
    matrix(0, 1) = -std::sin(angle);
    matrix(1, 0) = std::sin(angle);
    Transform(shape, matrix);
    return shape;
}

using Combine = std::optional<FacetedBRep> (*)(FacetedBRep const&, FacetedBRep const&, BooleanOperation);

/// Both ways of combining must agree with what is known about boxes.
class Boolean : public testing::TestWithParam<Combine> {
protected:
    void SetUp() override {
        if (GetParam() == &CombineExactly && !HasExactBooleans()) GTEST_SKIP() << "built without exact operations";
    }
    static double VolumeOf(FacetedBRep const& a, FacetedBRep const& b, BooleanOperation operation) {
        auto const result = GetParam()(a, b, operation);
        EXPECT_TRUE(result.has_value());
        return result ? GetVolume(*result) : -1;
    }
};

TEST_P(Boolean, AHoleThroughABox) {
    auto const body = MakeBox({0, 0, 0}, {4, 0.2, 2.5});
    auto const tool = MakeBox({1, -1, 0.5}, {2, 1, 1.5});
    EXPECT_NEAR(VolumeOf(body, tool, BooleanOperation::kDifference), 4 * 0.2 * 2.5 - 0.2, 1e-9);
    EXPECT_NEAR(VolumeOf(body, tool, BooleanOperation::kIntersection), 0.2, 1e-9);
}

TEST_P(Boolean, ATurnedToolAtACorner) {
    auto const body = MakeBox({0, 0, 0}, {1, 1, 1});
    auto const tool = Turned(MakeBox({-0.5, -0.5, 0.5}, {0.5, 0.5, 2}), 0.7853981633974483);
    auto const cut = VolumeOf(body, tool, BooleanOperation::kDifference);
    auto const common = VolumeOf(body, tool, BooleanOperation::kIntersection);
    EXPECT_NEAR(cut + common, 1, 1e-9);
    EXPECT_NEAR(common, 0.5 * 0.25, 1e-9);  // a quarter of the square of diagonal sqrt 2, half as high
}

TEST_P(Boolean, SolidsApartShareNothing) {
    auto const a = MakeBox({0, 0, 0}, {1, 1, 1});
    EXPECT_NEAR(VolumeOf(a, MakeBox({3, 0, 0}, {4, 1, 1}), BooleanOperation::kIntersection), 0, 1e-12);
}

INSTANTIATE_TEST_SUITE_P(Ways, Boolean, testing::Values(&CombineInKernel, &CombineExactly));

TEST(CombineExactly, RefusesWhatIsNotClosed) {
    auto open = MakeBox({0, 0, 0}, {1, 1, 1});
    open.faces.pop_back();
    EXPECT_FALSE(CombineExactly(open, MakeBox({0, 0, 0}, {2, 2, 2}), BooleanOperation::kDifference));
}

TEST(CombineExactly, CutsAToolThatSharesFacesWithTheBody) {
    if (!HasExactBooleans()) GTEST_SKIP() << "built without exact operations";
    auto const body = MakeBox({0, 0, 0}, {2, 1, 1});
    auto const rest = CombineExactly(body, MakeBox({1, 0, 0}, {2, 1, 1}), BooleanOperation::kDifference);
    ASSERT_TRUE(rest);
    EXPECT_NEAR(GetVolume(*rest), 1, 1e-12);
    EXPECT_TRUE(IsClosed(*rest));
}

TEST(CombineInKernel, GivesTheSameBytesAgain) {
    auto const body = MakeBox({0, 0, 0}, {4, 0.2, 2.5});
    auto const tool = Turned(MakeBox({1, -1, 0.5}, {2, 1, 1.5}), 0.3);
    auto const once = CombineInKernel(body, tool, BooleanOperation::kDifference);
    std::vector<std::vector<char>> clutter;
    for (std::size_t size = 1; size < 5000; size += 7) clutter.emplace_back(size);
    auto const again = CombineInKernel(body, tool, BooleanOperation::kDifference);
    ASSERT_TRUE(once && again);
    EXPECT_EQ(once->faces, again->faces);
    ASSERT_EQ(once->vertices.size(), again->vertices.size());
    for (std::size_t i = 0; i < once->vertices.size(); ++i) {
        EXPECT_EQ(Length(once->vertices[i] - again->vertices[i]), 0) << i;
    }
}

TEST(SolidCuts, CountsWhatItCuts) {
    SolidCuts cuts;
    auto body = MakeBox({0, 0, 0}, {4, 0.2, 2.5});
    EXPECT_TRUE(cuts.Apply(body, MakeBox({1, -1, 0.5}, {2, 1, 1.5}), BooleanOperation::kDifference));
    EXPECT_NEAR(GetVolume(body), 1.8, 1e-9);
    EXPECT_FALSE(cuts.Apply(body, MakeBox({1.2, -1, 0.7}, {1.8, 1, 1.3}), BooleanOperation::kDifference));
    EXPECT_FALSE(cuts.Apply(body, MakeBox({9, 9, 9}, {10, 10, 10}), BooleanOperation::kDifference));
    EXPECT_EQ(cuts.GetCount().made, 1u);
    EXPECT_EQ(cuts.GetCount().wrong, 0u);
}

TEST(SolidCuts, AToolThatTakesAllLeavesNothing) {
    SolidCuts cuts;
    auto body = MakeBox({0, 0, 0}, {1, 1, 1});
    EXPECT_TRUE(cuts.Apply(body, MakeBox({-1, -1, -1}, {2, 2, 2}), BooleanOperation::kDifference));
    EXPECT_THAT(body.faces, IsEmpty());
    EXPECT_EQ(cuts.GetCount().wrong, 0u);
}

TEST(SolidCuts, AToolThatTakesNothingIsNoCut) {
    SolidCuts cuts;
    auto body = MakeBox({0, 0, 0}, {1, 1, 1});
    EXPECT_FALSE(cuts.Apply(body, MakeBox({0, 0, 1}, {1, 1, 2}), BooleanOperation::kDifference));
    EXPECT_THAT(body.faces, SizeIs(6));
    EXPECT_EQ(cuts.GetCount().made + cuts.GetCount().wrong, 0u);
}

TEST(SolidCuts, AnIntersectionWithWhatIsApartIsEmpty) {
    SolidCuts cuts;
    auto body = MakeBox({0, 0, 0}, {1, 1, 1});
    EXPECT_TRUE(cuts.Apply(body, MakeBox({5, 5, 5}, {6, 6, 6}), BooleanOperation::kIntersection));
    EXPECT_THAT(body.faces, IsEmpty());
}

/// What the kernel cannot take (the body is open) is counted as wrong, and the body stays as it was.
TEST(SolidCuts, ACutThatIsWrongEveryWayLeavesTheBodyAndIsCounted) {
    SolidCuts cuts;
    auto body = MakeBox({0, 0, 0}, {1, 1, 1});
    body.faces.pop_back();
    auto const before = body.faces;
    EXPECT_FALSE(cuts.Apply(body, MakeBox({0.2, 0.2, -1}, {0.8, 0.8, 2}), BooleanOperation::kDifference));
    EXPECT_EQ(body.faces, before);
    EXPECT_EQ(cuts.GetCount().wrong, 1u);
}

}  // namespace
}  // namespace QuorlanProgram::Import

namespace Quorlan::Testing {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(ImportedCut, AnOpeningInAnOpenBodyIsNamedAsWrong) {
    SmallIfc ifc;
    auto const p = [&](double x, double y) { return ifc.AddPoint(x, y, 0); };
    auto const loop =
        ifc.Add("IFCPOLYLOOP((" + p(0, 0) + "," + p(4000, 0) + "," + p(4000, 4000) + "," + p(0, 4000) + "))");
    auto const face = ifc.Add("IFCFACE((" + ifc.Add("IFCFACEOUTERBOUND(" + loop + ",.T.)") + "))");
    auto const sheet = ifc.Add("IFCSHELLBASEDSURFACEMODEL((" + ifc.Add("IFCOPENSHELL((" + face + "))") + "))");
    auto const wall = ifc.AddWall(7, ifc.AddShape(sheet), "$");
    auto const opening = ifc.Add("IFCOPENINGELEMENT('" + SmallIfc::Guid(8) + "',$,$,$,$,$," +
                                 ifc.AddShape(ifc.AddBox(1000, 1000, 1000, 2000, 2000, -500)) + ",$,$)");
    ifc.AddRelation("IFCRELVOIDSELEMENT", wall + "," + opening);
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetGeometry().GetInstanceCount(), 1u);
    // The sheet has no thickness: its box and that of the opening share no volume, so nothing is claimed.
    EXPECT_THAT(model.GetReport().wrongCuts, testing::IsEmpty());
}

TEST(ImportedCut, TheSameOpeningTwiceIsCutOnce) {
    SmallIfc ifc;
    auto const wall = ifc.AddWall(7, ifc.AddShape(ifc.AddBox(4000, 200, 2500)), "$");
    for (int guid : {8, 9}) {
        auto const opening = ifc.Add("IFCOPENINGELEMENT('" + SmallIfc::Guid(guid) + "',$,$,$,$,$," +
                                     ifc.AddShape(ifc.AddBox(1000, 400, 1000, 0, 0, 500)) + ",$,$)");
        ifc.AddRelation("IFCRELVOIDSELEMENT", wall + "," + opening);
    }
    ImportedModel const model(ifc.GetText());
    EXPECT_NEAR(QuorlanProgram::Import::GetVolume(model.GetShape(0)), 1.8, 1e-5);
    EXPECT_EQ(model.GetReport().cuts.made, 1u);
    EXPECT_EQ(model.GetReport().CountWarnings(), 0u);
    EXPECT_EQ(model.GetReport().solids, 1u);
    EXPECT_TRUE(model.GetReport().openSolids.empty());
}

TEST(ImportedCut, AnOpeningThatTakesTheWholeBodyLeavesAnEntityWithoutShape) {
    SmallIfc ifc;
    auto const wall = ifc.AddWall(7, ifc.AddShape(ifc.AddBox(1000, 200, 1000)), "$");
    auto const opening = ifc.Add("IFCOPENINGELEMENT('" + SmallIfc::Guid(8) + "',$,$,$,$,$," +
                                 ifc.AddShape(ifc.AddBox(2000, 400, 3000, 0, 0, -1000)) + ",$,$)");
    ifc.AddRelation("IFCRELVOIDSELEMENT", wall + "," + opening);
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetReader().GetEntities().GetCount(), 1u);
    EXPECT_THAT(model.GetReport().productsWithoutShape, ElementsAre(SmallIfc::Guid(7) + " IfcWall"));
}

}  // namespace
}  // namespace Quorlan::Testing
