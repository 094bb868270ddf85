#include "support/PlainVertexNormals.h"

#include <mapbox/earcut.hpp>

#include <cmath>

namespace Quorlan::Testing {
namespace {

constexpr std::uint16_t kNone = 65535;

float PlainLength(Vector3f const& v) { return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z); }

Vector3f PlainFaceNormal(std::vector<std::uint16_t> const& loop, std::vector<Vector3f> const& positions) {
    if (positions.size() < 3) return {1, 0, 0};
    float nx = 0, ny = 0, nz = 0;
    std::size_t const n = loop.size();
    for (std::size_t i = 0; i < n; ++i) {
        std::size_t const j = (i + 1) % n;
        Vector3f const a = positions[loop[i]];
        Vector3f const b = positions[loop[j]];
        nx += (a.y - b.y) * (a.z + b.z);
        ny += (a.z - b.z) * (a.x + b.x);
        nz += (a.x - b.x) * (a.y + b.y);
    }
    float const length = PlainLength({nx, ny, nz});
    if (length < 1e-7F) return {1, 0, 0};
    return {nx / length, ny / length, nz / length};
}

std::vector<std::uint16_t> LoopOf(RawLoop const& loop) { return loop ? *loop : std::vector<std::uint16_t>(); }

}  // namespace

PlainVertexNormals::PlainVertexNormals(RawBRep const& brep, float angle) : threshold_(std::cos(angle)) {
    if (brep.vertices) positions = *brep.vertices;
    std::vector<std::vector<std::uint16_t>> faces;
    if (brep.faces) {
        for (auto const& face : *brep.faces) faces.push_back(LoopOf(face));
    }
    std::map<std::uint32_t, std::vector<std::vector<std::uint16_t>>> holes;
    if (brep.holes) {
        for (auto const& hole : *brep.holes) holes[hole.face].push_back(LoopOf(hole.loop));
    }

    for (auto const& face : faces) faceNormals_.push_back(PlainFaceNormal(face, positions));
    firstIncident_.assign(positions.size(), kNoLink);
    lastIncident_.assign(positions.size(), kNoLink);
    for (std::uint32_t f = 0; f < faces.size(); ++f) AddIncidence(faces[f], f);
    if (brep.holes) {
        for (auto const& hole : *brep.holes) AddIncidence(LoopOf(hole.loop), hole.face);
    }

    corners.assign(positions.size(), {kNone, kNone});
    for (std::uint32_t f = 0; f < faces.size(); ++f) {
        std::vector<std::vector<std::uint16_t>> loops{faces[f]};
        auto const inner = holes.find(f);
        if (inner != holes.end()) loops.insert(loops.end(), inner->second.begin(), inner->second.end());
        AddFace(f, loops);
    }
    FinishCorners();
    for (auto const& node : tree_) normals.push_back(node.normal);
}

void PlainVertexNormals::AddIncidence(std::vector<std::uint16_t> const& loop, std::uint32_t face) {
    for (std::uint16_t const vertex : loop) {
        auto const added = static_cast<std::uint32_t>(incidentFaces_.size());
        incidentFaces_.push_back({kNoLink, face});
        if (firstIncident_[vertex] == kNoLink) {
            firstIncident_[vertex] = added;
        } else {
            incidentFaces_[lastIncident_[vertex]].next = added;
        }
        lastIncident_[vertex] = added;
    }
}

void PlainVertexNormals::AddFace(std::uint32_t face, std::vector<std::vector<std::uint16_t>> const& loops) {
    if (loops.size() == 1 && loops[0].size() < 3) return;

    std::vector<std::uint16_t> c;
    for (auto const& loop : loops) {
        for (std::uint16_t const vertex : loop) c.push_back(GetCorner(vertex, face));
    }
    if (loops.size() == 1 && c.size() == 3) {
        triangles.push_back({c[0], c[1], c[2]});
        return;
    }
    if (loops.size() == 1 && c.size() == 4) {
        auto const& loop = loops[0];
        Vector3f const e1 = positions[loop[1]] - positions[loop[0]];
        Vector3f const e2 = positions[loop[2]] - positions[loop[0]];
        Vector3f const e3 = positions[loop[3]] - positions[loop[0]];
        if (Dot(Cross(e1, e2), Cross(e2, e3)) > 0) {
            triangles.push_back({c[0], c[1], c[2]});
            triangles.push_back({c[0], c[2], c[3]});
            return;
        }
    }
    auto const indices = CutEars(face, loops);
    for (std::size_t i = 0; i < indices.size(); i += 3) {
        triangles.push_back({c[indices[i]], c[indices[i + 1]], c[indices[i + 2]]});
    }
}

