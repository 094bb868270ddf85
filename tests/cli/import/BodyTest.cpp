#include <gmock/gmock.h>

#include <algorithm>

#include "ImportedModel.h"
#include "SmallIfc.h"
#include "shape/Shape.h"

/// Shapes, openings, maps, materials and layers of imported bodies.
namespace Quorlan::Testing {
namespace {

using QuorlanProgram::Import::GetVolume;
using QuorlanProgram::Import::IsClosed;
using testing::Contains;
using testing::ElementsAre;
using testing::Pair;
using testing::SizeIs;

TEST(ImportedBody, AnExtrusionIsSixQuadsInMetresInTheFrameOfItsEntity) {
    SmallIfc ifc;
    auto const storey = ifc.AddPlacement(1000, 2000, 3000);
    ifc.AddWall(7, ifc.AddShape(ifc.AddBox(4000, 200, 2500)), ifc.AddPlacement(10, 0, 0, storey));
    ImportedModel const model(ifc.GetText());

    EXPECT_THAT(model.GetShape(0).faces, ElementsAre(SizeIs(4), SizeIs(4), SizeIs(4), SizeIs(4), SizeIs(4), SizeIs(4)));
    EXPECT_NEAR(GetVolume(model.GetShape(0)), 4 * 0.2 * 2.5, 1e-6);
    EXPECT_EQ(model.GetEntity(0).placement.offset.x, 1.01);
    EXPECT_EQ(model.GetEntity(0).placement.offset.y, 2);
    EXPECT_EQ(model.GetEntity(0).placement.offset.z, 3);
    EXPECT_EQ(Length(model.GetPlacement(0).offset), 0);
}

TEST(ImportedBody, AProfileWithAVoidKeepsItAsAHole) {
    SmallIfc ifc("IFC4", "$");
    auto const loop = [&](double a, double b) {
        auto const p = ifc.AddPoint(a, a, 0);
        return ifc.Add("IFCPOLYLINE((" + p + "," + ifc.AddPoint(b, a, 0) + "," + ifc.AddPoint(b, b, 0) + "," +
                       ifc.AddPoint(a, b, 0) + "," + p + "))");
    };
    auto const outer = loop(0, 4);
    auto const profile = ifc.Add("IFCARBITRARYPROFILEDEFWITHVOIDS(.AREA.,$," + outer + ",(" + loop(1, 3) + "))");
    auto const up = ifc.Add("IFCDIRECTION((0.,0.,1.))");
    ifc.AddWall(7, ifc.AddShape(ifc.Add("IFCEXTRUDEDAREASOLID(" + profile + ",$," + up + ",2.)")), "$");
    ImportedModel const model(ifc.GetText());
    auto const shape = model.GetShape(0);
    EXPECT_THAT(shape.holes, SizeIs(2));
    EXPECT_TRUE(IsClosed(shape));
    EXPECT_NEAR(GetVolume(shape), 24, 1e-6);
}

TEST(ImportedBody, ABRepKeepsItsPolygonsAndLooksOutward) {
    SmallIfc ifc("IFC4", "$");
    std::string faces;
    // A unit cube whose faces all look inward.
    char const* const corners[] = {"000", "100", "110", "010", "001", "101", "111", "011"};
    std::string points[8];
    for (int i = 0; i < 8; ++i) points[i] = ifc.AddPoint(corners[i][0] - '0', corners[i][1] - '0', corners[i][2] - '0');
    for (auto const* face : {"0123", "4765", "0451", "1562", "2673", "3740"}) {
        std::string loop;
        for (int i = 0; i < 4; ++i) loop += (i > 0 ? "," : "") + points[face[i] - '0'];
        auto const bound = ifc.Add("IFCFACEOUTERBOUND(" + ifc.Add("IFCPOLYLOOP((" + loop + "))") + ",.T.)");
        faces += (faces.empty() ? "" : ",") + ifc.Add("IFCFACE((" + bound + "))");
    }
    ifc.AddWall(7, ifc.AddShape(ifc.Add("IFCFACETEDBREP(" + ifc.Add("IFCCLOSEDSHELL((" + faces + "))") + ")")), "$");
    ImportedModel const model(ifc.GetText());
    EXPECT_THAT(model.GetShape(0).vertices, SizeIs(8));
    EXPECT_THAT(model.GetShape(0).faces, SizeIs(6));
    EXPECT_DOUBLE_EQ(GetVolume(model.GetShape(0)), 1);
}

TEST(ImportedBody, AFaceSetWithAHoleIsReadThroughItsIndices) {
    SmallIfc ifc("IFC4", "$");
    auto const points = ifc.Add(
        "IFCCARTESIANPOINTLIST3D(((9.,9.,9.),(0.,0.,0.),(4.,0.,0.),(4.,4.,0.),(0.,4.,0.),(1.,1.,0.),(3.,1.,0.),(3.,3.,"
        "0.)"
        "))");
    auto const face = ifc.Add("IFCINDEXEDPOLYGONALFACEWITHVOIDS((1,2,3,4),((5,6,7)))");
    ifc.AddWall(7, ifc.AddShape(ifc.Add("IFCPOLYGONALFACESET(" + points + ",.F.,(" + face + "),(2,3,4,5,6,7,8))")),
                "$");
    ImportedModel const model(ifc.GetText());
    auto const shape = model.GetShape(0);
    ASSERT_THAT(shape.faces, ElementsAre(SizeIs(4)));
    ASSERT_EQ(shape.GetInnerLoopCount(0), 1u);
    EXPECT_THAT(shape.GetInnerLoop(0, 0), SizeIs(3));
    EXPECT_EQ(shape.vertices[shape.faces[0][2]].y, 4);
}

TEST(ImportedBody, OpeningsAreCutAndAreNoEntities) {
    SmallIfc ifc;
    auto const placement = ifc.AddPlacement(5000, 0, 0);
    auto const wall = ifc.AddWall(7, ifc.AddShape(ifc.AddBox(4000, 200, 2500)), placement);
    auto const opening =
        ifc.Add("IFCOPENINGELEMENT('" + SmallIfc::Guid(8) + "',$,$,$,$," + ifc.AddPlacement(1000, 0, 500, placement) +
                "," + ifc.AddShape(ifc.AddBox(1000, 400, 1000)) + ",$,$)");
    ifc.AddRelation("IFCRELVOIDSELEMENT", wall + "," + opening);
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetReader().GetEntities().GetCount(), 1u);
    EXPECT_EQ(model.GetReport().openings, 1u);
    EXPECT_TRUE(model.GetReport().wrongCuts.empty());
    EXPECT_NEAR(GetVolume(model.GetShape(0)), 4 * 0.2 * 2.5 - 1 * 0.2 * 1, 1e-5);
}

TEST(ImportedBody, AnOpeningBesideTheBodyLeavesItsPolygons) {
    SmallIfc ifc;
    auto const wall = ifc.AddWall(7, ifc.AddShape(ifc.AddBox(4000, 200, 2500)), ifc.AddPlacement(0, 0, 0));
    auto const opening =
        ifc.Add("IFCOPENINGELEMENT('" + SmallIfc::Guid(8) + "',$,$,$,$," + ifc.AddPlacement(0, 3000, 0) + "," +
                ifc.AddShape(ifc.AddBox(1000, 400, 1000)) + ",$,$)");
    ifc.AddRelation("IFCRELVOIDSELEMENT", wall + "," + opening);
    ImportedModel const model(ifc.GetText());
    EXPECT_THAT(model.GetShape(0).faces, SizeIs(6));
    EXPECT_TRUE(model.GetReport().wrongCuts.empty());
}

TEST(ImportedBody, TwoUsesOfAMapAreTwoInstancesOfOneDefinition) {
    SmallIfc ifc;
    auto const box = ifc.AddRepresentation(ifc.AddBox(1000, 1000, 1000));
    auto const map = ifc.Add("IFCREPRESENTATIONMAP(" + ifc.AddAxes(100, 0, 0) + "," + box + ")");
    auto const use = [&](double x) {
        return ifc.Add("IFCMAPPEDITEM(" + map + "," +
                       ifc.Add("IFCCARTESIANTRANSFORMATIONOPERATOR3D($,$," + ifc.AddPoint(x, 0, 0) + ",$,$)") + ")");
    };
    ifc.AddWall(7, ifc.AddShape(use(0)), "$");
    ifc.AddWall(8, ifc.AddShape(use(2000)), "$");
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetGeometry().GetDefinitionCount(), 1u);
    EXPECT_EQ(model.GetGeometry().GetInstanceCount(), 2u);
    EXPECT_DOUBLE_EQ(model.GetPlacement(0).offset.x, 0.1);
    EXPECT_DOUBLE_EQ(model.GetPlacement(1).offset.x, 2.1);
}

