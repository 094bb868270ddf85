#include <Tools/LodLineBRepBuilder.h>

#include "geometry/LaneMoves.h"
#include "mesh/LaneTools.h"
#include "mesh/SymmetricEigen.h"
#include "model/ModelView.h"

#include <algorithm>
#include <cmath>

namespace Quorlan::Tools {
namespace {

using GeometryObjectLib::LoadTriple;
using GeometryObjectLib::LoadTriples;
using GeometryObjectLib::Transpose;
using GeometryObjectLib::VectorLanes;

constexpr float kLargest = 3.4028235e38F;

constexpr LodLineBRepBuilder::line_s kNoLine{};

/// One vector in the lanes x, y, z; the sums over vertices stay in vertex order, component by component.
Float4 ToLanes(Vector3f const& v) { return {v.x, v.y, v.z, 0}; }

/// Before the first vertex stands the length of their vector.
Float4 LoadVertex(BRepView const& brep, std::uint32_t i) {
    return LoadTriple(brep.vertices + std::size_t{i} * brep.vertexStride);
}

Vector3f ToVector(Float4 lanes) {
    auto const v = ToArray(lanes);
    return {v[0], v[1], v[2]};
}

/// Up to four BReps. Their sums run side by side: each is a chain of additions in which one waits for the other.
struct BRepGroup {
    std::array<BRepView, 4> breps;
    std::size_t size = 0;

    /// Calls add(k, vertex) for the vertices of all BReps, those of one in their order. A BRep that is not there or has
    /// no vertices gets no call.
    template <class Add>
    void ForEachVertex(Add const& add) const {
        std::uint32_t shared = breps[0].vertexCount;
        for (BRepView const& brep : breps) shared = std::min(shared, brep.vertexCount);
        for (std::uint32_t i = 0; i < shared; ++i) {
            add(0, LoadVertex(breps[0], i));
            add(1, LoadVertex(breps[1], i));
            add(2, LoadVertex(breps[2], i));
            add(3, LoadVertex(breps[3], i));
        }
        for (std::uint32_t i = shared; i < breps[0].vertexCount; ++i) add(0, LoadVertex(breps[0], i));
        for (std::uint32_t i = shared; i < breps[1].vertexCount; ++i) add(1, LoadVertex(breps[1], i));
        for (std::uint32_t i = shared; i < breps[2].vertexCount; ++i) add(2, LoadVertex(breps[2], i));
        for (std::uint32_t i = shared; i < breps[3].vertexCount; ++i) add(3, LoadVertex(breps[3], i));
    }

