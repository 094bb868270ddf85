#include "mesh/CornerBuilder.h"

#include <cmath>

namespace Quorlan::Tools {
namespace {

constexpr float kSmallestFaceNormal = 1e-7F;  ///< shorter sums over a loop give no direction
constexpr float kSmallestSum = 1e-5F;         ///< sums of unit normals up to this length cancel out
constexpr Vector3f kDefaultNormal{1, 0, 0};

/// Newell's method (Sutherland, Sproull, Schumacker, "A Characterization of Ten Hidden-Surface Algorithms", 1974).
Vector3f FaceNormal(std::uint16_t const* loop, std::uint32_t size, Vector3f const* positions) {
    if (size == 0) return kDefaultNormal;
    Vector3f sum;
    for (std::uint32_t i = 0; i < size; ++i) {
        Vector3f const& a = positions[loop[i]];
        Vector3f const& b = positions[loop[i + 1 == size ? 0 : i + 1]];
        sum.x += (a.y - b.y) * (a.z + b.z);
        sum.y += (a.z - b.z) * (a.x + b.x);
        sum.z += (a.x - b.x) * (a.y + b.y);
    }
    float const length = Length(sum);
    return length < kSmallestFaceNormal ? kDefaultNormal : sum / length;
}

Vector3f SmoothedNormal(Vector3f const& sum) {
    float const length = Length(sum);
    return length <= kSmallestSum ? kDefaultNormal : sum / length;
}

}  // namespace

void CornerBuilder::Begin(BRepLoops const& loops, Vector3f const* positions, std::uint32_t vertexCount, float angle,
                          std::vector<VertexNormalBuilder::corner_s>& corners) {
    loops_ = &loops;
    positions_ = positions;
    corners_ = &corners;
    threshold_ = std::cos(angle);
    normals_.Clear(vertexCount);
    flatNormals_.assign(loops.GetFaceCount(), kNone);
    ComputeFaceNormals(vertexCount);
    CollectIncidentFaces(vertexCount);
    corners.assign(vertexCount, {kNone, kNone});  // while building, `position` links the corners of one vertex
}

void CornerBuilder::ComputeFaceNormals(std::uint32_t vertexCount) {
    faceNormals_.assign(loops_->GetFaceCount(), kDefaultNormal);
    if (vertexCount < 3) return;
    for (std::uint32_t f = 0; f < faceNormals_.size(); ++f) {
        LoopRange const loop = loops_->GetOuterLoop(f);
        faceNormals_[f] = FaceNormal(loops_->GetIndices() + loop.begin, loop.GetSize(), positions_);
    }
}

/// A counting sort of (vertex, face) by vertex. Filling moves each begin to the next one's place, hence the shift by
/// one at the end.
void CornerBuilder::CollectIncidentFaces(std::uint32_t vertexCount) {
    std::uint16_t const* const indices = loops_->GetIndices();
    incidentBegins_.assign(vertexCount + 1, 0);
    auto const forEachLoop = [this](auto const& visit) {
        for (std::uint32_t f = 0; f < loops_->GetFaceCount(); ++f) visit(f, loops_->GetOuterLoop(f));
        for (auto const& hole : loops_->GetHoles()) visit(hole.face, hole.range);
    };

    forEachLoop([&](std::uint32_t, LoopRange loop) {
        for (std::uint32_t i = loop.begin; i < loop.end; ++i) ++incidentBegins_[indices[i]];
    });
    std::uint32_t total = 0;
    for (std::uint32_t& begin : incidentBegins_) {
        std::uint32_t const count = begin;
        begin = total;
        total += count;
    }
    incidentFaces_.resize(total);
    forEachLoop([&](std::uint32_t face, LoopRange loop) {
        for (std::uint32_t i = loop.begin; i < loop.end; ++i) incidentFaces_[incidentBegins_[indices[i]]++] = face;
    });
    for (std::uint32_t v = vertexCount; v > 0; --v) incidentBegins_[v] = incidentBegins_[v - 1];
    incidentBegins_[0] = 0;
}

void CornerBuilder::GetCorners(std::uint32_t face, LoopRange loop, std::uint16_t* out) {
    std::uint16_t const* const indices = loops_->GetIndices();
    for (std::uint32_t i = loop.begin; i < loop.end; ++i) *out++ = GetCorner(indices[i], face);
}

std::uint16_t CornerBuilder::GetCorner(std::uint16_t vertex, std::uint32_t face) {
    Vector3f const faceNormal = faceNormals_[face];
    Vector3f sum = faceNormal;
    bool isSmoothed = false;
    for (std::uint32_t i = incidentBegins_[vertex]; i < incidentBegins_[vertex + 1u]; ++i) {
        if (incidentFaces_[i] == face) continue;
        Vector3f const& other = faceNormals_[incidentFaces_[i]];
        if (Dot(other, faceNormal) > threshold_) {
            sum = sum + other;
            isSmoothed = true;
        }
    }
    if (!isSmoothed) return GetCornerWithNormal(vertex, GetFlatNormal(face));

    // Faces around a vertex often have the same mean but for rounding: ask its corners before the tree.
    Vector3f const normal = SmoothedNormal(sum);
    auto const& corners = *corners_;
    if (corners[vertex].normal != kNone) {
        for (std::uint16_t c = vertex;;) {
            if (normals_.IsCertain(corners[c].normal, normal)) return c;
            c = corners[c].position;
            if (c == kNone) break;
        }
    }
    return GetCornerWithNormal(vertex, normals_.FindOrAdd(normal));
}

std::uint16_t CornerBuilder::GetFlatNormal(std::uint32_t face) {
    std::uint16_t& index = flatNormals_[face];
    if (index != kNone) return index;
    Vector3f const normal = SmoothedNormal(faceNormals_[face]);
    std::uint16_t const found = normals_.FindOrAdd(normal);
    if (IsFinite(normal)) index = found;  // any other is a new normal each time
    return found;
}

std::uint16_t CornerBuilder::GetCornerWithNormal(std::uint16_t vertex, std::uint16_t normal) {
    if (normal == NormalPool::kNone) return kNone;
    auto& corners = *corners_;
    if (corners[vertex].normal == kNone) {
        corners[vertex].normal = normal;
        return vertex;
    }
    std::uint16_t last = vertex;
    while (corners[last].normal != normal) {
        std::uint16_t const next = corners[last].position;
        if (next == kNone) {
            if (corners.size() >= kNone) return kNone;
            auto const added = static_cast<std::uint16_t>(corners.size());
            corners[last].position = added;
            corners.push_back({normal, kNone});
            return added;
        }
        last = next;
    }
    return last;
}

void CornerBuilder::Finish() {
    auto& corners = *corners_;
    auto const vertexCount = static_cast<std::uint32_t>(incidentBegins_.size() - 1);
    for (std::uint32_t v = 0; v < vertexCount; ++v) {
        if (corners[v].normal == kNone) {
            corners[v] = {0, 0};
            continue;
        }
        for (auto c = static_cast<std::uint16_t>(v);;) {
            std::uint16_t const next = corners[c].position;
            corners[c].position = static_cast<std::uint16_t>(v);
            if (next == kNone) break;
            c = next;
        }
    }
}

}  // namespace Quorlan::Tools
