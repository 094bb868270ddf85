#pragma once

#include "geometry/FrameLanes.h"
#include "model/ModelView.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

/// Instances of a model buffer, four at a time, in the lanes of `geometry/Lanes.h`.
///
/// A frame is computed again for every instance that uses it, also where instances share an entity: in lanes it costs
/// less than a table of frames costs to read.
namespace Quorlan {

using GeometryObjectLib::Double4;
using GeometryObjectLib::DoubleFrameLanes;
using GeometryObjectLib::Float4;
using GeometryObjectLib::FrameLanes;
using GeometryObjectLib::VectorLanes;

constexpr std::uint32_t kLaneCount = 4;
constexpr std::uint32_t kPrefetchDistance = 32;  ///< [instances]
constexpr std::size_t kEntityPlacement = 16;     ///< [bytes] into an entity's record
constexpr std::size_t kPlacementAxes = 24;       ///< [bytes] into a placement, behind its origin
constexpr std::size_t kDefinitionBounds = 8;     ///< [bytes] into a definition's record

/// Four records of one kind, wherever in the buffer they lie.
using RecordLanes = std::uint8_t const* [kLaneCount];

/// Two float triples that follow one another `offset` bytes into each record.
inline void LoadTriples(RecordLanes const& records, std::size_t offset, VectorLanes<Float4>& first,
                        VectorLanes<Float4>& second) {
#if QUORLAN_HAS_SSE2
    auto const load = [&](std::size_t lane, std::size_t skip) {
        return _mm_loadu_ps(reinterpret_cast<float const*>(records[lane] + offset + skip));
    };
    __m128 a = load(0, 0), b = load(1, 0), c = load(2, 0), d = load(3, 0);  // first.xyz, second.x
    _MM_TRANSPOSE4_PS(a, b, c, d);
    first = {a, b, c};
    second.x = d;
    __m128 e = load(0, 8), f = load(1, 8), g = load(2, 8), h = load(3, 8);  // first.z, second.xyz
    _MM_TRANSPOSE4_PS(e, f, g, h);
    second.y = g;
    second.z = h;
#else
    for (std::size_t lane = 0; lane < kLaneCount; ++lane) {
        float v[6];
        std::memcpy(v, records[lane] + offset, sizeof(v));
        first.x.lane[lane] = v[0];
        first.y.lane[lane] = v[1];
        first.z.lane[lane] = v[2];
        second.x.lane[lane] = v[3];
        second.y.lane[lane] = v[4];
        second.z.lane[lane] = v[5];
    }
#endif
}

/// The placements `offset` bytes into each record, as they are stored.
struct PlacementLanes {
    VectorLanes<Double4> origin;
    VectorLanes<Float4> xAxis;
    VectorLanes<Float4> yAxis;

    PlacementLanes(RecordLanes const& records, std::size_t offset) {
        LoadOrigins(records, offset);
        LoadTriples(records, offset + kPlacementAxes, xAxis, yAxis);
    }

    FrameLanes ToFrame() const { return FrameLanes::FromAxes(origin, xAxis, yAxis); }
    DoubleFrameLanes ToDoubleFrame() const { return DoubleFrameLanes::FromAxes(origin, xAxis, yAxis); }

private:
    void LoadOrigins(RecordLanes const& records, std::size_t offset) {
#if QUORLAN_HAS_SSE2
        auto const at = [&](std::size_t lane) { return reinterpret_cast<double const*>(records[lane] + offset); };
        auto const loadPair = [&](std::size_t lane, __m128d& x, __m128d& y, __m128d& z) {
            __m128d const a = _mm_loadu_pd(at(lane));
            __m128d const b = _mm_loadu_pd(at(lane + 1));
            x = _mm_unpacklo_pd(a, b);
            y = _mm_unpackhi_pd(a, b);
            z = _mm_loadh_pd(_mm_load_sd(at(lane) + 2), at(lane + 1) + 2);
        };
        loadPair(0, origin.x.lo, origin.y.lo, origin.z.lo);
        loadPair(2, origin.x.hi, origin.y.hi, origin.z.hi);
#else
        for (std::size_t lane = 0; lane < kLaneCount; ++lane) {
            double v[3];
            std::memcpy(v, records[lane] + offset, sizeof(v));
            origin.x.lane[lane] = v[0];
            origin.y.lane[lane] = v[1];
            origin.z.lane[lane] = v[2];
        }
#endif
    }
};

/// The arrays that instances lead into, found once so that the loops walk no tables.
struct InstanceArrays {
    explicit InstanceArrays(ModelView const& model)
        : count(model.GetInstanceCount()),
          instances(DataOf(model.geometry->instances())),
          placements(DataOf(model.geometry->placements())),
          entities(DataOf(model.records)),
          definitions(DataOf(model.geometry->definitions())) {}

