#include "analysis/PlacedInstances.h"

#include "analysis/PlacedInstancesAvx2.h"
#include "model/InstanceLanes.h"
#include "model/LargePages.h"

#include <algorithm>
#include <array>
#include <type_traits>

namespace Quorlan {
namespace {

static_assert(sizeof(Matrix4) == 16 * sizeof(double));
static_assert(sizeof(AxisAlignedBox3) == 6 * sizeof(double));

static_assert(sizeof(Schema::Instance) == InstanceLayout::kInstanceSize);
static_assert(sizeof(Schema::Placement) == InstanceLayout::kPlacementSize);
static_assert(sizeof(Schema::EntityRecord) == InstanceLayout::kEntitySize);
static_assert(sizeof(Schema::GeometryDefinitionInfo) == InstanceLayout::kDefinitionSize);

constexpr std::uint32_t kLongestGroup =
    8;  ///< instances that are computed at once; those behind the last are written too

InstanceBytes GetBytes(InstanceArrays const& arrays) {
    return {arrays.instances, arrays.placements, arrays.entities, arrays.definitions};
}

/// How many of `size` instances from `first` on the code for AVX2 takes: whole groups, and none so near to the last
/// that what it prefetches would lie behind it.
std::uint32_t CountWide(InstanceArrays const& arrays, std::uint32_t first, std::uint32_t size) {
    constexpr std::uint32_t kDistance = kAvx2PrefetchDistance;
    std::uint32_t const left = arrays.count - first;
    return std::min(size, left - std::min(left, kDistance)) / kLongestGroup * kLongestGroup;
}

/// Some of the results, one after the other.
template <class Value>
struct ResultBlock {
    std::uint32_t first;  ///< instance
    std::uint32_t size;
    Value* out;                ///< where they are written
    Value const* destination;  ///< where they will be in the end, for the cache
};

/// Fills `results` with one value per instance: `compute(block)` writes those of a block.
///
/// Values that are there from an earlier build are overwritten in place. New ones are computed in memory that stays in
/// the first cache and appended to reserved memory block by block, so that nothing is constructed to be overwritten.
template <class Value, class Compute>
void FillByBlocks(std::vector<Value>& results, std::uint32_t count, Compute compute) {
    static_assert(std::is_trivially_copyable_v<Value>);
    constexpr std::uint32_t kBlock = 16384 / sizeof(Value) / kLongestGroup * kLongestGroup;
    alignas(64) std::array<Value, kBlock> fresh;
    results.resize(std::min<std::size_t>(results.size(), count) / kBlock * kBlock);
    if (results.capacity() < count) {
        results.reserve(count);
        if (count * sizeof(Value) >= kLargePageSize) AdviseLargePages(results.data(), count * sizeof(Value));
    }
    for (std::uint32_t first = 0; first < count; first += kBlock) {
        std::uint32_t const size = std::min(kBlock, count - first);
        bool const isInPlace = first < results.size();
        Value* const destination = results.data() + first;
        compute(ResultBlock<Value>{first, size, isInPlace ? destination : fresh.data(), destination});
        if (!isInPlace) results.insert(results.end(), fresh.data(), fresh.data() + size);
    }
}

/// Fetches what four results, kPrefetchDistance behind those at `results`, will overwrite: stores would wait for it.
template <class Value>
void PrefetchResults(Value const* results) {
    auto const* const bytes = reinterpret_cast<char const*>(results + kPrefetchDistance);
    for (std::size_t i = 0; i < kLaneCount * sizeof(Value); i += 64) QUORLAN_PREFETCH(bytes + i);
}

DoubleFrameLanes ComputeWorldFrames(InstanceArrays const& arrays, std::uint32_t first) {
    InstanceLanes const instances(arrays, first, false);
    return instances.GetEntityPlacements().ToDoubleFrame() * instances.GetPlacements().ToDoubleFrame();
}

void StoreRow(Double4 const& x, Double4 const& y, Double4 const& z, Double4 const& origin, std::size_t row,
              Matrix4* out) {
    StorePairs(x, y, out->m.data() + 4 * row, 16);
    StorePairs(z, origin, out->m.data() + 4 * row + 2, 16);
}

void StoreMatrices(DoubleFrameLanes const& frames, Matrix4* out) {
    StoreRow(frames.x.x, frames.y.x, frames.z.x, frames.origin.x, 0, out);
    StoreRow(frames.x.y, frames.y.y, frames.z.y, frames.origin.y, 1, out);
    StoreRow(frames.x.z, frames.y.z, frames.z.z, frames.origin.z, 2, out);
    StoreRow(Double4(0.0), Double4(0.0), Double4(0.0), Double4(1.0), 3, out);
}

/// The products transform * frame, with the terms of the frames' last row (0, 0, 0, 1) in their places.
void StoreProducts(Matrix4 const& transform, DoubleFrameLanes const& frames, Matrix4* out) {
    for (std::size_t row = 0; row < 4; ++row) {
        Double4 const a(transform(row, 0));
        Double4 const b(transform(row, 1));
        Double4 const c(transform(row, 2));
        Double4 const withZero(transform(row, 3) * 0.0);
        Double4 const withOne(transform(row, 3));
        auto const multiply = [&](VectorLanes<Double4> const& column) {
            return a * column.x + b * column.y + c * column.z;
        };
        StoreRow(multiply(frames.x) + withZero, multiply(frames.y) + withZero, multiply(frames.z) + withZero,
                 multiply(frames.origin) + withOne, row, out);
    }
}

}  // namespace

void ComputeBoxes(ModelView const& model, Frame const& caller, std::vector<AxisAlignedBox3>& boxes,
                  [[maybe_unused]] bool usesAvx2) {
    InstanceArrays const arrays(model);
    auto const callerLanes = FrameLanes::FromFrame(caller);
    FillByBlocks(boxes, arrays.count, [&](ResultBlock<AxisAlignedBox3> const& block) {
        std::uint32_t i = 0;
#if QUORLAN_HAS_AVX2
        if (usesAvx2) {
            i = CountWide(arrays, block.first, block.size);
            ComputeBoxesAvx2(GetBytes(arrays), {caller.origin.x, caller.origin.y, caller.origin.z},
                             {caller.x.x, caller.x.y, caller.x.z, caller.y.x, caller.y.y, caller.y.z, caller.z.x,
                              caller.z.y, caller.z.z},
                             block.first, i, &block.out->center.x, &block.destination->center.x);
        }
#endif
        for (; i < block.size; i += kLaneCount) {
            PrefetchResults(block.destination + i);
            InstanceLanes const instances(arrays, block.first + i, true);
            auto const world =
                callerLanes * (instances.GetEntityPlacements().ToFrame() * instances.GetPlacements().ToFrame());
            VectorLanes<Float4> lo;
            VectorLanes<Float4> hi;
            instances.GetLocalBounds(lo, hi);
            TransformBox(world, lo, hi).Store(block.out + i);
        }
    });
}

void ComputePlacements(ModelView const& model, Matrix4 const* transform, std::vector<Matrix4>& placements,
                       [[maybe_unused]] bool usesAvx2) {
    InstanceArrays const arrays(model);
    FillByBlocks(placements, arrays.count, [&](ResultBlock<Matrix4> const& block) {
        std::uint32_t i = 0;
#if QUORLAN_HAS_AVX2
        if (usesAvx2) {
            i = CountWide(arrays, block.first, block.size);
            ComputePlacementsAvx2(GetBytes(arrays), transform == nullptr ? nullptr : transform->m.data(), block.first,
                                  i, block.out->m.data(), block.destination->m.data());
        }
#endif
        for (; i < block.size; i += kLaneCount) {
            PrefetchResults(block.destination + i);
            auto const world = ComputeWorldFrames(arrays, block.first + i);
            if (transform == nullptr) {
                StoreMatrices(world, block.out + i);
            } else {
                StoreProducts(*transform, world, block.out + i);
            }
        }
    });
}

}  // namespace Quorlan
