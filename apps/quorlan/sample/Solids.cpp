#include "Solids.h"

#include <cmath>
#include <cstdint>

namespace QuorlanSample {
namespace {

constexpr double kTau = 6.283185307179586;
constexpr double kGrid = 0x1p30;

using Loop = std::vector<std::uint32_t>;

/// Adds the eight corners of a box over a rectangle: four below (counter-clockwise from above), four above.
std::uint32_t AddCorners(FacetedBRep& brep, Rectangle const& r, double thickness) {
    auto const first = static_cast<std::uint32_t>(brep.vertices.size());
    for (double const z : {0.0, thickness}) {
        brep.vertices.push_back({r.left, r.bottom, z});
        brep.vertices.push_back({r.right, r.bottom, z});
        brep.vertices.push_back({r.right, r.top, z});
        brep.vertices.push_back({r.left, r.top, z});
    }
    return first;
}

/// The loop at the level of `a`, counter-clockwise seen from above or the other way round.
Loop RingOf(std::uint32_t a, bool counterClockwise) {
    return counterClockwise ? Loop{a, a + 1, a + 2, a + 3} : Loop{a + 3, a + 2, a + 1, a};
}

/// The four sides of the corners at `a`: outwards, or inwards for an opening.
void AddSides(FacetedBRep& brep, std::uint32_t a, bool outwards) {
    for (std::uint32_t i = 0; i < 4; ++i) {
        auto const p = a + i, q = a + (i + 1) % 4;
        brep.faces.push_back(outwards ? Loop{p, q, q + 4, p + 4} : Loop{q, p, p + 4, q + 4});
    }
}

Vertex FaceNormal(FacetedBRep const& solid, Loop const& loop) {
    Vertex sum;
    for (std::size_t i = 0; i < loop.size(); ++i) {
        sum = sum + Cross(solid.vertices[loop[i]], solid.vertices[loop[(i + 1) % loop.size()]]);
    }
    return sum;
}

std::pair<float, float> ProjectUV(Vertex const& p, Vertex const& normal, double width, double height) {
    auto const x = std::abs(normal.x), y = std::abs(normal.y), z = std::abs(normal.z);
    if (z >= x && z >= y) return {static_cast<float>(p.x / width), static_cast<float>(p.y / height)};
    return {static_cast<float>((y >= x ? p.x : p.y) / width), static_cast<float>(p.z / height)};
}

/// A profile's unit normal (radial, axial) at ring `i`: the mean of those of the neighbouring segments.
std::pair<double, double> ProfileNormal(std::vector<std::pair<double, double>> const& profile, std::size_t i) {
    auto const& before = profile[i == 0 ? 0 : i - 1];
    auto const& after = profile[i + 1 == profile.size() ? i : i + 1];
    auto const radial = after.second - before.second, axial = before.first - after.first;
    auto const length = std::sqrt(radial * radial + axial * axial);
    return {radial / length, axial / length};
}

void AddFlatEnd(SolidWithNormals& solid, std::pair<double, double> const& ring, std::uint32_t sides, bool top) {
    auto const first = static_cast<std::uint32_t>(solid.brep.vertices.size());
    Loop loop;
    for (std::uint32_t k = 0; k < sides; ++k) {
        auto const [c, s] = DirectionAt(static_cast<double>(k) / sides);
        solid.brep.vertices.push_back({ring.first * c, ring.first * s, ring.second});
        solid.normals.push_back({0, 0, top ? 1.0 : -1.0});
        loop.push_back(top ? first + k : first + sides - 1 - k);
    }
    solid.brep.faces.push_back(loop);
}

/// One ring of vertices; a tip too has one vertex per side, so that normals differ around it.
void AddRing(SolidWithNormals& solid, std::vector<std::pair<double, double>> const& profile, std::size_t i,
             std::uint32_t sides) {
    auto const [radial, axial] = ProfileNormal(profile, i);
    auto const [radius, z] = profile[i];
    for (std::uint32_t k = 0; k < sides; ++k) {
        auto const [c, s] = DirectionAt(static_cast<double>(k) / sides);
        solid.brep.vertices.push_back({radius * c, radius * s, z});
        solid.normals.push_back({radial * c, radial * s, axial});
    }
}

}  // namespace

std::pair<double, double> DirectionAt(double turns) {
    auto const snap = [](double v) { return std::round(v * kGrid) / kGrid; };
    return {snap(std::cos(kTau * turns)), snap(std::sin(kTau * turns))};
}

FacetedBRep MakeBox(Vertex const& size) { return MakePlate({0, 0, size.x, size.y}, size.z, {}); }

FacetedBRep MakePlate(Rectangle const& outline, double thickness, std::vector<Rectangle> const& openings) {
    FacetedBRep brep;
    auto const outer = AddCorners(brep, outline, thickness);
    std::vector<std::uint32_t> inner;
    for (auto const& opening : openings) {
        inner.push_back(AddCorners(brep, opening, thickness));
        AddSides(brep, inner.back(), false);
    }
    AddSides(brep, outer, true);
    for (bool const top : {false, true}) {
        auto const level = top ? 4u : 0u;
        for (auto const first : inner) brep.holes[brep.faces.size()].push_back(RingOf(first + level, !top));
        brep.faces.push_back(RingOf(outer + level, top));
    }
    return brep;
}

FacetedBRep MakePanel(Rectangle const& outline, double thickness, std::vector<Rectangle> const& openings) {
    auto panel = MakePlate(outline, thickness, openings);
    for (auto& v : panel.vertices) v = {v.x, thickness - v.z, v.y};
    return panel;
}

FacetedBRep MakePrism(std::vector<std::pair<double, double>> const& outline, double depth) {
    FacetedBRep brep;
    auto const count = static_cast<std::uint32_t>(outline.size());
    for (double const y : {0.0, depth}) {
        for (auto const& [x, z] : outline) brep.vertices.push_back({x, y, z});
    }
    Loop front, back;
    for (std::uint32_t i = 0; i < count; ++i) {
        auto const j = (i + 1) % count;
        brep.faces.push_back({j, i, i + count, j + count});
        front.push_back(i);
        back.push_back(2 * count - 1 - i);
    }
    brep.faces.push_back(front);
    brep.faces.push_back(back);
    return brep;
}

SolidWithNormals MakeLathe(std::vector<std::pair<double, double>> const& profile, std::uint32_t sides) {
    SolidWithNormals solid;
    for (std::size_t i = 0; i < profile.size(); ++i) AddRing(solid, profile, i, sides);
    for (std::uint32_t i = 0; i + 1 < profile.size(); ++i) {
        for (std::uint32_t k = 0; k < sides; ++k) {
            auto const a = i * sides + k, b = i * sides + (k + 1) % sides;
            Loop loop{a};
            if (profile[i].first > 0) loop.push_back(b);
            if (profile[i + 1].first > 0) loop.push_back(b + sides);
            loop.push_back(a + sides);
            solid.brep.faces.push_back(loop);
        }
    }
    if (profile.front().first > 0) AddFlatEnd(solid, profile.front(), sides, false);
    if (profile.back().first > 0) AddFlatEnd(solid, profile.back(), sides, true);
    return solid;
}

SolidWithUVs MakeTextured(FacetedBRep const& solid, double width, double height) {
    SolidWithUVs textured;
    for (std::size_t face = 0; face < solid.GetFaceCount(); ++face) {
        auto const normal = FaceNormal(solid, solid.GetOuterLoop(face));
        auto const copyLoop = [&](Loop const& loop) {
            Loop copy;
            for (auto const index : loop) {
                copy.push_back(static_cast<std::uint32_t>(textured.brep.vertices.size()));
                textured.brep.vertices.push_back(solid.vertices[index]);
                textured.uvs.push_back(ProjectUV(solid.vertices[index], normal, width, height));
            }
            return copy;
        };
        textured.brep.faces.push_back(copyLoop(solid.GetOuterLoop(face)));
        for (std::size_t j = 0; j < solid.GetInnerLoopCount(face); ++j) {
            textured.brep.holes[face].push_back(copyLoop(solid.GetInnerLoop(face, j)));
        }
    }
    return textured;
}

}  // namespace QuorlanSample
