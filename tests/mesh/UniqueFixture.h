#pragma once

#include <Tools/UniqueGeometryDefinitionBuilder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "support/RecordingTarget.h"
#include "support/Shapes.h"
#include "support/Transforms.h"

namespace TestSupport {

/// The index of the first definition.
constexpr std::uint32_t kFirst = RecordingTarget::kFirstIndex;

/// A builder over a recording target, and the transform that its calls set.
struct UniqueFixture {
    RecordingTarget target;
    Quorlan::Tools::UniqueGeometryDefinitionBuilder unique{target};
    AffineTransform transform = MakeTranslation(7, 7, 7);  // what a call leaves untouched shows

    template <class Shape>
    std::uint32_t Add(Shape const& shape) {
        return static_cast<std::uint32_t>(unique.Add(shape, &transform));
    }

    void ExpectCounts(std::uint32_t transformed, std::uint32_t translated, std::uint32_t identical) const {
        EXPECT_EQ(unique.GetTransformedCount(), transformed);
        EXPECT_EQ(unique.GetTranslatedCount(), translated);
        EXPECT_EQ(unique.GetIdenticalCount(), identical);
    }
};

inline FacetedBRep Placed(FacetedBRep shape, AffineTransform const& placement) {
    for (Vertex& v : shape.vertices) v = TransformPoint(placement.matrix, v);
    return shape;
}

/// A solid without any symmetry, so that only one transform maps it onto a copy.
inline FacetedBRep MakeWedge() {
    FacetedBRep wedge = MakeBox({0, 0, 0}, {3, 2, 1});
    wedge.vertices[6] = {2.5, 1.5, 1.25};
    return wedge;
}

inline std::vector<Vertex> MakeNormals(FacetedBRep const& shape) {
    std::vector<Vertex> normals;
    for (Vertex const& v : shape.vertices) {
        Vertex const n = v + Vertex{0.5, 0.25, 0.125};
        normals.push_back(n / Length(n));
    }
    return normals;
}

inline std::vector<std::pair<float, float>> MakeUVs(FacetedBRep const& shape) {
    std::vector<std::pair<float, float>> uvs;
    for (Vertex const& v : shape.vertices) uvs.emplace_back(static_cast<float>(v.x), static_cast<float>(v.y));
    return uvs;
}

inline bool IsIdentity(AffineTransform const& transform) {
    AffineTransform const identity;
    auto const same = [](Vertex const& a, Vertex const& b) { return a.x == b.x && a.y == b.y && a.z == b.z; };
    return transform.matrix.m == identity.matrix.m && same(transform.scale, identity.scale) &&
           same(transform.axis, identity.axis) && transform.angle == identity.angle &&
           same(transform.offset, identity.offset);
}

/// The largest distance of a vertex of `given`, transformed, from its counterpart in `stored`.
inline double Deviation(AffineTransform const& transform, FacetedBRep const& given, FacetedBRep const& stored) {
    double largest = 0;
    for (std::size_t i = 0; i < given.vertices.size(); ++i) {
        largest = std::max(largest, Length(TransformPoint(transform.matrix, given.vertices[i]) - stored.vertices[i]));
    }
    return largest;
}

}  // namespace TestSupport