TEST(ImportedBody, AScaledOrMirroredMapIsBakedIntoItsShape) {
    SmallIfc ifc("IFC4", "$");
    auto const map = ifc.Add("IFCREPRESENTATIONMAP(" + ifc.AddAxes(0, 0, 0) + "," +
                             ifc.AddRepresentation(ifc.AddBox(1, 1, 1, 5, 0, 0)) + ")");
    auto const left = ifc.Add("IFCDIRECTION((-1.,0.,0.))");
    auto const back = ifc.Add("IFCDIRECTION((0.,1.,0.))");
    auto const target = ifc.Add("IFCCARTESIANTRANSFORMATIONOPERATOR3DNONUNIFORM(" + left + "," + back + "," +
                                ifc.AddPoint(0, 0, 0) + ",2.,$,1.,3.)");
    ifc.AddWall(7, ifc.AddShape(ifc.Add("IFCMAPPEDITEM(" + map + "," + target + ")")), "$");
    ImportedModel const model(ifc.GetText());
    EXPECT_NEAR(GetVolume(model.GetShape(0)), 6, 1e-6);
    EXPECT_EQ(Length(model.GetPlacement(0).offset), 0);
    DefinitionBounds bounds;
    model.GetGeometry().GetDefinitionBounds(bounds, 0);
    EXPECT_DOUBLE_EQ(bounds.min.x, -11);
    EXPECT_DOUBLE_EQ(bounds.max.z, 3);
}

