#include "ifc/Placement.h"

#include <ifcpp/IFC4/include/IfcAxis2Placement2D.h>
#include <ifcpp/IFC4/include/IfcAxis2Placement3D.h>
#include <ifcpp/IFC4/include/IfcCartesianPoint.h>
#include <ifcpp/IFC4/include/IfcCartesianTransformationOperator2D.h>
#include <ifcpp/IFC4/include/IfcCartesianTransformationOperator2DnonUniform.h>
#include <ifcpp/IFC4/include/IfcCartesianTransformationOperator3D.h>
#include <ifcpp/IFC4/include/IfcCartesianTransformationOperator3DnonUniform.h>
#include <ifcpp/IFC4/include/IfcDirection.h>
#include <ifcpp/IFC4/include/IfcLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcLocalPlacement.h>
#include <ifcpp/IFC4/include/IfcMappedItem.h>
#include <ifcpp/IFC4/include/IfcReal.h>
#include <ifcpp/IFC4/include/IfcRepresentationMap.h>

#include <array>
#include <cmath>
#include <unordered_set>

#include "shape/Shape.h"

namespace QuorlanProgram::Import {

namespace {

using GeometryObjectLib::Cross;
using GeometryObjectLib::Dot;
using GeometryObjectLib::Length;
using GeometryObjectLib::Vertex;

constexpr double kParallelSine = 1e-9;  ///< [-] smaller sines count as parallel

template <typename Values>
Vertex ToVertex(Values const& values) {
    std::array<double, 3> v{};
    for (std::size_t i = 0; i < v.size() && i < values.size(); ++i) {
        if (values[i] && std::isfinite(values[i]->m_value)) v[i] = values[i]->m_value;
    }
    return {v[0], v[1], v[2]};
}

Vertex ToPoint(IfcCartesianPoint const* point) { return point ? ToVertex(point->m_Coordinates) : Vertex{}; }

/// The unit direction, or `fallback` where there is none.
Vertex ToUnit(IfcDirection const* direction, Vertex const& fallback) {
    if (!direction) return fallback;
    auto const v = ToVertex(direction->m_DirectionRatios);
    auto const length = Length(v);
    return length > 0 ? v / length : fallback;
}

/// The part of `v` that is perpendicular to the unit vector `axis`, as a unit vector; that of a coordinate axis where
/// nothing of `v` remains.
Vertex Perpendicular(Vertex const& v, Vertex const& axis) {
    for (auto const& candidate : {v, Vertex{1, 0, 0}, Vertex{0, 1, 0}}) {
        auto const rest = candidate - Dot(candidate, axis) * axis;
        auto const length = Length(rest);
        if (length > kParallelSine * (1 + Length(candidate))) return rest / length;
    }
    return {1, 0, 0};
}

Matrix4 ToMatrix(Vertex const& x, Vertex const& y, Vertex const& z, Vertex const& origin) {
    Matrix4 matrix;
    matrix.m = {x.x, y.x, z.x, origin.x, x.y, y.y, z.y, origin.y, x.z, y.z, z.z, origin.z, 0, 0, 0, 1};
    return matrix;
}

Matrix4 ToFrame(Vertex const& z, Vertex const& reference, Vertex const& origin) {
    auto const x = Perpendicular(reference, z);
    return ToMatrix(x, Cross(z, x), z, origin);
}

bool IsUsable(Vertex const& v) {
    auto const isUsable = [](double c) { return std::abs(c) <= kLargestCoordinate; };  // false for what is no number
    return isUsable(v.x) && isUsable(v.y) && isUsable(v.z);
}

/// False where a coordinate that is given is none.
bool HasUsablePoint(IfcPlacement const* placement) {
    if (!placement || !placement->m_Location) return true;
    for (auto const& coordinate : placement->m_Location->m_Coordinates) {
        if (!coordinate || !std::isfinite(coordinate->m_value)) return false;
    }
    return true;
}

bool IsNoDirection(IfcDirection const* direction) {
    return direction && !(Length(ToVertex(direction->m_DirectionRatios)) > 0);
}

/// True where an axis that is given is none, or is parallel to the other.
bool NeedsRepair(IfcPlacement const* placement) {
    if (auto const* plane = dynamic_cast<IfcAxis2Placement2D const*>(placement)) {
        return IsNoDirection(plane->m_RefDirection.get());
    }
    auto const* place = dynamic_cast<IfcAxis2Placement3D const*>(placement);
    if (!place) return false;
    if (IsNoDirection(place->m_Axis.get()) || IsNoDirection(place->m_RefDirection.get())) return true;
    if (!place->m_RefDirection) return false;
    auto const z = ToUnit(place->m_Axis.get(), {0, 0, 1});
    return !(Length(Cross(z, ToUnit(place->m_RefDirection.get(), {1, 0, 0}))) > kParallelSine);
}

template <typename Scale>
double ToScale(Scale const& scale, double fallback) {
    return scale && std::isfinite(scale->m_value) && scale->m_value != 0 ? scale->m_value : fallback;
}

Matrix4 ToOperator(IfcCartesianTransformationOperator const& op, double metresPerUnit) {
    auto const* op3 = dynamic_cast<IfcCartesianTransformationOperator3D const*>(&op);
    auto const z = op3 ? ToUnit(op3->m_Axis3.get(), {0, 0, 1}) : Vertex{0, 0, 1};
    auto const x = Perpendicular(ToUnit(op.m_Axis1.get(), {1, 0, 0}), z);
    auto const left = Cross(z, x);
    // The second axis is given to say whether the operator mirrors; its direction follows from the others.
    auto const given = ToUnit(op.m_Axis2.get(), left);
    auto const y = Dot(given, left) < 0 ? -1.0 * left : left;

    auto const scale = ToScale(op.m_Scale, 1);
    auto scaleY = scale;
    auto scaleZ = scale;
    if (auto const* uneven = dynamic_cast<IfcCartesianTransformationOperator3DnonUniform const*>(&op)) {
        scaleY = ToScale(uneven->m_Scale2, scale);
        scaleZ = ToScale(uneven->m_Scale3, scale);
    } else if (auto const* uneven2 = dynamic_cast<IfcCartesianTransformationOperator2DnonUniform const*>(&op)) {
        scaleY = ToScale(uneven2->m_Scale2, scale);
    }
    return ToMatrix(scale * x, scaleY * y, scaleZ * z, metresPerUnit * ToPoint(op.m_LocalOrigin.get()));
}

}  // namespace

Matrix4 PlacementReader::GetLocal(IfcPlacement const* placement) const {
    if (!placement) return {};
    auto const origin = metresPerUnit_ * ToPoint(placement->m_Location.get());
    if (auto const* place = dynamic_cast<IfcAxis2Placement3D const*>(placement)) {
        return ToFrame(ToUnit(place->m_Axis.get(), {0, 0, 1}), ToUnit(place->m_RefDirection.get(), {1, 0, 0}), origin);
    }
    if (auto const* plane = dynamic_cast<IfcAxis2Placement2D const*>(placement)) {
        return ToFrame({0, 0, 1}, ToUnit(plane->m_RefDirection.get(), {1, 0, 0}), origin);
    }
    return ToFrame({0, 0, 1}, {1, 0, 0}, origin);
}

WorldPlacement const& PlacementReader::GetWorld(IfcObjectPlacement const* placement) {
    auto const entry = worlds_.try_emplace(placement);
    auto& world = entry.first->second;
    if (!entry.second) return world;

    std::unordered_set<IfcObjectPlacement const*> met;
    for (auto const* at = placement; at && met.insert(at).second;) {
        auto const* local = dynamic_cast<IfcLocalPlacement const*>(at);
        if (!local) {
            world.isUsable = false;
            break;
        }
        auto const* relative = dynamic_cast<IfcPlacement const*>(local->m_RelativePlacement.get());
        world.isUsable = world.isUsable && HasUsablePoint(relative);
        world.isRepaired = world.isRepaired || NeedsRepair(relative);
        world.matrix = GetLocal(relative) * world.matrix;
        at = local->m_PlacementRelTo.get();
    }
    world.isUsable = world.isUsable && IsUsable(world.matrix.GetColumn(3));
    return world;
}

Matrix4 PlacementReader::GetMapping(IfcMappedItem const& item) const {
    Matrix4 mapping;
    if (item.m_MappingTarget) mapping = ToOperator(*item.m_MappingTarget, metresPerUnit_);
    if (!item.m_MappingSource) return mapping;
    return mapping * GetLocal(dynamic_cast<IfcPlacement const*>(item.m_MappingSource->m_MappingOrigin.get()));
}

}  // namespace QuorlanProgram::Import