    Float4 GetCount(std::size_t k) const { return Float4(static_cast<float>(breps[k].vertexCount)); }
};

std::array<Vector3f, 4> MeansOf(BRepGroup const& group) {
    std::array<Float4, 4> sums{Float4(0.0F), Float4(0.0F), Float4(0.0F), Float4(0.0F)};
    group.ForEachVertex([&](std::size_t k, Float4 vertex) { sums[k] = sums[k] + vertex; });
    std::array<Vector3f, 4> means;
    for (std::size_t k = 0; k < group.size; ++k) means[k] = ToVector(sums[k] / group.GetCount(k));
    return means;
}

/// The inertia tensors of unit masses at the vertices, per vertex, about the means.
std::array<SymmetricMatrix3, 4> InertiasOf(BRepGroup const& group, std::array<Vector3f, 4> const& means) {
    Float4 const zero(0.0F);
    std::array<Float4, 4> const centers{ToLanes(means[0]), ToLanes(means[1]), ToLanes(means[2]), ToLanes(means[3])};
    std::array<Float4, 4> squares{zero, zero, zero, zero};  // xx, yy, zz
    std::array<Float4, 4> mixed{zero, zero, zero, zero};    // xy, yz, zx
    group.ForEachVertex([&](std::size_t k, Float4 vertex) {
        Float4 const d = vertex - centers[k];
        squares[k] = squares[k] + d * d;
        mixed[k] = mixed[k] + d * NextAxis(d);
    });
    std::array<SymmetricMatrix3, 4> tensors;
    for (std::size_t k = 0; k < group.size; ++k) {
        if (group.breps[k].vertexCount == 0) continue;
        auto const s = ToArray(squares[k] / group.GetCount(k));
        auto const m = ToArray(mixed[k] / group.GetCount(k));
        tensors[k] = {s[1] + s[2], s[0] + s[2], s[0] + s[1], -m[0], -m[2], -m[1]};
    }
    return tensors;
}

/// Four vertices from `first` on.
VectorLanes<Float4> FourPositions(BRepView const& brep, std::uint32_t first) {
    std::uint8_t const* const vertex = brep.vertices + std::size_t{first} * brep.vertexStride;
    if (brep.vertexStride == sizeof(Vector3f)) return LoadTriples(reinterpret_cast<float const*>(vertex));
    return Transpose(LoadTriple(vertex), LoadTriple(vertex + brep.vertexStride),
                     LoadTriple(vertex + 2 * brep.vertexStride), LoadTriple(vertex + 3 * brep.vertexStride));
}

/// The vertices from `first` on; the last vertex again where there are less than four, which no minimum or maximum
/// minds.
VectorLanes<Float4> LastPositions(BRepView const& brep, std::uint32_t first) {
    std::uint32_t const last = brep.vertexCount - 1;
    return Transpose(LoadVertex(brep, first), LoadVertex(brep, std::min(first + 1, last)),
                     LoadVertex(brep, std::min(first + 2, last)), LoadVertex(brep, std::min(first + 3, last)));
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
    auto const add = [&](VectorLanes<Float4> const& p) {
        Float4 const t = Dot(p - m, a);
        auto const foot = m + a * t;
        auto const off = p - foot;
        lowest = Min(lowest, t);
        highest = Max(highest, t);
        farthest = Max(farthest, Dot(off, off));
    };
    std::uint32_t const beforeLast = brep.vertexCount / 4 * 4;
    for (std::uint32_t i = 0; i < beforeLast; i += 4) add(FourPositions(brep, i));
    if (beforeLast < brep.vertexCount) add(LastPositions(brep, beforeLast));
    for (float const t : ToArray(lowest)) extent.lowest = std::min(extent.lowest, t);
    for (float const t : ToArray(highest)) extent.highest = std::max(extent.highest, t);
    for (float const d : ToArray(farthest)) extent.distanceSquared = std::max(extent.distanceSquared, d);
    return extent;
}

LodLineBRepBuilder::line_s LineOf(BRepView const& brep, Vector3f const& mean, Vector3f const& axis) {
    AxisExtent const extent = ExtentAlong(brep, mean, axis);
    Vector3f const start = mean + extent.lowest * axis;
    Vector3f const end = mean + extent.highest * axis;
    return {start.x, start.y, start.z, end.x, end.y, end.z, std::sqrt(extent.distanceSquared)};
}

/// Appends the lines of a group and empties it.
void AppendLinesOf(BRepGroup& group, std::vector<LodLineBRepBuilder::line_s>& lines) {
    auto const means = MeansOf(group);
    auto const decompositions = DecomposeFour(InertiasOf(group, means));
    for (std::size_t k = 0; k < group.size; ++k) {
        BRepView const& brep = group.breps[k];
        lines.push_back(brep.vertexCount == 0 ? kNoLine : LineOf(brep, means[k], decompositions[k].vectors[2]));
    }
    group = {};
}

/// The lines of one kind, up to the first BRep without vertices.
template <class Table>
void AppendLines(flatbuffers::Vector<flatbuffers::Offset<Table>> const* breps,
                 std::vector<LodLineBRepBuilder::line_s>& lines) {
    lines.reserve(CountOf(breps));
    BRepGroup group;
    for (std::uint32_t i = 0; i < CountOf(breps); ++i) {
        auto const* const table = breps->Get(i);
        if (table == nullptr || table->vertices() == nullptr) break;
        group.breps[group.size++] = BRepView(*table);
        if (group.size == group.breps.size()) AppendLinesOf(group, lines);
    }
    if (group.size != 0) AppendLinesOf(group, lines);
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
