#pragma once

#include "support/RawModel.h"

#include <GeometryObjectLib/FacetedBRep.h>
#include <GeometryObjectLib/Plane3f.h>
#include <GeometryObjectLib/Ray3f.h>

#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

/// Rays, planes and shapes for the tests of edges and lines.
namespace Quorlan::Testing {

using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::Plane3f;
using GeometryObjectLib::Ray3f;
using GeometryObjectLib::Vertex;

inline glm::vec3 ToGlm(Vector3f const& v) { return {v.x, v.y, v.z}; }
inline Vertex ToVertex(Vector3f const& v) { return {v.x, v.y, v.z}; }
inline Vector3f Narrow(Vertex const& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}
inline std::vector<glm::vec4> ToGlm(std::vector<Plane3f> const& planes) {
    std::vector<glm::vec4> out;
    for (Plane3f const& plane : planes) {
        out.emplace_back(plane.normal.x, plane.normal.y, plane.normal.z, plane.distance);
    }
    return out;
}

/// Seeded values whose positions and directions are exact in single precision.
class RandomScene {
public:
    explicit RandomScene(std::uint32_t seed) : engine_(seed) {}

    float Between(float lower, float upper) { return std::uniform_real_distribution<float>(lower, upper)(engine_); }
    std::uint32_t Below(std::uint32_t count) { return static_cast<std::uint32_t>(engine_() % count); }

    Vector3f Point(float size) { return {Between(-size, size), Between(-size, size), Between(-size, size)}; }

    Vector3f Direction() {
        for (;;) {
            Vector3f const v = Point(1);
            float const length = Length(v);
            if (length > 0.1f && length <= 1) return v / length;
        }
    }

    Ray3f Ray(float size) {
        Vector3f const origin = Point(size);
        return {origin, Direction()};
    }

    std::vector<Plane3f> Planes(std::uint32_t atMost, float size) {
        std::vector<Plane3f> planes(Below(atMost + 1));
        for (Plane3f& plane : planes) plane = {Direction(), Between(-0.2f * size, size)};
        return planes;
    }

    /// Loops of 0 to 7 arbitrary corners, repeated corners and holes of odd faces included.
    FacetedBRep BRep(float size) {
        FacetedBRep brep;
        brep.vertices.resize(4 + Below(20));
        for (Vertex& vertex : brep.vertices) vertex = ToVertex(Point(size));
        brep.faces.resize(1 + Below(6));
        for (auto& loop : brep.faces) loop = Loop(brep.vertices.size());
        for (std::uint32_t i = Below(4); i > 0; --i) {
            brep.holes[Below(static_cast<std::uint32_t>(brep.faces.size()))].push_back(Loop(brep.vertices.size()));
        }
        return brep;
    }

private:
    std::vector<std::uint32_t> Loop(std::size_t vertexCount) {
        std::vector<std::uint32_t> loop(Below(8));
        for (auto& index : loop) index = Below(static_cast<std::uint32_t>(vertexCount));
        return loop;
    }

    std::mt19937 engine_;
};

/// The square with corners (-half, -half, z) to (half, half, z), counter-clockwise from above; edge 0 is at y = -half.
inline FacetedBRep Square(double half, double z = 0) {
    FacetedBRep brep;
    brep.vertices = {{-half, -half, z}, {half, -half, z}, {half, half, z}, {-half, half, z}};
    brep.faces = {{0, 1, 2, 3}};
    return brep;
}

/// Adds the faces and holes of `other` behind those of `brep`.
inline void Append(FacetedBRep& brep, FacetedBRep const& other) {
    auto const vertexOffset = static_cast<std::uint32_t>(brep.vertices.size());
    std::uint64_t const faceOffset = brep.faces.size();
    auto const shifted = [&](std::vector<std::uint32_t> loop) {
        for (auto& index : loop) index += vertexOffset;
        return loop;
    };
    brep.vertices.insert(brep.vertices.end(), other.vertices.begin(), other.vertices.end());
    for (auto const& loop : other.faces) brep.faces.push_back(shifted(loop));
    for (auto const& [face, loops] : other.holes) {
        for (auto const& loop : loops) brep.holes[face + faceOffset].push_back(shifted(loop));
    }
}

}  // namespace Quorlan::Testing
