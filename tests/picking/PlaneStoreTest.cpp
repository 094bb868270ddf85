#include "picking/PlaneStore.h"

#include "picking/PickScene.h"
#include "support/SameBits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace {

using namespace Quorlan::Testing;
using namespace Quorlan::Tools::Picking;
using Quorlan::BRepView;
using Quorlan::ModelView;

/// A prism of `sides` sides with a hole in every second of its side faces.
FacetedBRep MakePrism(std::uint32_t sides) {
    FacetedBRep prism;
    for (double const z : {0.0, 1.0}) {
        for (std::uint32_t i = 0; i < sides; ++i) {
            prism.vertices.push_back(
                {std::cos(6.283185307179586 * i / sides), std::sin(6.283185307179586 * i / sides), z});
        }
    }
    prism.faces.resize(2);
    for (std::uint32_t i = 0; i < sides; ++i) {
        prism.faces[0].push_back(sides - 1 - i);
        prism.faces[1].push_back(sides + i);
        std::uint32_t const next = (i + 1) % sides;
        if (i % 2 == 0) prism.holes[static_cast<std::uint32_t>(prism.faces.size())] = {{i, sides + i, sides + next}};
        prism.faces.push_back({i, next, sides + next, sides + i});
    }
    return prism;
}

/// Shapes of a buffer, by definition.
class Shapes {
public:
    explicit Shapes(std::vector<std::uint32_t> const& sides) {
        PickScene scene;
        for (std::uint32_t const s : sides) scene.AddShape(MakePrism(s));
        buffer_ = scene.model.Write();
    }

    BRepView Get(std::uint32_t definition) const {
        auto const& geometry = *ModelView::Open(buffer_.data())->geometry;
        auto const& info = *geometry.definitions()->Get(definition);
        return *Quorlan::FindBRep(geometry, info.kind(), info.kindIndex());
    }

private:
    std::vector<char> buffer_;
};

void ExpectSameGroup(PlaneGroup const& a, PlaneGroup const& b) {
    ASSERT_EQ(a.size, b.size);
    float distancesOfA[4];
    float distancesOfB[4];
    Store(a.distance, distancesOfA);
    Store(b.distance, distancesOfB);
    for (std::size_t i = 0; i < a.size; ++i) {
        EXPECT_EQ(a.loops[i], b.loops[i]);
        EXPECT_TRUE(SameBits(a.GetNormal(i), b.GetNormal(i)));
        EXPECT_TRUE(SameBits(distancesOfA[i], distancesOfB[i]));
    }
}

/// Reads the first `faceGroups` groups of faces and all of holes. Returns whether there were so many.
bool ExpectFreshPlanes(PlaneStore::Shape& shape, std::size_t faceGroups) {
    FreshPlanes<StoredBRepAccess> fresh(shape.access);
    PlaneStore::Reader kept(shape);
    while (auto const* const expected = fresh.GetNextOfHoles()) {
        auto const* const group = kept.GetNextOfHoles();
        if (group == nullptr) return false;
        ExpectSameGroup(*group, *expected);
    }
    EXPECT_EQ(kept.GetNextOfHoles(), nullptr);
    for (std::size_t i = 0; i < faceGroups; ++i) {
        auto const* const expected = fresh.GetNextOfFaces();
        auto const* const group = kept.GetNextOfFaces();
        EXPECT_EQ(group == nullptr, expected == nullptr);
        if (group == nullptr || expected == nullptr) return false;
        ExpectSameGroup(*group, *expected);
    }
    return true;
}

TEST(PlaneStore, GivesThePlanesThatFreshOnesAre) {
    Shapes const shapes({4, 7, 16});
    auto const store = std::make_unique<PlaneStore>();
    PlaneStore::Shape* added[3];
    for (std::uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(store->Find(10 + i), nullptr);
        added[i] = store->Add(10 + i, shapes.Get(i));
        ASSERT_NE(added[i], nullptr);
    }
    // By turns, at first only some of a shape's groups, then more of them than were made before.
    for (std::size_t const groups : {1u, 0u, 2u, 5u}) {
        for (std::uint32_t i = 0; i < 3; ++i) {
            ASSERT_EQ(store->Find(10 + i), added[i]);
            std::size_t const all = (shapes.Get(i).faces->size() + 3) / 4;
            EXPECT_EQ(ExpectFreshPlanes(*added[i], groups), groups <= all);
        }
    }
    EXPECT_EQ(store->Find(9), nullptr);
}

TEST(PlaneStore, HasRoomForEightShapes) {
    Shapes const shapes({3});
    auto const store = std::make_unique<PlaneStore>();
    for (std::uint32_t i = 0; i < 8; ++i) EXPECT_NE(store->Add(i, shapes.Get(0)), nullptr);
    EXPECT_EQ(store->Add(8, shapes.Get(0)), nullptr);
    EXPECT_NE(store->Find(7), nullptr);
    EXPECT_EQ(store->Find(8), nullptr);
}

TEST(PlaneStore, LeavesShapesOfManyFacesOut) {
    Shapes const shapes({300, 150, 60, 4});
    auto const store = std::make_unique<PlaneStore>();
    EXPECT_EQ(store->Add(0, shapes.Get(0)), nullptr);
    ASSERT_NE(store->Add(1, shapes.Get(1)), nullptr);
    EXPECT_EQ(store->Add(2, shapes.Get(1)), nullptr);
    ASSERT_NE(store->Add(3, shapes.Get(2)), nullptr);
    EXPECT_TRUE(ExpectFreshPlanes(*store->Find(1), 38));
    EXPECT_TRUE(ExpectFreshPlanes(*store->Find(3), 16));
    EXPECT_TRUE(ExpectFreshPlanes(*store->Find(1), 38));
}

}  // namespace