TEST(ImportedBody, ACoordinateFarFromItsItemsOriginGoesIntoThePlacement) {
    SmallIfc ifc("IFC4", "$");
    ifc.AddWall(7, ifc.AddShape(ifc.AddBox(1, 1, 1, 4e6, 5e6 + 0.25, 0)), "$");
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetPlacement(0).offset.x, 4e6);
    EXPECT_EQ(model.GetPlacement(0).offset.y, 5e6);
    EXPECT_DOUBLE_EQ(GetVolume(model.GetShape(0)), 1);
}

TEST(ImportedBody, EqualStylesAreOneMaterialWithItsTransparencyAndSides) {
    SmallIfc ifc;
    auto const a = ifc.AddBox(1, 1, 1);
    auto const b = ifc.AddBox(1, 1, 2);
    ifc.AddStyle(a, "1.,0.5,0.", "0.25", ".BOTH.");
    ifc.AddStyle(b, "1.,0.5,0.", "0.25", ".BOTH.");
    ifc.AddWall(7, ifc.AddShape(a + "," + b), "$");
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetGeometry().GetMaterialCount(), 1u);
    EXPECT_THAT(model.GetMaterial(0).color, ElementsAre(255, 128, 0, 191));
    EXPECT_TRUE(model.GetMaterial(1).twoSided);
}

TEST(ImportedBody, AnItemWithoutStyleTakesThatOfItsMaterialOrNone) {
    SmallIfc ifc;
    auto const styled = ifc.AddWall(7, ifc.AddShape(ifc.AddBox(1, 1, 1)), "$");
    ifc.AddWall(8, ifc.AddShape(ifc.AddBox(1, 1, 2)), "$");
    auto const material = ifc.Add("IFCMATERIAL('Brick',$,$)");
    auto const style = ifc.Add("IFCSTYLEDREPRESENTATION(" + ifc.GetContext() + ",'Style','Material',(" +
                               ifc.AddStyle("$", "0.,0.,1.") + "))");
    ifc.Add("IFCMATERIALDEFINITIONREPRESENTATION($,$,(" + style + ")," + material + ")");
    auto const layer = ifc.Add("IFCMATERIALLAYER(" + material + ",100.,$,$,$,$,$)");
    auto const set = ifc.Add("IFCMATERIALLAYERSET((" + layer + "),$,$)");
    auto const usage = ifc.Add("IFCMATERIALLAYERSETUSAGE(" + set + ",.AXIS2.,.POSITIVE.,0.,$)");
    ifc.AddRelation("IFCRELASSOCIATESMATERIAL", "(" + styled + ")," + usage);
    ImportedModel const model(ifc.GetText());
    EXPECT_THAT(model.GetMaterial(0).color, ElementsAre(0, 0, 255, 255));
    EXPECT_FALSE(model.GetMaterial(0).twoSided);
    EXPECT_EQ(model.GetInstance(1).materialIndex, kInvalidIndex);
}

