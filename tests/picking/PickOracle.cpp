#include "picking/PickOracle.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Quorlan::Testing {
namespace {

struct Loop {
    std::vector<Vertex> points;

    /// Twice the area vector: the sum of the triangles fanned out from the first vertex.
    Vertex GetNormal() const {
        Vertex sum;
        for (std::size_t i = 1; i + 1 < points.size(); ++i) {
            sum = sum + Cross(points[i] - points[0], points[i + 1] - points[0]);
        }
        return sum / Length(sum);
    }

    /// Whether the sum of the angles under which the edges are seen from `p` goes round once.
    bool Contains(Vertex const& p, Vertex const& normal) const {
        double sum = 0;
        for (std::size_t i = 0; i < points.size(); ++i) {
            Vertex const a = points[i] - p;
            Vertex const b = points[(i + 1) % points.size()] - p;
            sum += std::atan2(Dot(normal, Cross(a, b)), Dot(a, b));
        }
        return std::abs(sum) > 3;
    }

    double GetDistanceToEdges(Vertex const& p) const {
        double least = std::numeric_limits<double>::max();
        for (std::size_t i = 0; i < points.size(); ++i) {
            Vertex const edge = points[(i + 1) % points.size()] - points[i];
            double const s = std::clamp(Dot(p - points[i], edge) / Dot(edge, edge), 0.0, 1.0);
            least = std::min(least, Length(p - points[i] - edge * s));
        }
        return least;
    }
};

class WorldPick {
public:
    WorldPick(Vertex const& origin, Vertex const& direction, std::vector<GeometryObjectLib::Plane3f> const& planes,
              double slack)
        : origin_(origin), direction_(direction), planes_(planes), slack_(slack) {}

    /// Whether the ray meets the loop, by the rules of the surface builders.
    bool Meets(Loop const& loop, Vertex const& normal, double& t) {
        double const height = Dot(normal, origin_ - loop.points[0]);
        Note(height);
        if (height < 0) return false;
        double const slope = Dot(normal, direction_);
        if (std::abs(slope) < 1e-3) {
            Note(0);
            return false;
        }
        t = -height / slope;
        Vertex const point = origin_ + direction_ * t;
        for (auto const& plane : planes_) {
            Vertex const n{plane.normal.x, plane.normal.y, plane.normal.z};
            double const outside = Dot(n, point) - plane.distance;
            if (loop.Contains(point, normal)) Note(outside);
            if (outside > 0) return false;
        }
        Note(loop.GetDistanceToEdges(point) * std::abs(slope));
        return loop.Contains(point, normal);
    }

    /// Whether the ray's line meets the sphere around the definition's bounds.
    bool ComesNear(RawDefinition const& definition, Matrix4 const& worldFromLocal) const {
        Vertex const lo = TransformPoint(worldFromLocal, {definition.lo.x, definition.lo.y, definition.lo.z});
        Vertex const hi = TransformPoint(worldFromLocal, {definition.hi.x, definition.hi.y, definition.hi.z});
        Vertex const toCenter = (lo + hi) / 2 - origin_;
        Vertex const across = toCenter - direction_ * (Dot(toCenter, direction_) / Dot(direction_, direction_));
        return Length(across) <= Length(hi - lo) / 2 + slack_;
    }

    void PickFaces(RawBRep const& shape, Matrix4 const& worldFromLocal, bool isTwoSided, OraclePick& pick) {
        auto const place = [&](RawLoop const& indices) {
            Loop loop;
            for (auto const index : *indices) {
                Vector3f const& v = (*shape.vertices)[index];
                loop.points.push_back(TransformPoint(worldFromLocal, {v.x, v.y, v.z}));
            }
            return loop;
        };
        std::vector<bool> isExcluded(shape.faces->size());
        double t = 0;
        for (auto const& hole : shape.holes.value_or(std::vector<RawHole>())) {
            Loop const loop = place(hole.loop);
            if (Meets(loop, loop.GetNormal() * -1.0, t)) isExcluded[hole.face] = true;
        }
        for (std::uint32_t face = 0; face < shape.faces->size(); ++face) {
            Loop const loop = place((*shape.faces)[face]);
            Vertex const normal = loop.GetNormal();
            if (isExcluded[face] || (!isTwoSided && !(Dot(normal, direction_) < 0))) continue;
            if (!Meets(loop, normal, t)) continue;
            pick.isHit = true;  // the last face wins
            pick.t = t;
            pick.face = face;
            pick.normal = normal;
            pick.point = origin_ + direction_ * t;
        }
    }

    bool IsClear() const { return isClear_; }

private:
    void Note(double margin) { isClear_ = isClear_ && std::abs(margin) > slack_; }

    Vertex origin_;
    Vertex direction_;
    std::vector<GeometryObjectLib::Plane3f> const& planes_;
    double slack_;
    bool isClear_ = true;
};

}  // namespace

OraclePick PickSurfacesInWorld(RawModel const& model, AffineTransform const& transform,
                               Tools::Picking::ViewProjection const& view, double x, double y,
                               std::vector<GeometryObjectLib::Plane3f> const& planes,
                               std::vector<unsigned> const& instances, double slack) {
    Vertex origin;
    Vertex direction;
    ViewToWorld(view, x, y, origin, direction);
    WorldPick world(origin, direction, planes, slack);
    OraclePick best;
    bool isTie = false;
    for (unsigned const id : instances) {
        auto const& instance = (*model.instances)[id];
        auto const& definition = (*model.definitions)[instance.definitionIndex];
        bool const isTwoSided =
            instance.materialIndex != kInvalidIndex && (*model.materials)[instance.materialIndex].twoSided == 1;
        auto const* const shapes = definition.kind == 1   ? &model.facetedBReps
                                   : definition.kind == 6 ? &model.brepsWithUV
                                   : definition.kind == 7 ? &model.brepsWithNormal
                                                          : nullptr;
        if (shapes == nullptr) continue;
        Matrix4 const worldFromLocal = transform.matrix * GetModelFromLocal(model, id);
        if (!world.ComesNear(definition, worldFromLocal)) continue;
        OraclePick pick;
        pick.instance = id;
        world.PickFaces((**shapes)[definition.kindIndex], worldFromLocal, isTwoSided, pick);
        if (!pick.isHit) continue;
        isTie = isTie || (best.isHit && std::abs(pick.t - best.t) < slack);
        if (!best.isHit || pick.t < best.t) best = pick;
    }
    best.isClear = world.IsClear() && !isTie;
    return best;
}

}  // namespace Quorlan::Testing
