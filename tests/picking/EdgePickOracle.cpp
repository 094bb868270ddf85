#include "picking/EdgeScenes.h"
#include "picking/PickOracle.h"

#include <Tools/Picking/RayToBRepEdgesBuilder.h>
#include <Tools/Picking/RayToGraphicsContainerBuilder.h>

#include <glm/geometric.hpp>
#include <glm/vec3.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Quorlan::Testing {
namespace {

using namespace Tools::Picking;

/// The inverse of an affine matrix, by Cramer's rule.
Matrix4 InvertAffine(Matrix4 const& matrix) {
    Vertex const x = matrix.GetColumn(0);
    Vertex const y = matrix.GetColumn(1);
    Vertex const z = matrix.GetColumn(2);
    double const determinant = Dot(x, Cross(y, z));
    Vertex const rows[] = {Cross(y, z) / determinant, Cross(z, x) / determinant, Cross(x, y) / determinant};
    Matrix4 inverse;
    for (std::size_t row = 0; row < 3; ++row) {
        inverse(row, 0) = rows[row].x;
        inverse(row, 1) = rows[row].y;
        inverse(row, 2) = rows[row].z;
        inverse(row, 3) = -Dot(rows[row], matrix.GetColumn(3));
    }
    return inverse;
}

glm::vec3 Narrow(Vertex const& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

/// Pixels per unit of distance at unit depth, and per unit of distance at any depth.
void GetScreenFactors(ViewProjection const& view, double& atUnitDepth, double& atAnyDepth) {
    atUnitDepth = 0;
    atAnyDepth = 0;
    if (view.IsPerspective()) {
        atUnitDepth = std::max(view.GetSizeX(), view.GetSizeY()) / 2 / std::tan(view.GetAngle() / 2);
    } else {
        atAnyDepth = 1 / view.GetScale();
    }
}

struct Task {
    RawModel const& model;
    std::vector<char> const& buffer;
    AffineTransform const& transform;
    ViewProjection const& view;
    std::vector<Plane3f> const& planes;
    std::vector<unsigned> const& instances;
    unsigned kindMask;
};

/// One definition through its builder. RETURNS false on a miss.
bool FindEdge(Task const& task, RawDefinition const& definition, glm::vec3 const& origin, glm::vec3 const& direction,
              std::vector<glm::vec4> const& planes, glm::vec3& point, OraclePick& pick) {
    RayToBRepEdgesBuilder edges;
    RayToGraphicsContainerBuilder lines;
    if (definition.kind == 5) {
        if (!lines.Build(origin, direction, planes, task.buffer, definition.kindIndex)) return false;
        point = lines.GetNearestPoint();
        pick.t = lines.GetRayParameter();
        pick.face = lines.HitSegmentNumber();
        return true;
    }
    auto const build = definition.kind == 1   ? &RayToBRepEdgesBuilder::BuildBRep
                       : definition.kind == 6 ? &RayToBRepEdgesBuilder::BuildBRepWithUV
                                              : &RayToBRepEdgesBuilder::BuildBRepWithNormal;
    if (!(edges.*build)(origin, direction, planes, task.buffer, definition.kindIndex)) return false;
    point = edges.GetEdgePoint();
    pick.t = edges.GetRayParameter();
    pick.face = static_cast<std::uint32_t>(edges.GetWireIndex());
    return true;
}

OraclePick PickOnce(Task const& task, double x, double y, double tolerance) {
    Vertex worldOrigin;
    Vertex worldDirection;
    ViewToWorld(task.view, x, y, worldOrigin, worldDirection);
    double atUnitDepth = 0;
    double atAnyDepth = 0;
    GetScreenFactors(task.view, atUnitDepth, atAnyDepth);
    OraclePick best;
    best.t = std::numeric_limits<float>::max();
    for (unsigned const id : task.instances) {
        auto const& definition = (*task.model.definitions)[(*task.model.instances)[id].definitionIndex];
        if ((task.kindMask >> definition.kind & 1u) == 0) continue;
        Matrix4 const worldFromLocal = task.transform.matrix * GetModelFromLocal(task.model, id);
        Matrix4 const localFromWorld = InvertAffine(worldFromLocal);
        glm::vec3 const origin = Narrow(TransformPoint(localFromWorld, worldOrigin));
        glm::vec3 const direction = Narrow(TransformDirection(localFromWorld, worldDirection));
        std::vector<glm::vec4> planes;
        for (Plane3f const& plane : task.planes) {
            Vertex const n = ToVertex(plane.normal);
            Vertex const local{Dot(worldFromLocal.GetColumn(0), n), Dot(worldFromLocal.GetColumn(1), n),
                               Dot(worldFromLocal.GetColumn(2), n)};
            planes.emplace_back(Narrow(local),
                                static_cast<float>(plane.distance - Dot(n, worldFromLocal.GetColumn(3))));
        }
        OraclePick pick;
        glm::vec3 point(0);
        if (!FindEdge(task, definition, origin, direction, planes, point, pick) || !(pick.t < best.t)) continue;
        glm::dvec3 const toPoint = point - origin;
        glm::dvec3 const along = direction;
        double const distance = glm::length(toPoint - glm::dot(along, toPoint) * along);
        if (!(distance / pick.t * atUnitDepth + distance * atAnyDepth < tolerance)) continue;
        best = pick;
        best.isHit = true;
        best.instance = id;
        best.point = TransformPoint(worldFromLocal, {point.x, point.y, point.z});
    }
    return best;
}

}  // namespace

OraclePick PickEdgesOneByOne(RawModel const& model, std::vector<char> const& buffer, AffineTransform const& transform,
                             ViewProjection const& view, double x, double y, std::vector<Plane3f> const& planes,
                             std::vector<unsigned> const& instances, unsigned kindMask, double tolerance) {
    Task const task{model, buffer, transform, view, planes, instances, kindMask};
    OraclePick pick = PickOnce(task, x, y, tolerance);
    auto const agrees = [&](OraclePick const& other) {
        return other.isHit == pick.isHit && other.instance == pick.instance && other.face == pick.face &&
               (!pick.isHit || Length(other.point - pick.point) < 0.01);
    };
    pick.isClear = agrees(PickOnce(task, x + 0.01, y, tolerance)) && agrees(PickOnce(task, x, y - 0.01, tolerance)) &&
                   agrees(PickOnce(task, x, y, tolerance * 1.001)) && agrees(PickOnce(task, x, y, tolerance * 0.999));
    return pick;
}

}  // namespace Quorlan::Testing