std::vector<std::uint16_t> PlainVertexNormals::CutEars(std::uint32_t face,
                                                       std::vector<std::vector<std::uint16_t>> const& loops) const {
    Vector3f const n = faceNormals_[face];
    Vector3f p;
    if (std::fabs(n.x) >= std::fabs(n.y)) {
        float const length = PlainLength(n);
        p = {-n.z / length, 0 / length, n.x / length};
    } else {
        float const length = std::sqrt(n.y * n.y + n.z * n.z);
        p = {0 / length, n.z / length, -n.y / length};
    }
    Vector3f const q = Cross(n, p);
    std::vector<std::vector<std::array<float, 2>>> rings;
    for (auto const& loop : loops) {
        rings.emplace_back();
        for (std::uint16_t const vertex : loop) {
            rings.back().push_back({Dot(p, positions[vertex]), Dot(q, positions[vertex])});
        }
    }
    return mapbox::earcut<std::uint16_t>(rings);
}

std::uint16_t PlainVertexNormals::GetCorner(std::uint16_t vertex, std::uint32_t face) {
    Vector3f sum = faceNormals_[face];
    for (std::uint32_t link = firstIncident_[vertex]; link != kNoLink; link = incidentFaces_[link].next) {
        std::uint32_t const other = incidentFaces_[link].face;
        if (other == face) continue;
        float const d = Dot(faceNormals_[other], faceNormals_[face]);
        if (static_cast<double>(d) > static_cast<double>(threshold_)) sum = sum + faceNormals_[other];
    }
    float const length = PlainLength(sum);
    Vector3f normal{1, 0, 0};
    if (!(length <= 1e-5F)) normal = {sum.x / length, sum.y / length, sum.z / length};

    std::uint16_t const index = FindOrAddNormal(normal);
    if (index == kNone) return kNone;
    if (corners[vertex][0] == kNone) {
        corners[vertex][0] = index;
        return vertex;
    }
    std::uint16_t corner = vertex;
    for (;;) {
        if (corners[corner][0] == index) return corner;
        if (corners[corner][1] == kNone) break;
        corner = corners[corner][1];
    }
    if (corners.size() >= 65535) return kNone;
    corners[corner][1] = static_cast<std::uint16_t>(corners.size());
    corners.push_back({index, kNone});
    return static_cast<std::uint16_t>(corners.size() - 1);
}

std::uint16_t PlainVertexNormals::FindOrAddNormal(Vector3f const& normal) {
    std::uint32_t* link = nullptr;
    std::uint32_t node = tree_.empty() ? kNoLink : 0;
    for (int axis = 0; node != kNoLink; axis = (axis + 1) % 3) {
        Vector3f const difference = normal - tree_[node].normal;
        if (static_cast<double>(Dot(difference, difference)) < 1.0000000000000002e-10) {
            return static_cast<std::uint16_t>(node);
        }
        float const onAxis = axis == 0 ? difference.x : axis == 1 ? difference.y : difference.z;
        link = static_cast<double>(onAxis) >= -4e-5 ? &tree_[node].first : &tree_[node].second;
        node = *link;
    }
    if (tree_.size() == 65535) return kNone;
    if (link != nullptr) *link = static_cast<std::uint32_t>(tree_.size());
    tree_.push_back({normal, kNoLink, kNoLink});
    return static_cast<std::uint16_t>(tree_.size() - 1);
}

void PlainVertexNormals::FinishCorners() {
    for (std::size_t v = 0; v < positions.size(); ++v) {
        if (corners[v][0] == kNone) {
            corners[v] = {0, 0};
            continue;
        }
        for (auto c = static_cast<std::uint16_t>(v); c != kNone;) {
            std::uint16_t const next = corners[c][1];
            corners[c][1] = static_cast<std::uint16_t>(v);
            c = next;
        }
    }
}

}  // namespace Quorlan::Testing