TEST(ImportedBody, LayersComeFromItemsRepresentationsAndMaps) {
    SmallIfc ifc;
    auto const box = ifc.AddBox(1, 1, 1);
    auto const onItem = ifc.AddRepresentation(box);
    auto const plain = ifc.AddRepresentation(ifc.AddBox(1, 1, 2));
    auto const mapped = ifc.AddRepresentation(ifc.AddBox(1, 1, 3));
    auto const map = ifc.Add("IFCREPRESENTATIONMAP(" + ifc.AddAxes(0, 0, 0) + "," + mapped + ")");
    auto const target = ifc.Add("IFCCARTESIANTRANSFORMATIONOPERATOR3D($,$," + ifc.AddPoint(0, 0, 0) + ",$,$)");
    auto const use = ifc.Add("IFCMAPPEDITEM(" + map + "," + target + ")");
    for (auto const& [guid, representation] : {std::pair(7, onItem), std::pair(8, plain)}) {
        ifc.AddWall(guid, ifc.Add("IFCPRODUCTDEFINITIONSHAPE($,$,(" + representation + "))"), "$");
    }
    ifc.AddWall(9, ifc.AddShape(use), "$");
    ifc.AddWall(10, ifc.AddShape(ifc.AddBox(1, 1, 4)), "$");
    ifc.Add("IFCPRESENTATIONLAYERASSIGNMENT('A-Item',$,(" + box + "),$)");
    ifc.Add("IFCPRESENTATIONLAYERASSIGNMENT('A-Walls',$,(" + onItem + "," + plain + "," + mapped + "),$)");
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetLayer(0), "A-Item");
    EXPECT_EQ(model.GetLayer(1), "A-Walls");
    EXPECT_EQ(model.GetLayer(2), "A-Walls");
    EXPECT_EQ(model.GetLayer(3), "none");
    EXPECT_EQ(model.GetGeometry().GetExtraContentCount(), 2u);
}

TEST(ImportedBody, OnlyTheBodyIsRead) {
    SmallIfc ifc;
    ifc.AddWall(7, ifc.AddShape(ifc.AddBox(1, 1, 1), "Clearance"), "$");
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetReader().GetEntities().GetCount(), 0u);
    EXPECT_THAT(model.GetReport().representations, ElementsAre(Pair("Clearance", 1u)));
    EXPECT_THAT(model.GetReport().withoutBody, ElementsAre(Pair("IfcWall", 1u)));
}

TEST(ImportedBody, AnItemThatGivesNoShapeIsNamedAndItsEntityKept) {
    SmallIfc ifc;
    auto const a = ifc.AddPoint(0, 0, 0);
    ifc.AddWall(7, ifc.AddShape(ifc.Add("IFCPOLYLINE((" + a + "," + ifc.AddPoint(1, 0, 0) + "))")), "$");
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetReader().GetEntities().GetCount(), 1u);
    EXPECT_THAT(model.GetReport().unreadItems, ElementsAre(Pair("IfcPolyline", 1u)));
    EXPECT_THAT(model.GetReport().productsWithoutShape, ElementsAre(SmallIfc::Guid(7) + " IfcWall"));
}

TEST(ImportedBody, AMapThatContainsItselfEnds) {
    SmallIfc ifc;
    auto const target = ifc.Add("IFCCARTESIANTRANSFORMATIONOPERATOR3D($,$," + ifc.AddPoint(0, 0, 0) + ",$,$)");
    // The next four instances refer to each other in a ring.
    auto const first = std::stoi(target.substr(1)) + 1;
    auto const reference = [&](int i) { return "#" + std::to_string(first + i); };
    ifc.Add("IFCSHAPEREPRESENTATION(" + ifc.GetContext() + ",'Body','MappedRepresentation',(" + reference(1) + "))");
    ifc.Add("IFCMAPPEDITEM(" + reference(2) + "," + target + ")");
    ifc.Add("IFCREPRESENTATIONMAP(" + reference(3) + "," + reference(0) + ")");
    ifc.AddAxes(0, 0, 0);
    ifc.AddWall(7, ifc.Add("IFCPRODUCTDEFINITIONSHAPE($,$,(" + reference(0) + "))"), "$");
    ImportedModel const model(ifc.GetText());
    EXPECT_THAT(model.GetReport().productsWithoutShape, SizeIs(1));
}

