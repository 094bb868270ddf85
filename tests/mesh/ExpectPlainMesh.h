#pragma once

#include <Tools/VertexNormalBuilder.h>

#include "support/MeshShapes.h"
#include "support/PlainVertexNormals.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace Quorlan::Testing {

/// Bit by bit, also where nothing is a number.
template <class A, class B>
testing::AssertionResult HaveSameBits(char const* what, std::vector<A> const& actual, std::vector<B> const& expected) {
    static_assert(sizeof(A) == sizeof(B));
    if (actual.size() != expected.size()) {
        return testing::AssertionFailure() << actual.size() << ' ' << what << ", expected " << expected.size();
    }
    for (std::size_t i = 0; i < actual.size(); ++i) {
        if (std::memcmp(&actual[i], &expected[i], sizeof(A)) != 0) {
            return testing::AssertionFailure() << what << ' ' << i << " of " << actual.size() << " differs";
        }
    }
    return testing::AssertionSuccess();
}

inline void ExpectPlainMesh(Tools::VertexNormalBuilder& builder, RawBRep const& shape, float angle) {
    PlainVertexNormals const plain(shape, angle);
    ASSERT_TRUE(builder.BuildBRep(ModelOf(shape), 0, angle));
    EXPECT_TRUE(HaveSameBits("positions", builder.GetPositions(), plain.positions));
    EXPECT_TRUE(HaveSameBits("normals", builder.GetNormals(), plain.normals));
    EXPECT_TRUE(HaveSameBits("corners", builder.GetCorners(), plain.corners));
    EXPECT_TRUE(HaveSameBits("triangles", builder.GetTriangles(), plain.triangles));
}

}  // namespace Quorlan::Testing
