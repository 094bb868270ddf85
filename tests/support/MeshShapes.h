#pragma once

#include "support/RawModel.h"

#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <vector>

/// Shapes for tests and benchmarks of meshes, all with outward counter-clockwise faces.
namespace Quorlan::Testing {

/// A model that holds `shape` alone, as definition 0 of the given kind (1, 6 or 7).
inline std::vector<char> ModelOf(RawBRep const& shape, std::uint8_t kind = 1) {
    RawModel model;
    model.AddInstance(model.AddEntity(), model.AddBRep(shape, kind));
    return model.Write();
}

/// A shape of given vertices and outer loops.
inline RawBRep ShapeOf(std::vector<Vector3f> const& vertices, std::vector<std::vector<std::uint16_t>> const& faces) {
    RawBRep shape;
    shape.vertices = vertices;
    for (auto const& face : faces) shape.faces->push_back(face);
    return shape;
}

/// An upright prism over a regular polygon: `sides` quadrilaterals, then the top and the bottom.
inline RawBRep RawPrism(std::uint16_t sides, float radius = 1, float height = 1) {
    RawBRep shape;
    std::vector<std::uint16_t> top;
    std::vector<std::uint16_t> bottom;
    for (std::uint16_t i = 0; i < sides; ++i) {
        float const angle = 6.2831853F * static_cast<float>(i) / static_cast<float>(sides);
        shape.vertices->push_back({radius * std::cos(angle), radius * std::sin(angle), 0});
        shape.vertices->push_back({radius * std::cos(angle), radius * std::sin(angle), height});
        auto const low = static_cast<std::uint16_t>(2 * i);
        auto const next = static_cast<std::uint16_t>(i + 1 == sides ? 0 : low + 2);
        shape.faces->push_back(std::vector<std::uint16_t>{low, next, static_cast<std::uint16_t>(next + 1),
                                                          static_cast<std::uint16_t>(low + 1)});
        top.push_back(static_cast<std::uint16_t>(low + 1));
        bottom.insert(bottom.begin(), low);
    }
    shape.faces->push_back(top);
    shape.faces->push_back(bottom);
    return shape;
}

/// A torus of `rings` x `sides` vertices and quadrilaterals.
inline RawBRep RawTorus(std::uint16_t rings, std::uint16_t sides, float radius = 3, float tube = 1) {
    RawBRep shape;
    for (std::uint16_t r = 0; r < rings; ++r) {
        float const u = 6.2831853F * static_cast<float>(r) / static_cast<float>(rings);
        for (std::uint16_t s = 0; s < sides; ++s) {
            float const v = 6.2831853F * static_cast<float>(s) / static_cast<float>(sides);
            float const distance = radius + tube * std::cos(v);
            shape.vertices->push_back({distance * std::cos(u), distance * std::sin(u), tube * std::sin(v)});
            auto const at = [&](int ring, int side) {
                return static_cast<std::uint16_t>(ring % rings * sides + side % sides);
            };
            shape.faces->push_back(std::vector<std::uint16_t>{at(r, s), at(r + 1, s), at(r + 1, s + 1), at(r, s + 1)});
        }
    }
    return shape;
}

/// A rectangular plate, one unit thick and three units per hole long, with `holes` octagonal holes through it.
inline RawBRep RawPlate(std::uint16_t holes) {
    constexpr std::uint16_t kCorners = 8;
    RawBRep shape = RawBox({0, 0, 0}, {3.0F * static_cast<float>(holes), 3, 1});
    auto const isFlat = [&](RawLoop const& face, float z) {
        for (std::uint16_t const index : *face) {
            if ((*shape.vertices)[index].z != z) return false;
        }
        return true;
    };
    std::uint16_t top = 0;
    std::uint16_t bottom = 0;
    for (std::uint16_t f = 0; f < shape.faces->size(); ++f) {
        if (isFlat((*shape.faces)[f], 1)) top = f;
        if (isFlat((*shape.faces)[f], 0)) bottom = f;
    }
    shape.holes.emplace();
    for (std::uint16_t h = 0; h < holes; ++h) {
        auto const first = static_cast<std::uint16_t>(shape.vertices->size());
        std::vector<std::uint16_t> upper;
        std::vector<std::uint16_t> lower;
        for (std::uint16_t i = 0; i < kCorners; ++i) {
            float const angle = 6.2831853F * static_cast<float>(i) / kCorners;
            float const x = 3.0F * static_cast<float>(h) + 1.5F + std::cos(angle);
            float const y = 1.5F + std::sin(angle);
            shape.vertices->push_back({x, y, 0});
            shape.vertices->push_back({x, y, 1});
            auto const low = static_cast<std::uint16_t>(first + 2 * i);
            auto const next = static_cast<std::uint16_t>(i + 1 == kCorners ? first : low + 2);
            shape.faces->push_back(std::vector<std::uint16_t>{next, low, static_cast<std::uint16_t>(low + 1),
                                                              static_cast<std::uint16_t>(next + 1)});
            lower.push_back(low);
            upper.insert(upper.begin(), static_cast<std::uint16_t>(low + 1));
        }
        shape.holes->push_back({top, upper});
        shape.holes->push_back({bottom, lower});
    }
    return shape;
}

}  // namespace Quorlan::Testing