TEST(ImportedBody, ABooleanThatContainsItselfEnds) {
    SmallIfc ifc;
    auto const box = ifc.AddBox(1000, 1000, 1000);
    auto const self = "#" + std::to_string(std::stoi(box.substr(1)) + 1);
    ifc.AddWall(7, ifc.AddShape(ifc.Add("IFCBOOLEANRESULT(.DIFFERENCE.," + self + "," + box + ")")), "$");
    ImportedModel const model(ifc.GetText());
    EXPECT_THAT(model.GetReport().productsWithoutShape, SizeIs(1));
}

TEST(ImportedBody, APolygonalFaceSetCanBeClipped) {
    SmallIfc ifc("IFC4", "$");
    auto const points = ifc.Add(
        "IFCCARTESIANPOINTLIST3D(((0.,0.,0.),(2.,0.,0.),(2.,2.,0.),(0.,2.,0.),(0.,0.,2.),(2.,0.,2.),(2.,2.,2.),(0.,2.,"
        "2."
        ")))");
    std::string faces;
    for (auto const* face : {"1,4,3,2", "5,6,7,8", "1,2,6,5", "2,3,7,6", "3,4,8,7", "4,1,5,8"}) {
        faces += (faces.empty() ? "" : ",") + ifc.Add(std::string("IFCINDEXEDPOLYGONALFACE((") + face + "))");
    }
    auto const cube = ifc.Add("IFCPOLYGONALFACESET(" + points + ",.T.,(" + faces + "),$)");
    auto const plane = ifc.Add("IFCPLANE(" + ifc.AddAxes(0, 0, 1.5) + ")");
    auto const above = ifc.Add("IFCHALFSPACESOLID(" + plane + ",.F.)");
    ifc.AddWall(7, ifc.AddShape(ifc.Add("IFCBOOLEANRESULT(.DIFFERENCE.," + cube + "," + above + ")")), "$");
    ImportedModel const model(ifc.GetText());
    EXPECT_NEAR(GetVolume(model.GetShape(0)), 2 * 2 * 1.5, 1e-5);
    EXPECT_THAT(model.GetShape(0).faces, SizeIs(6));
}

TEST(ImportedBody, NationalGridCoordinatesKeepTheMillimetre) {
    // The site stands at 3,482,105.123 / 5,381,742.456; walls one millimetre apart stay so, in the entity's placement
    // as in coordinates that the file has in its shapes.
    SmallIfc ifc("IFC4", "$");
    auto const site = ifc.AddPlacement(3482105.123, 5381742.456, 512.789);
    ifc.AddWall(1, ifc.AddShape(ifc.AddBox(4, 0.2, 2.5)), ifc.AddPlacement(0.001, 0.002, 0, site));
    ifc.AddWall(2, ifc.AddShape(ifc.AddBox(4, 0.2, 2.5, 3482105.124, 5381742.456, 512.789)), "$");
    ImportedModel const model(ifc.GetText());
    auto const corner = [&](std::uint32_t i) {
        auto const world = model.GetEntity(i).placement.matrix * model.GetPlacement(i).matrix;
        auto const shape = model.GetShape(i);
        Vertex least{1e30, 1e30, 1e30};
        for (auto const& v : shape.vertices) {
            auto const p = TransformPoint(world, v);
            least = {std::min(least.x, p.x), std::min(least.y, p.y), std::min(least.z, p.z)};
        }
        return least;
    };
    EXPECT_NEAR(corner(0).x, 3482103.124, 1e-4);
    EXPECT_NEAR(corner(0).y, 5381742.358, 1e-4);
    EXPECT_NEAR(corner(1).x, 3482103.124, 1e-4);
    EXPECT_NEAR(corner(1).y, 5381742.356, 1e-4);
    EXPECT_NEAR(corner(1).z, 512.789, 1e-4);
}