    std::uint32_t count;
    std::uint8_t const* instances;
    std::uint8_t const* placements;
    std::uint8_t const* entities;
    std::uint8_t const* definitions;

    Schema::Instance const& GetInstance(std::uint32_t index) const {
        return *reinterpret_cast<Schema::Instance const*>(At<Schema::Instance>(instances, index));
    }
    std::uint8_t const* GetPlacement(Schema::Instance const& instance) const {
        return At<Schema::Placement>(placements, instance.placementIndex());
    }
    std::uint8_t const* GetEntity(Schema::Instance const& instance) const {
        return At<Schema::EntityRecord>(entities, instance.entityIndex());
    }
    std::uint8_t const* GetDefinition(Schema::Instance const& instance) const {
        return At<Schema::GeometryDefinitionInfo>(definitions, instance.definitionIndex());
    }

private:
    template <class Record>
    static std::uint8_t const* At(std::uint8_t const* records, std::uint32_t index) {
        return records + std::size_t{index} * sizeof(Record);
    }

    template <class Vector>
    static std::uint8_t const* DataOf(Vector const* vector) {
        return vector == nullptr ? nullptr : vector->Data();
    }
};

/// What four instances name. Behind a model's last instance, lanes repeat it.
struct InstanceLanes {
    RecordLanes placements;
    RecordLanes entities;
    RecordLanes definitions;

    /// REQUIRES: `first` is below the instance count. What later instances name is fetched into the cache; without
    /// definitions where the caller does not look at them.
    InstanceLanes(InstanceArrays const& arrays, std::uint32_t first, bool withDefinitions) {
        for (std::uint32_t lane = 0; lane < kLaneCount; ++lane) {
            auto const& instance = arrays.GetInstance(std::min(first + lane, arrays.count - 1));
            placements[lane] = arrays.GetPlacement(instance);
            entities[lane] = arrays.GetEntity(instance);
            definitions[lane] = withDefinitions ? arrays.GetDefinition(instance) : nullptr;
            auto const& later = arrays.GetInstance(std::min(first + lane + kPrefetchDistance, arrays.count - 1));
            QUORLAN_PREFETCH(arrays.GetPlacement(later));
            QUORLAN_PREFETCH(arrays.GetEntity(later) + kEntityPlacement);
            QUORLAN_PREFETCH(arrays.GetEntity(later) + sizeof(Schema::EntityRecord) - 1);
            if (withDefinitions) QUORLAN_PREFETCH(arrays.GetDefinition(later) + kDefinitionBounds);
        }
    }

    /// What the instances of a list name, from place `first` of `count` on.
    InstanceLanes(InstanceArrays const& arrays, std::uint32_t const* ids, std::size_t first, std::size_t count) {
        for (std::size_t lane = 0; lane < kLaneCount; ++lane) {
            auto const& instance = arrays.GetInstance(ids[std::min(first + lane, count - 1)]);
            placements[lane] = arrays.GetPlacement(instance);
            entities[lane] = arrays.GetEntity(instance);
            definitions[lane] = arrays.GetDefinition(instance);
        }
    }

    PlacementLanes GetPlacements() const { return {placements, 0}; }
    PlacementLanes GetEntityPlacements() const { return {entities, kEntityPlacement}; }
    void GetLocalBounds(VectorLanes<Float4>& lo, VectorLanes<Float4>& hi) const {
        LoadTriples(definitions, kDefinitionBounds, lo, hi);
    }
};

}  // namespace Quorlan
