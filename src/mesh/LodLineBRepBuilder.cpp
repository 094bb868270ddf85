#include <Tools/LodLineBRepBuilder.h>

#include "mesh/LaneTools.h"
#include "mesh/SymmetricEigen.h"
#include "model/ModelView.h"

#include <algorithm>
#include <cmath>

namespace Quorlan::Tools {
namespace {

using GeometryObjectLib::VectorLanes;

constexpr float kLargest = 3.4028235e38F;

constexpr LodLineBRepBuilder::line_s kNoLine{};

/// One vector in the lanes x, y, z; the sums over vertices stay in vertex order, component by component.
Float4 ToLanes(Vector3f const& v) { return {v.x, v.y, v.z, 0}; }

Vector3f MeanOf(BRepView const& brep) {
    Float4 sum(0.0F);
    for (std::uint32_t i = 0; i < brep.vertexCount; ++i) sum = sum + ToLanes(brep.GetPosition(i));
    auto const mean = ToArray(sum / Float4(static_cast<float>(brep.vertexCount)));
    return {mean[0], mean[1], mean[2]};
}

/// The inertia tensor of unit masses at the vertices, per vertex, about `mean`.
SymmetricMatrix3 InertiaOf(BRepView const& brep, Vector3f const& mean) {
    Float4 const center = ToLanes(mean);
    Float4 squares(0.0F);  // xx, yy, zz
    Float4 mixed(0.0F);    // xy, yz, zx
    for (std::uint32_t i = 0; i < brep.vertexCount; ++i) {
        Float4 const d = ToLanes(brep.GetPosition(i)) - center;
        squares = squares + d * d;
        mixed = mixed + d * NextAxis(d);
    }
    Float4 const count(static_cast<float>(brep.vertexCount));
    auto const s = ToArray(squares / count);
    auto const m = ToArray(mixed / count);
    return {s[1] + s[2], s[0] + s[2], s[0] + s[1], -m[0], -m[2], -m[1]};
}

/// Four vertices from `first` on; the last vertex again where there are less, which no minimum or maximum minds.
VectorLanes<Float4> FourPositions(BRepView const& brep, std::uint32_t first) {
    std::uint32_t const last = brep.vertexCount - 1;
    Vector3f const a = brep.GetPosition(first);
    Vector3f const b = brep.GetPosition(std::min(first + 1, last));
    Vector3f const c = brep.GetPosition(std::min(first + 2, last));
    Vector3f const d = brep.GetPosition(std::min(first + 3, last));
    return {{a.x, b.x, c.x, d.x}, {a.y, b.y, c.y, d.y}, {a.z, b.z, c.z, d.z}};
}

/// The extent of the vertices along an axis and the square of their largest distance from it.
struct AxisExtent {
    float lowest = kLargest;
    float highest = -kLargest;
    float distanceSquared = 0;
};

AxisExtent ExtentAlong(BRepView const& brep, Vector3f const& mean, Vector3f const& axis) {
    auto const m = Broadcast(mean);
    auto const a = Broadcast(axis);
    AxisExtent extent;
    Float4 lowest(extent.lowest);
    Float4 highest(extent.highest);
    Float4 farthest(extent.distanceSquared);
    for (std::uint32_t i = 0; i < brep.vertexCount; i += 4) {
        auto const p = FourPositions(brep, i);
        Float4 const t = Dot(p - m, a);
        auto const foot = m + a * t;
        auto const off = p - foot;
        lowest = Min(lowest, t);
        highest = Max(highest, t);
        farthest = Max(farthest, Dot(off, off));
    }
    for (float const t : ToArray(lowest)) extent.lowest = std::min(extent.lowest, t);
    for (float const t : ToArray(highest)) extent.highest = std::max(extent.highest, t);
    for (float const d : ToArray(farthest)) extent.distanceSquared = std::max(extent.distanceSquared, d);
    return extent;
}

/// Up to four BReps, whose eigen decompositions are done side by side.
struct Batch {
    std::array<BRepView, 4> breps;
    std::size_t size = 0;

    void AppendLinesTo(std::vector<LodLineBRepBuilder::line_s>& lines) {
        std::array<Vector3f, 4> means;
        std::array<SymmetricMatrix3, 4> tensors;
        for (std::size_t i = 0; i < size; ++i) {
            if (breps[i].vertexCount == 0) continue;
            means[i] = MeanOf(breps[i]);
            tensors[i] = InertiaOf(breps[i], means[i]);
        }
        auto const decompositions = DecomposeFour(tensors);
        for (std::size_t i = 0; i < size; ++i) {
            lines.push_back(breps[i].vertexCount == 0 ? kNoLine
                                                      : LineOf(breps[i], means[i], decompositions[i].vectors[2]));
        }
        size = 0;
    }

private:
    static LodLineBRepBuilder::line_s LineOf(BRepView const& brep, Vector3f const& mean, Vector3f const& axis) {
        AxisExtent const extent = ExtentAlong(brep, mean, axis);
        Vector3f const start = mean + extent.lowest * axis;
        Vector3f const end = mean + extent.highest * axis;
        return {start.x, start.y, start.z, end.x, end.y, end.z, std::sqrt(extent.distanceSquared)};
    }
};

/// The lines of one kind, up to the first BRep without vertices.
template <class Table>
void AppendLines(flatbuffers::Vector<flatbuffers::Offset<Table>> const* breps,
                 std::vector<LodLineBRepBuilder::line_s>& lines) {
    lines.reserve(CountOf(breps));
    Batch batch;
    for (std::uint32_t i = 0; i < CountOf(breps); ++i) {
        auto const* const table = breps->Get(i);
        if (table == nullptr || table->vertices() == nullptr) break;
        batch.breps[batch.size++] = BRepView(*table);
        if (batch.size == batch.breps.size()) batch.AppendLinesTo(lines);
    }
    if (batch.size != 0) batch.AppendLinesTo(lines);
}

}  // namespace

bool LodLineBRepBuilder::Build(char const* buffer) {
    plainLines_.clear();
    normalLines_.clear();
    uvLines_.clear();
    if (!HasModelIdentifier(buffer)) return false;
    auto const* const root = Schema::GetModel(buffer);
    if (root->entities() == nullptr || root->geometry() == nullptr) return false;
    AppendLines(root->geometry()->facetedBReps(), plainLines_);
    AppendLines(root->geometry()->brepsWithNormal(), normalLines_);
    AppendLines(root->geometry()->brepsWithUV(), uvLines_);
    return true;
}

std::vector<LodLineBRepBuilder::line_s> const* LodLineBRepBuilder::FindLines(unsigned kind) const {
    switch (kind) {
        case kFacetedBRep: return &plainLines_;
        case kBRepWithNormal: return &normalLines_;
        case kBRepWithUV: return &uvLines_;
        default: return nullptr;
    }
}

LodLineBRepBuilder::line_s const& LodLineBRepBuilder::GetLine(unsigned kind, unsigned index) const {
    auto const* const lines = FindLines(kind);
    return lines == nullptr ? kNoLine : (*lines)[index];
}

std::size_t LodLineBRepBuilder::GetLineCount(unsigned kind) const {
    auto const* const lines = FindLines(kind);
    return lines == nullptr ? 0 : lines->size();
}

}  // namespace Quorlan::Tools
