#pragma once

#include "geometry/LaneMoves.h"
#include "model/ModelView.h"

#include <GeometryObjectLib/Ray3f.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

namespace Quorlan::Tools::Picking {

using GeometryObjectLib::Float4;
using GeometryObjectLib::LoadTriple;
using GeometryObjectLib::Ray3f;

/// What bounds all points that an edge or a line of one definition can give.
struct ContentBounds {
    Vector3f lo;
    Vector3f hi;

    /// Less than the parameter of any of these points along the ray, (p - origin) . direction, however it rounds; NaN
    /// where the bounds or the ray are not finite.
    float GetLowerBound(Ray3f const& ray) const {
        constexpr float kRounding = 8e-6f;  ///< [-] of the sum of all terms' sizes; a dozen roundings are 1e-6 of it
        Vector3f const center = (lo + hi) / 2;
        Vector3f const half = (hi - lo) / 2;
        Vector3f const& o = ray.origin;
        Vector3f const d{std::abs(ray.direction.x), std::abs(ray.direction.y), std::abs(ray.direction.z)};
        Vector3f const sizes{std::abs(center.x) + std::abs(o.x) + half.x, std::abs(center.y) + std::abs(o.y) + half.y,
                             std::abs(center.z) + std::abs(o.z) + half.z};
        return Dot(center - o, ray.direction) - Dot(d, half) - kRounding * Dot(d, sizes);
    }
};

/// The bounds of definitions' contents during one pick, remembered for the definitions used last.
///
/// They are taken from the vertices, not from the bounds that the buffer states: a pick must not depend on these.
class ContentBoundsCache {
public:
    explicit ContentBoundsCache(Schema::Geometry const& geometry) : geometry_(geometry) { definitions_.fill(kNone); }

    ContentBounds const& Get(std::uint32_t definition) {
        std::size_t const slot = definition % kSlots;
        if (definitions_[slot] != definition) {
            bounds_[slot] = Measure(*geometry_.definitions()->Get(definition));
            definitions_[slot] = definition;
        }
        return bounds_[slot];
    }

private:
    static constexpr std::size_t kSlots = 64;
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;

    class Extent {
    public:
        void Add(Float4 p) {
            lo_ = Min(lo_, p);
            hi_ = Max(hi_, p);
        }
        ContentBounds Get() const {
            float lo[4], hi[4];
            Store(lo_, lo);
            Store(hi_, hi);
            return {{lo[0], lo[1], lo[2]}, {hi[0], hi[1], hi[2]}};
        }

    private:
        Float4 lo_{std::numeric_limits<float>::infinity()};
        Float4 hi_{-std::numeric_limits<float>::infinity()};
    };

    ContentBounds Measure(Schema::GeometryDefinitionInfo const& definition) const {
        Extent extent;
        if (definition.kind() == kGraphicsContainer) {
            MeasureContainer(definition.kindIndex(), extent);
        } else if (auto const brep = Quorlan::FindBRep(geometry_, definition.kind(), definition.kindIndex())) {
            for (std::uint32_t i = 0; i < brep->vertexCount; ++i) {
                extent.Add(LoadTriple(brep->vertices + std::size_t{i} * brep->vertexStride));
            }
        }
        return extent.Get();
    }

    /// Arcs count as the spheres around their circles.
    void MeasureContainer(std::uint32_t index, Extent& extent) const {
        constexpr float kArcRounding = 1e-5f;  ///< [-] of the radius and the centre's coordinates
        auto const* const container =
            geometry_.graphicsContainers() == nullptr ? nullptr : geometry_.graphicsContainers()->Get(index);
        if (container == nullptr || container->segments() == nullptr || container->arcs() == nullptr) return;
        auto const toLanes = [](Schema::Vector3 const& v) { return Float4(v.x(), v.y(), v.z(), 0); };
        for (auto const* const line : *container->segments()) {
            extent.Add(toLanes(line->start()));
            extent.Add(toLanes(line->end()));
        }
        for (auto const* const arc : *container->arcs()) {
            Float4 const center = toLanes(arc->center());
            Float4 const radius(std::abs(arc->radius()));
            Float4 const reach = radius + Float4(kArcRounding) * (radius + Abs(center));
            extent.Add(center - reach);
            extent.Add(center + reach);
        }
    }

    Schema::Geometry const& geometry_;
    std::array<std::uint32_t, kSlots> definitions_;
    std::array<ContentBounds, kSlots> bounds_;
};

}  // namespace Quorlan::Tools::Picking
