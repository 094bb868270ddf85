#include <Tools/LodLineBuilder.h>

#include "model/ModelView.h"

#include <Tools/LodLineBRepBuilder.h>
#include <Tools/PlacementBuilder.h>

#include <cmath>

namespace Quorlan::Tools {
namespace {

constexpr double kPi = 3.141592653589793;

/// The middle line of a box along its longest edge, and the box's half diagonal across it.
struct BoxLine {
    Vector3f start;
    Vector3f end;
    float radius;
};

BoxLine LineOf(Vector3f const& lo, Vector3f const& hi) {
    Vector3f const d = hi - lo;
    Vector3f across = d * 0.5F;
    if (d.x > d.y) {
        (d.x > d.z ? across.x : across.z) = 0;
    } else {
        (d.y > d.z ? across.y : across.z) = 0;
    }
    return {lo + across, hi - across, Length(across)};
}

LodLine Place(Matrix4 const& placement, Vertex const& start, Vertex const& end, float radius, std::uint32_t material) {
    return {TransformPoint(placement, start), TransformPoint(placement, end), static_cast<double>(radius), material};
}

double CylinderVolume(LodLine const& line) { return Length(line.end - line.start) * kPi * (line.radius * line.radius); }

LodLine LineOf(Schema::GeometryDefinitionInfo const& definition, LodLineBRepBuilder const& brepLines,
               Matrix4 const& placement, std::uint32_t material) {
    BoxLine const box = LineOf(ToVector3f(definition.boundsMin()), ToVector3f(definition.boundsMax()));
    LodLine const boxLine = Place(placement, ToVertex(box.start), ToVertex(box.end), box.radius, material);
    if (definition.kindIndex() >= brepLines.GetLineCount(definition.kind())) return boxLine;

    auto const& brep = brepLines.GetLine(definition.kind(), definition.kindIndex());
    LodLine const brepLine = Place(placement, {brep.startX, brep.startY, brep.startZ},
                                   {brep.endX, brep.endY, brep.endZ}, brep.radius, material);
    return CylinderVolume(boxLine) > CylinderVolume(brepLine) ? brepLine : boxLine;
}

}  // namespace

bool LodLineBuilder::Build(void const* buffer) {
    lines_.clear();
    PlacementBuilder placements;
    return placements.Build(buffer) && Build(buffer, placements.getPlacements());
}

bool LodLineBuilder::Build(void const* buffer, std::vector<Matrix4> const& placements) {
    LodLineBRepBuilder brepLines;
    if (!brepLines.Build(static_cast<char const*>(buffer))) return false;
    auto const* const geometry = Schema::GetModel(buffer)->geometry();
    if (geometry->instances() == nullptr) return false;

    lines_.resize(geometry->instances()->size());
    for (std::uint32_t i = 0; i < lines_.size(); ++i) {
        auto const* const instance = geometry->instances()->Get(i);
        if (instance->definitionIndex() >= CountOf(geometry->definitions())) return false;
        auto const* const definition = geometry->definitions()->Get(instance->definitionIndex());
        lines_[i] = LineOf(*definition, brepLines, placements[i], instance->materialIndex());
    }
    return true;
}

}  // namespace Quorlan::Tools
