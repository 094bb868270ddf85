#include "Reference.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <sstream>

namespace Quorlan::Testing {

namespace {

using namespace GeometryObjectLib;

constexpr double kBoxTolerance = 0.01;   ///< [m]
constexpr double kAreaTolerance = 0.01;  ///< [-]

double GetArea(FacetedBRep const& shape, std::vector<std::uint32_t> const& loop) {
    Vertex sum;
    for (std::size_t i = 1; i + 1 < loop.size(); ++i) {
        auto const& origin = shape.vertices[loop[0]];
        sum = sum + Cross(shape.vertices[loop[i]] - origin, shape.vertices[loop[i + 1]] - origin);
    }
    return Length(sum) / 2;
}

double GetArea(FacetedBRep const& shape) {
    double area = 0;
    for (std::size_t face = 0; face < shape.GetFaceCount(); ++face) {
        area += GetArea(shape, shape.GetOuterLoop(face));
        for (std::size_t i = 0; i < shape.GetInnerLoopCount(face); ++i) {
            area -= GetArea(shape, shape.GetInnerLoop(face, i));
        }
    }
    return area;
}

void Extend(Measure& measure, Vertex const& point) {
    std::array<double, 3> const p{point.x, point.y, point.z};
    for (std::size_t i = 0; i < 3; ++i) {
        measure.min[i] = std::min(measure.min[i], p[i]);
        measure.max[i] = std::max(measure.max[i], p[i]);
    }
}

std::string GetKey(Quorlan::IEntityReader const& entities, Quorlan::EntityIdentifier const& identifier) {
    std::string text;
    if (identifier.kind == 0) entities.GetGuidText(text, identifier.reference);
    if (identifier.kind == 1) entities.GetIdentifierString(text, identifier.reference);
    return text;
}

std::string Describe(std::string const& guid, Measure const& expected, std::string const& what) {
    return guid + " " + expected.type + what;
}

bool BoxAgrees(Measure const& a, Measure const& b) {
    for (std::size_t i = 0; i < 3; ++i) {
        if (!(std::abs(a.min[i] - b.min[i]) <= kBoxTolerance && std::abs(a.max[i] - b.max[i]) <= kBoxTolerance)) {
            return false;
        }
    }
    return true;
}

std::string FormatBox(Measure const& expected, Measure const& actual) {
    char text[256];
    std::snprintf(text, sizeof text, " min off by %.3f %.3f %.3f, max by %.3f %.3f %.3f",
                  actual.min[0] - expected.min[0], actual.min[1] - expected.min[1], actual.min[2] - expected.min[2],
                  actual.max[0] - expected.max[0], actual.max[1] - expected.max[1], actual.max[2] - expected.max[2]);
    return text;
}

}  // namespace

std::map<std::string, Measure> ReadReference(std::filesystem::path const& csv) {
    std::map<std::string, Measure> products;
    std::ifstream file(csv);
    std::string line;
    std::getline(file, line);  // the names of the columns
    while (std::getline(file, line)) {
        std::replace(line.begin(), line.end(), ',', ' ');
        std::istringstream row(line);
        std::string guid;
        Measure m;
        row >> guid >> m.type >> m.area >> m.volume >> m.min[0] >> m.min[1] >> m.min[2] >> m.max[0] >> m.max[1] >>
            m.max[2];
        if (row) products[guid] = m;
    }
    return products;
}

std::map<std::string, Measure> MeasureModel(Quorlan::IModelReader const& model) {
    std::map<std::string, Measure> products;
    auto const& geometry = model.GetGeometry();
    for (std::uint32_t i = 0; i < geometry.GetInstanceCount(); ++i) {
        Quorlan::InstanceRecord instance;
        geometry.GetInstance(instance, i);
        Quorlan::EntityIdentifier identifier;
        model.GetEntities().GetIdentifier(identifier, instance.entityIndex);
        AffineTransform placement;
        geometry.GetPlacement(placement, instance.placementIndex);
        FacetedBRep shape;
        if (!geometry.GetFacetedBRep(shape, instance.definitionIndex)) continue;

        constexpr auto kMax = std::numeric_limits<double>::max();
        auto const key = GetKey(model.GetEntities(), identifier);
        auto& measure =
            products.try_emplace(key, Measure{{}, 0, 0, {kMax, kMax, kMax}, {-kMax, -kMax, -kMax}}).first->second;
        auto const world = identifier.placement.matrix * placement.matrix;
        measure.area += GetArea(shape);
        for (auto const& vertex : shape.vertices) Extend(measure, TransformPoint(world, vertex));
    }
    return products;
}

Comparison Compare(std::map<std::string, Measure> const& reference, std::map<std::string, Measure> const& measured) {
    Comparison comparison;
    for (auto const& [guid, expected] : reference) {
        if (expected.type == "IfcOpeningElement") continue;
        ++comparison.reference;
        auto const found = measured.find(guid);
        if (found == measured.end()) {
            comparison.missing.push_back(Describe(guid, expected, ""));
            continue;
        }
        auto const& actual = found->second;
        if (!BoxAgrees(expected, actual)) {
            comparison.wrongBoxes.push_back(Describe(guid, expected, FormatBox(expected, actual)));
        }
        if (!(std::abs(actual.area - expected.area) <= kAreaTolerance * expected.area)) {
            auto const share = " area " + std::to_string(actual.area) + " instead of " + std::to_string(expected.area);
            comparison.wrongAreas.push_back(Describe(guid, expected, share));
        }
    }
    return comparison;
}

}  // namespace Quorlan::Testing
