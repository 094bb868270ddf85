#include <Tools/PlacementBuilder.h>

#include "model/InstanceLanes.h"
#include "model/ModelView.h"

namespace Quorlan::Tools {
namespace {

static_assert(sizeof(Matrix4) == 16 * sizeof(double));

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

bool PlacementBuilder::Build(void const* buffer) {
    auto const model = ModelView::Open(buffer);
    if (!model) return false;

    InstanceArrays const arrays(*model);
    FillByLanes(placements_, arrays.count,
                [&](std::uint32_t first, Matrix4* out) { StoreMatrices(ComputeWorldFrames(arrays, first), out); });
    return true;
}

bool PlacementBuilder::Build(void const* buffer, AffineTransform const& transform) {
    auto const model = ModelView::Open(buffer);
    if (!model) return false;

    Matrix4 const matrix = transform.matrix;  // the caller's may be one of the matrices that are overwritten
    InstanceArrays const arrays(*model);
    FillByLanes(placements_, arrays.count, [&](std::uint32_t first, Matrix4* out) {
        StoreProducts(matrix, ComputeWorldFrames(arrays, first), out);
    });
    return true;
}

}  // namespace Quorlan::Tools
