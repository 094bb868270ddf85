#include "SmallIfc.h"

#include <sstream>

namespace Quorlan::Testing {

namespace {

std::string ToReal(double value) {
    std::ostringstream text;
    text.precision(17);
    text << value;
    auto result = text.str();
    if (result.find_first_of(".e") == std::string::npos) result += '.';
    return result;
}

}  // namespace

SmallIfc::SmallIfc(std::string schema, std::string const& prefix) : schema_(std::move(schema)) {
    context_ = Add("IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-5," + AddAxes(0, 0, 0) + ",$)");
    auto const length = Add("IFCSIUNIT(*,.LENGTHUNIT.," + prefix + ",.METRE.)");
    auto const area = Add("IFCSIUNIT(*,.AREAUNIT.,$,.SQUARE_METRE.)");
    auto const angle = Add("IFCSIUNIT(*,.PLANEANGLEUNIT.,$,.RADIAN.)");
    auto const units = Add("IFCUNITASSIGNMENT((" + length + "," + area + "," + angle + "))");
    Add("IFCPROJECT('" + Guid(1) + "',$,'Project',$,$,$,$,(" + context_ + ")," + units + ")");
}

std::string SmallIfc::Add(std::string const& instance) {
    auto const reference = "#" + std::to_string(nextId_++);
    data_ += reference + "=" + instance + ";\n";
    return reference;
}

std::string SmallIfc::Guid(int number) {
    auto const digits = std::to_string(number);
    return std::string(22 - digits.size(), '0') + digits;
}

std::string SmallIfc::AddPoint(double x, double y, double z) {
    return Add("IFCCARTESIANPOINT((" + ToReal(x) + "," + ToReal(y) + "," + ToReal(z) + "))");
}

std::string SmallIfc::AddAxes(double x, double y, double z) {
    return Add("IFCAXIS2PLACEMENT3D(" + AddPoint(x, y, z) + ",$,$)");
}

std::string SmallIfc::AddPlacement(double x, double y, double z, std::string const& relativeTo) {
    return Add("IFCLOCALPLACEMENT(" + relativeTo + "," + AddAxes(x, y, z) + ")");
}

std::string SmallIfc::AddBox(double dx, double dy, double dz, double x, double y, double z) {
    auto const profile = Add("IFCRECTANGLEPROFILEDEF(.AREA.,$,$," + ToReal(dx) + "," + ToReal(dy) + ")");
    auto const up = Add("IFCDIRECTION((0.,0.,1.))");
    return Add("IFCEXTRUDEDAREASOLID(" + profile + "," + AddAxes(x, y, z) + "," + up + "," + ToReal(dz) + ")");
}

std::string SmallIfc::AddRepresentation(std::string const& items, std::string const& identifier) {
    return Add("IFCSHAPEREPRESENTATION(" + context_ + ",'" + identifier + "','SweptSolid',(" + items + "))");
}

std::string SmallIfc::AddShape(std::string const& items, std::string const& identifier) {
    return Add("IFCPRODUCTDEFINITIONSHAPE($,$,(" + AddRepresentation(items, identifier) + "))");
}

std::string SmallIfc::AddWall(int guid, std::string const& shape, std::string const& placement, std::string const& name,
                              std::string const& history) {
    return Add("IFCWALL('" + Guid(guid) + "'," + history + ",'" + name + "',$,$," + placement + "," + shape + ",$,$)");
}

std::string SmallIfc::AddRelation(std::string const& name, std::string const& rest) {
    return Add(name + "('" + Guid(nextGuid_++) + "',$,$,$," + rest + ")");
}

std::string SmallIfc::AddStyle(std::string const& item, std::string const& rgb, std::string const& transparency,
                               std::string const& side) {
    auto const colour = Add("IFCCOLOURRGB($," + rgb + ")");
    auto const rendering =
        Add("IFCSURFACESTYLERENDERING(" + colour + "," + transparency + ",$,$,$,$,$,$,.NOTDEFINED.)");
    auto const style = Add("IFCSURFACESTYLE($," + side + ",(" + rendering + "))");
    return Add("IFCSTYLEDITEM(" + item + ",(" + style + "),$)");
}

std::string SmallIfc::GetText() const {
    return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\n"
           "FILE_SCHEMA(('" +
           schema_ + "'));\nENDSEC;\nDATA;\n" + data_ + "ENDSEC;\nEND-ISO-10303-21;\n";
}

}  // namespace Quorlan::Testing
