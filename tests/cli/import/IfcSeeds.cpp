#include "IfcSeeds.h"

#include "SmallIfc.h"

namespace {

using Quorlan::Testing::SmallIfc;

std::string MakeWall() {
    SmallIfc ifc;
    auto const person = ifc.Add("IFCPERSON('id','Family','Given',$,$,$,$,$)");
    auto const organization = ifc.Add("IFCORGANIZATION($,'Office',$,$,$)");
    auto const user = ifc.Add("IFCPERSONANDORGANIZATION(" + person + "," + organization + ",$)");
    auto const application = ifc.Add("IFCAPPLICATION(" + organization + ",'1','Writer','W')");
    auto const history =
        ifc.Add("IFCOWNERHISTORY(" + user + "," + application + ",$,.MODIFIED.,1600000000,$,$,1500000000)");
    auto const box = ifc.AddBox(4000, 200, 2500);
    auto const wall = ifc.AddWall(7, ifc.AddShape(box), ifc.AddPlacement(1, 2, 3), "W\\X2\\00E4\\X0\\nd", history);
    ifc.AddStyle(box, "0.2,0.4,0.6", "0.5", ".BOTH.");
    auto const width = ifc.Add("IFCPROPERTYSINGLEVALUE('Width',$,IFCLENGTHMEASURE(200.),$)");
    auto const external = ifc.Add("IFCPROPERTYSINGLEVALUE('IsExternal',$,IFCBOOLEAN(.T.),$)");
    auto const set = ifc.Add("IFCPROPERTYSET('" + SmallIfc::Guid(9) + "',$,'Pset',$,(" + width + "," + external + "))");
    ifc.AddRelation("IFCRELDEFINESBYPROPERTIES", "(" + wall + ")," + set);
    return ifc.GetText();
}

std::string MakeOpening() {
    SmallIfc ifc;
    auto const wall = ifc.AddWall(1, ifc.AddShape(ifc.AddBox(4000, 200, 2500)), ifc.AddPlacement(0, 0, 0));
    auto const opening = ifc.Add("IFCOPENINGELEMENT('" + SmallIfc::Guid(2) + "',$,$,$,$," + ifc.AddPlacement(0, 0, 0) +
                                 "," + ifc.AddShape(ifc.AddBox(900, 400, 1200, 0, 0, 800)) + ",$,$)");
    ifc.AddRelation("IFCRELVOIDSELEMENT", wall + "," + opening);
    return ifc.GetText();
}

std::string MakeMapped() {
    SmallIfc ifc("IFC2X3", "$");
    auto const source = ifc.AddRepresentation(ifc.AddBox(1, 2, 3));
    auto const map = ifc.Add("IFCREPRESENTATIONMAP(" + ifc.AddAxes(0, 0, 0) + "," + source + ")");
    for (int i = 1; i <= 3; ++i) {
        auto const target = ifc.Add("IFCCARTESIANTRANSFORMATIONOPERATOR3D($,$," + ifc.AddPoint(i, 0, 0) + ",1.,$)");
        auto const item = ifc.Add("IFCMAPPEDITEM(" + map + "," + target + ")");
        ifc.AddWall(i, ifc.AddShape(item), "$");
    }
    return ifc.GetText();
}

/// A box of faces, one of them with a hole.
std::string MakeBRep() {
    SmallIfc ifc("IFC4", "$");
    std::string points[8];
    for (int i = 0; i < 8; ++i) points[i] = ifc.AddPoint(4.0 * (i & 1), 4.0 * (i >> 1 & 1), i >> 2);
    auto const addLoop = [&](std::string const& list) { return ifc.Add("IFCPOLYLOOP((" + list + "))"); };
    std::string faces;
    int const quads[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {3, 2, 6, 7}, {2, 0, 4, 6}, {1, 3, 7, 5}};
    for (auto const& quad : quads) {
        std::string list;
        for (int const corner : quad) list += (list.empty() ? "" : ",") + points[corner];
        auto bounds = ifc.Add("IFCFACEOUTERBOUND(" + addLoop(list) + ",.T.)");
        if (faces.empty()) {
            auto const hole = ifc.AddPoint(1, 1, 0) + "," + ifc.AddPoint(2, 1, 0) + "," + ifc.AddPoint(1, 2, 0);
            bounds += "," + ifc.Add("IFCFACEBOUND(" + addLoop(hole) + ",.T.)");
        }
        faces += (faces.empty() ? "" : ",") + ifc.Add("IFCFACE((" + bounds + "))");
    }
    auto const shell = ifc.Add("IFCCLOSEDSHELL((" + faces + "))");
    ifc.AddWall(1, ifc.AddShape(ifc.Add("IFCFACETEDBREP(" + shell + ")")), "$");
    return ifc.GetText();
}

/// An extruded profile of lines and arcs, which is rewritten, in a schema that is replaced.
std::string MakeIndexedCurve() {
    SmallIfc ifc("IFC4X3_ADD2", "$");
    auto const list = ifc.Add("IFCCARTESIANPOINTLIST2D(((0.,0.),(4.,0.),(5.,1.),(4.,2.),(0.,2.)))");
    auto const curve = ifc.Add("IFCINDEXEDPOLYCURVE(" + list +
                               ",(IFCLINEINDEX((1,2)),IFCARCINDEX((2,3,4)),IFCLINEINDEX((4,5,1))),.F.)");
    auto const profile = ifc.Add("IFCARBITRARYCLOSEDPROFILEDEF(.AREA.,$," + curve + ")");
    auto const up = ifc.Add("IFCDIRECTION((0.,0.,1.))");
    ifc.AddWall(
        1, ifc.AddShape(ifc.Add("IFCEXTRUDEDAREASOLID(" + profile + "," + ifc.AddAxes(0, 0, 0) + "," + up + ",3.)")),
        "$");
    return ifc.GetText();
}

std::string MakeClipping() {
    SmallIfc ifc("IFC4", "$");
    auto const plane = ifc.Add("IFCPLANE(" + ifc.AddAxes(0, 0, 2) + ")");
    auto const half = ifc.Add("IFCHALFSPACESOLID(" + plane + ",.F.)");
    auto const clipped = ifc.Add("IFCBOOLEANCLIPPINGRESULT(.DIFFERENCE.," + ifc.AddBox(2, 2, 3) + "," + half + ")");
    ifc.AddWall(1, ifc.AddShape(clipped), "$");
    return ifc.GetText();
}

}  // namespace

std::vector<std::pair<std::string, std::string>> MakeIfcSeeds() {
    return {{"wall", MakeWall()},
            {"opening", MakeOpening()},
            {"mapped", MakeMapped()},
            {"brep", MakeBRep()},
            {"indexed-curve", MakeIndexedCurve()},
            {"clipping", MakeClipping()}};
}
