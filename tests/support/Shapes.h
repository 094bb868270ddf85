#pragma once

#include <GeometryObjectLib/FacetedBRep.h>
#include <GeometryObjectLib/Vertex.h>

#include <cmath>
#include <cstdint>
#include <vector>

/// Closed solids with outward faces, small enough to check by hand.
namespace TestSupport {

using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::Vertex;

/// The box with corners `lo` and `hi`: 8 vertices, 6 quadrilaterals in the order -z, +z, -y, +x, +y, -x.
inline FacetedBRep MakeBox(Vertex const& lo, Vertex const& hi) {
    FacetedBRep box;
    box.vertices = {{lo.x, lo.y, lo.z}, {hi.x, lo.y, lo.z}, {hi.x, hi.y, lo.z}, {lo.x, hi.y, lo.z},
                    {lo.x, lo.y, hi.z}, {hi.x, lo.y, hi.z}, {hi.x, hi.y, hi.z}, {lo.x, hi.y, hi.z}};
    box.faces = {{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}};
    return box;
}

inline FacetedBRep MakeUnitCube() { return MakeBox({0, 0, 0}, {1, 1, 1}); }

/// A right prism over a regular polygon around the z axis: faces are the bottom, the top, then the sides.
inline FacetedBRep MakePrism(std::uint32_t sides, double radius, double height) {
    FacetedBRep prism;
    double const step = 2 * 3.141592653589793 / sides;
    for (double const z : {0.0, height}) {
        for (std::uint32_t i = 0; i < sides; ++i) {
            prism.vertices.push_back({radius * std::cos(i * step), radius * std::sin(i * step), z});
        }
    }
    std::vector<std::uint32_t> bottom;
    std::vector<std::uint32_t> top;
    for (std::uint32_t i = 0; i < sides; ++i) {
        bottom.push_back(sides - 1 - i);
        top.push_back(sides + i);
    }
    prism.faces = {bottom, top};
    for (std::uint32_t i = 0; i < sides; ++i) {
        std::uint32_t const next = (i + 1) % sides;
        prism.faces.push_back({i, next, sides + next, sides + i});
    }
    return prism;
}

/// A plate of 4 x 4 x 1 with a square hole from 1 to 3 through its middle: faces 0 (bottom) and 1 (top) have the hole,
/// faces 2 to 5 are the outer sides, 6 to 9 the inner ones.
inline FacetedBRep MakePlateWithHole() {
    FacetedBRep plate;
    for (double const z : {0.0, 1.0}) {
        for (auto const& [x, y] : {std::pair{0.0, 0.0}, {4.0, 0.0}, {4.0, 4.0}, {0.0, 4.0}}) {
            plate.vertices.push_back({x, y, z});
        }
        for (auto const& [x, y] : {std::pair{1.0, 1.0}, {3.0, 1.0}, {3.0, 3.0}, {1.0, 3.0}}) {
            plate.vertices.push_back({x, y, z});
        }
    }
    plate.faces = {{0, 3, 2, 1}, {8, 9, 10, 11}};
    plate.holes = {{0, {{4, 5, 6, 7}}}, {1, {{12, 15, 14, 13}}}};
    for (std::uint32_t i = 0; i < 4; ++i) {
        std::uint32_t const next = (i + 1) % 4;
        plate.faces.push_back({i, next, 8 + next, 8 + i});
    }
    for (std::uint32_t i = 0; i < 4; ++i) {
        std::uint32_t const next = (i + 1) % 4;
        plate.faces.push_back({4 + next, 4 + i, 12 + i, 12 + next});
    }
    return plate;
}

}  // namespace TestSupport
