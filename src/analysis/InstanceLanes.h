#pragma once

#include "geometry/FrameLanes.h"
#include "model/ModelView.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

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
        double o[kLaneCount][3];
        for (std::size_t lane = 0; lane < kLaneCount; ++lane) std::memcpy(o[lane], records[lane] + offset, sizeof(*o));
        origin = {Double4(o[0][0], o[1][0], o[2][0], o[3][0]), Double4(o[0][1], o[1][1], o[2][1], o[3][1]),
                  Double4(o[0][2], o[1][2], o[2][2], o[3][2])};
        LoadTriples(records, offset + 24, xAxis, yAxis);
    }

    FrameLanes ToFrame() const { return FrameLanes::FromAxes(origin, xAxis, yAxis); }
    DoubleFrameLanes ToDoubleFrame() const { return DoubleFrameLanes::FromAxes(origin, xAxis, yAxis); }
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

private:
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

    /// REQUIRES: `first` is below the instance count.
    InstanceLanes(InstanceArrays const& arrays, std::uint32_t first) {
        for (std::uint32_t lane = 0; lane < kLaneCount; ++lane) {
            auto const* const instance = reinterpret_cast<Schema::Instance const*>(
                At<Schema::Instance>(arrays.instances, std::min(first + lane, arrays.count - 1)));
            placements[lane] = At<Schema::Placement>(arrays.placements, instance->placementIndex());
            entities[lane] = At<Schema::EntityRecord>(arrays.entities, instance->entityIndex());
            definitions[lane] = At<Schema::GeometryDefinitionInfo>(arrays.definitions, instance->definitionIndex());
        }
    }

    PlacementLanes GetPlacements() const { return {placements, 0}; }
    PlacementLanes GetEntityPlacements() const { return {entities, 16}; }
    void GetLocalBounds(VectorLanes<Float4>& lo, VectorLanes<Float4>& hi) const { LoadTriples(definitions, 8, lo, hi); }

private:
    template <class Record>
    static std::uint8_t const* At(std::uint8_t const* records, std::uint32_t index) {
        return records + std::size_t{index} * sizeof(Record);
    }
};

/// Fills `results` with one value per instance: `compute(first, out)` writes the four values from instance `first` on.
///
/// The vector grows block by block into reserved memory, so that the values it constructs are still in the first cache
/// when they are overwritten.
template <class Value, class Compute>
void FillByLanes(std::vector<Value>& results, std::uint32_t count, Compute compute) {
    constexpr std::uint32_t kBlock = 16384 / sizeof(Value) / kLaneCount * kLaneCount;
    results.clear();
    results.reserve(count);
    for (std::uint32_t blockFirst = 0; blockFirst < count; blockFirst += kBlock) {
        std::uint32_t const blockEnd = blockFirst + std::min(kBlock, count - blockFirst);
        results.resize(blockEnd);
        std::uint32_t first = blockFirst;
        for (; blockEnd - first >= kLaneCount; first += kLaneCount) compute(first, &results[first]);
        if (first == blockEnd) continue;
        Value tail[kLaneCount];
        compute(first, tail);
        std::copy(tail, tail + (blockEnd - first), &results[first]);
    }
}

}  // namespace Quorlan
