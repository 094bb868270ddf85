#include "gltf/ShapeMeshes.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>

namespace QuorlanProgram {
namespace {

using GeometryObjectLib::Vertex;

/// Kinds of definitions with their own attributes.
constexpr std::uint32_t kBRepWithUV = 6;
constexpr std::uint32_t kBRepWithNormal = 7;

constexpr double kPi = 3.141592653589793;

/// More chords than this serve no eye.
constexpr double kMaxChords = 256;

bool IsFinite(glm::vec3 const& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

std::array<float, 3> ToArray(glm::vec3 const& v) { return {v.x, v.y, v.z}; }

std::array<float, 3> ToArray(Vertex const& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

/// Of unit length, as glTF demands; stored normals may have any.
std::array<float, 3> ToUnitArray(glm::vec3 const& v) {
    float const length = glm::length(v);
    return length > 0 && std::isfinite(length) ? ToArray(v / length) : std::array<float, 3>{0, 0, 1};
}

void AddArc(GltfMesh& mesh, GeometryObjectLib::ArcSegment const& arc, double chordTolerance) {
    Vertex const yDirection = Cross(arc.axis, arc.startDirection);
    double const ratio = std::clamp(1 - chordTolerance / std::abs(arc.radius), -1.0, 1.0);
    double const step = 2 * std::acos(ratio);
    double const chords = step > 0 ? std::ceil(std::abs(arc.sweepAngle) / step) : kMaxChords;
    auto const count = static_cast<unsigned>(std::clamp(chords, 1.0, kMaxChords));
    auto const pointAt = [&](unsigned i) {
        double const angle = arc.sweepAngle * i / count;
        return ToArray(arc.center + arc.radius * (std::cos(angle) * arc.startDirection + std::sin(angle) * yDirection));
    };
    for (unsigned i = 0; i < count; ++i) {
        mesh.positions.push_back(pointAt(i));
        mesh.positions.push_back(pointAt(i + 1));
    }
}

void RemoveSegmentsThatAreNotFinite(GltfMesh& mesh) {
    auto const isFinite = [](std::array<float, 3> const& p) {
        return std::all_of(p.begin(), p.end(), [](float value) { return std::isfinite(value); });
    };
    std::size_t kept = 0;
    for (std::size_t i = 0; i + 1 < mesh.positions.size(); i += 2) {
        if (!isFinite(mesh.positions[i]) || !isFinite(mesh.positions[i + 1])) continue;
        mesh.positions[kept++] = mesh.positions[i];
        mesh.positions[kept++] = mesh.positions[i + 1];
    }
    mesh.positions.resize(kept);
}

}  // namespace

GltfMesh ShapeMeshes::BuildSolid(std::uint32_t definition, std::uint32_t kind) {
    GltfMesh mesh;
    if (!builder_.Build(model_, definition, creaseAngle_)) return mesh;
    auto const& positions = builder_.GetPositions();
    auto const& corners = builder_.GetCorners();
    auto const& normals = builder_.GetNormals();

    std::vector<bool> isUsable(corners.size(), false);
    mesh.positions.resize(corners.size());
    mesh.normals.resize(corners.size());
    if (kind == kBRepWithUV) mesh.uvs.resize(corners.size());
    for (std::size_t i = 0; i < corners.size(); ++i) {
        std::size_t const position = corners[i].position;
        std::size_t const normal = kind == kBRepWithNormal ? position : corners[i].normal;
        if (position >= positions.size() || !IsFinite(positions[position])) continue;
        isUsable[i] = true;
        mesh.positions[i] = ToArray(positions[position]);
        mesh.normals[i] = ToUnitArray(normal < normals.size() ? normals[normal] : glm::vec3(0, 0, 1));
        if (kind != kBRepWithUV || position >= builder_.GetTexCoords().size()) continue;
        auto const& uv = builder_.GetTexCoords()[position];
        if (std::isfinite(uv.x) && std::isfinite(uv.y)) mesh.uvs[i] = {uv.x, uv.y};
    }
    for (std::size_t i = 0; i < corners.size(); ++i) {
        if (!isUsable[i]) mesh.normals[i] = {0, 0, 1};
    }

    mesh.triangles.reserve(builder_.GetTriangles().size() * 3);
    for (auto const& triangle : builder_.GetTriangles()) {
        std::array<std::uint16_t, 3> const indices{triangle.a, triangle.b, triangle.c};
        bool const isWhole = std::all_of(indices.begin(), indices.end(), [&](std::uint16_t index) {
            return index < corners.size() && isUsable[index];
        });
        if (isWhole) {
            mesh.triangles.insert(mesh.triangles.end(), indices.begin(), indices.end());
        } else {
            ++lostTriangleCount_;
        }
    }
    if (mesh.triangles.empty()) mesh = {};
    return mesh;
}

GltfMesh BuildLineList(GeometryObjectLib::GraphicsContainer const& graphics, double chordTolerance) {
    GltfMesh mesh;
    mesh.isLineList = true;
    for (auto const& line : graphics.lines) {
        mesh.positions.push_back(ToArray(line.start));
        mesh.positions.push_back(ToArray(line.end));
    }
    for (auto const& arc : graphics.arcs) AddArc(mesh, arc, chordTolerance);
    RemoveSegmentsThatAreNotFinite(mesh);
    return mesh;
}

GltfMesh BuildUnitCylinder(unsigned sides) {
    GltfMesh mesh;
    auto const add = [&mesh](float x, float y, float z, std::array<float, 3> const& normal) {
        mesh.positions.push_back({x, y, z});
        mesh.normals.push_back(normal);
        return static_cast<std::uint16_t>(mesh.positions.size() - 1);
    };
    auto const addTriangle = [&mesh](std::uint16_t a, std::uint16_t b, std::uint16_t c) {
        mesh.triangles.insert(mesh.triangles.end(), {a, b, c});
    };
    std::uint16_t const bottom = add(0, 0, 0, {0, 0, -1});
    std::uint16_t const top = add(0, 0, 1, {0, 0, 1});
    auto const directionOf = [sides](unsigned i) {
        double const angle = 2 * kPi * i / sides;
        return std::array<float, 2>{static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle))};
    };
    for (unsigned i = 0; i < sides; ++i) {
        auto const [x, y] = directionOf(i);
        auto const [nextX, nextY] = directionOf((i + 1) % sides);
        auto const a = add(x, y, 0, {x, y, 0}), b = add(nextX, nextY, 0, {nextX, nextY, 0});
        auto const c = add(nextX, nextY, 1, {nextX, nextY, 0}), d = add(x, y, 1, {x, y, 0});
        addTriangle(a, b, c);
        addTriangle(a, c, d);
        auto const lower = add(x, y, 0, {0, 0, -1}), lowerNext = add(nextX, nextY, 0, {0, 0, -1});
        addTriangle(bottom, lowerNext, lower);
        auto const upper = add(x, y, 1, {0, 0, 1}), upperNext = add(nextX, nextY, 1, {0, 0, 1});
        addTriangle(top, upper, upperNext);
    }
    return mesh;
}

}  // namespace QuorlanProgram