TEST(ImportedBody, AShapeBeyondTheVertexLimitIsSplitAndLosesNothing) {
    // A sheet of 260 x 260 squares has 68,121 vertices.
    constexpr int kSide = 260;
    SmallIfc ifc("IFC4", "$");
    std::string points;
    for (int y = 0; y <= kSide; ++y) {
        for (int x = 0; x <= kSide; ++x) {
            points += (points.empty() ? "(" : ",(") + std::to_string(x) + ".," + std::to_string(y) + "." +
                      ((x + y) % 2 == 0 ? ",0.)" : ",1.)");
        }
    }
    std::string triangles;
    auto const add = [&](int a, int b, int c) {
        triangles += (triangles.empty() ? "(" : ",(") + std::to_string(a) + ',' + std::to_string(b) + ',' +
                     std::to_string(c) + ')';
    };
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            auto const a = y * (kSide + 1) + x + 1;
            add(a, a + 1, a + kSide + 1);
            add(a + 1, a + kSide + 2, a + kSide + 1);
        }
    }
    auto const list = ifc.Add("IFCCARTESIANPOINTLIST3D((" + points + "))");
    ifc.AddWall(1, ifc.AddShape(ifc.Add("IFCTRIANGULATEDFACESET(" + list + ",$,.F.,(" + triangles + "),$)")), "$");
    ImportedModel const model(ifc.GetText());
    EXPECT_EQ(model.GetReport().splitShapes, 1u);
    ASSERT_EQ(model.GetGeometry().GetInstanceCount(), 2u);
    EXPECT_EQ(model.GetShape(0).faces.size() + model.GetShape(1).faces.size(), std::size_t{2} * kSide * kSide);
    EXPECT_LE(model.GetShape(0).vertices.size(), 65536u);
}

TEST(ImportedBody, ASweptDiskAndARevolvedSolidAreClosed) {
    SmallIfc ifc("IFC4", "$");
    auto const line = ifc.Add("IFCPOLYLINE((" + ifc.AddPoint(0, 0, 0) + "," + ifc.AddPoint(2, 0, 0) + "))");
    ifc.AddWall(1, ifc.AddShape(ifc.Add("IFCSWEPTDISKSOLID(" + line + ",0.1,$,$,$)")), "$");
    auto const place = ifc.Add("IFCAXIS2PLACEMENT2D(" + ifc.Add("IFCCARTESIANPOINT((2.,0.))") + ",$)");
    auto const profile = ifc.Add("IFCRECTANGLEPROFILEDEF(.AREA.,$," + place + ",1.,1.)");
    auto const axis =
        ifc.Add("IFCAXIS1PLACEMENT(" + ifc.AddPoint(0, 0, 0) + "," + ifc.Add("IFCDIRECTION((0.,1.,0.))") + ")");
    ifc.AddWall(2, ifc.AddShape(ifc.Add("IFCREVOLVEDAREASOLID(" + profile + ",$," + axis + ",3.14159265358979)")), "$");
    ImportedModel const model(ifc.GetText());
    ASSERT_EQ(model.GetGeometry().GetInstanceCount(), 2u);
    EXPECT_EQ(model.GetReport().solids, 2u);
    EXPECT_TRUE(model.GetReport().openSolids.empty());
    EXPECT_NEAR(GetVolume(model.GetShape(0)), 3.14159 * 0.01 * 2, 0.012 * 0.0628);
    // Pappus: area times the way of its centre, half a turn at radius 2.
    EXPECT_NEAR(GetVolume(model.GetShape(1)), 3.14159 * 2, 0.01 * 6.28);
}

TEST(ImportedBody, ADeflectionMakesCirclesRounder) {
    SmallIfc ifc("IFC4", "$");
    auto const profile = ifc.Add("IFCCIRCLEPROFILEDEF(.AREA.,$,$,1.)");
    auto const up = ifc.Add("IFCDIRECTION((0.,0.,1.))");
    ifc.AddWall(1, ifc.AddShape(ifc.Add("IFCEXTRUDEDAREASOLID(" + profile + ",$," + up + ",1.)")), "$");
    auto const countSides = [&](double deflection) {
        QuorlanProgram::Import::ImportOptions options;
        options.deflection = deflection;
        return ImportedModel(ifc.GetText(), options).GetShape(0).faces.size() - 2;
    };
    EXPECT_EQ(countSides(1), 24u);
    EXPECT_EQ(countSides(0.001), 72u);
}

}  // namespace
}  // namespace Quorlan::Testing
