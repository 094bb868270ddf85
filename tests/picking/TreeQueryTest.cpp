#include "picking/TreeQuery.h"

#include "picking/NodeLanes.h"
#include "picking/PickScene.h"
#include "picking/PlainTreeWalk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <utility>

namespace {

using namespace Quorlan::Tools::Picking;
using namespace Quorlan::Testing;
using Node = QuantizedAxisAlignedBoxTreeNode_s;

struct RandomBoxes {
    std::mt19937 engine{1234};

    double Between(double lower, double upper) { return std::uniform_real_distribution<double>(lower, upper)(engine); }
    Vertex Point(double size) { return {Between(-size, size), Between(-size, size), Between(-size, size)}; }
    std::vector<AxisAlignedBox3> Boxes(std::size_t count, Vertex const& center) {
        std::vector<AxisAlignedBox3> boxes(count);
        for (auto& box : boxes) {
            box = {center + Point(10), {Between(0, 0.5), Between(0, 0.5), i++ % 7 == 0 ? 0 : Between(0, 2)}};
        }
        return boxes;
    }
    int i = 0;
};

TEST(TreeQuery, EmptyTreeHasNoItems) {
    QuantizedAxisAlignedBoxTree const empty;
    EXPECT_TRUE(FindItemsAlongRay(empty, {{0, 0, 0}, {1, 0, 0}}).empty());
    EXPECT_TRUE(FindItemsInPlanes(empty, std::vector<Plane3f>(4)).empty());
    EXPECT_TRUE(FindItemsInPlanes(empty, std::vector<Plane3f>(4), {{{0, 0, 0}, {1, 0, 0}}, 0, 100}).empty());
}

TEST(TreeQuery, RayGivesTheBitsOfTheWalkInScalars) {
    RandomBoxes random;
    for (Vertex const& center : {Vertex{}, Vertex{3e6, -2e6, 5e5}}) {
        auto const tree = MakeTree(random.Boxes(500, center));
        std::size_t found = 0;
        for (int i = 0; i < 2000; ++i) {
            Vertex direction = random.Point(1);
            if (i % 10 == 0) direction.y = 0;
            if (i % 20 == 0) direction.z = 0;
            ModelRay const ray{center + random.Point(15), direction};
            Vertex const relative = ray.origin - tree.getOrigin();
            float const o[] = {static_cast<float>(relative.x), static_cast<float>(relative.y),
                               static_cast<float>(relative.z)};
            float const d[] = {static_cast<float>(direction.x), static_cast<float>(direction.y),
                               static_cast<float>(direction.z)};
            auto const items = FindItemsAlongRay(tree, ray);
            ASSERT_EQ(items, WalkInScalars(tree, [&](ScalarBox const& box) { return box.IsMetBy(o, d); }));
            found += items.size();
        }
        EXPECT_GT(found, 500u);
    }
}

/// A corner of some node's box, so that a ray from or through it touches the box.
Vertex GetCorner(QuantizedAxisAlignedBoxTree const& tree, std::size_t node, unsigned corner) {
    Node const& n = tree.getNodes()[node];
    Vertex const& q = tree.getBvhQuantization();
    auto const at = [](int cell, double cells) { return cell / cells; };
    return tree.getOrigin() + Vertex{at((corner & 1) != 0 ? n.maxX : n.minX, q.x),
                                     at((corner & 2) != 0 ? n.maxY : n.minY, q.y),
                                     at((corner & 4) != 0 ? n.maxZ : n.minZ, q.z)};
}

TEST(TreeQuery, RayThroughALargeTreeGivesTheBitsOfTheWalkInScalars) {
    RandomBoxes random;
    for (Vertex const& center : {Vertex{}, Vertex{3e6, -2e6, 5e5}}) {
        auto const tree = MakeTree(random.Boxes(5000, center));
        ASSERT_GT(tree.getWideNodes().size(), 20u);
        std::size_t found = 0;
        for (int i = 0; i < 1500; ++i) {
            double const scale = i % 3 == 0 ? 1 : random.Between(0, 1) < 0.5 ? 1e-3 : 1e3;
            ModelRay const ray{center + random.Point(i % 2 == 0 ? 15 : 400), random.Point(10)};
            Vertex const toModel = center + ray.direction - ray.origin;
            ModelRay const aimed{ray.origin, toModel * scale};
            auto const items = FindItemsAlongRay(tree, aimed);
            ASSERT_EQ(items, FindInScalars(tree, aimed)) << i;
            ASSERT_EQ(FindItemsAlongRay(tree, aimed, {}, false), items) << i;
            found += items.size();
        }
        EXPECT_GT(found, 10000u);
    }
}

TEST(TreeQuery, RayThatTouchesBoxesGivesTheBitsOfTheWalkInScalars) {
    RandomBoxes random;
    auto const tree = MakeTree(random.Boxes(5000, {}));
    for (unsigned i = 0; i < 3000; ++i) {
        Vertex const corner = GetCorner(tree, random.engine() % tree.getNodes().size(), i % 8);
        Vertex direction = random.Point(1);
        if (i % 2 == 0) direction.x = i % 4 == 0 ? 0 : 6e-17;
        if (i % 3 == 0) direction.y = i % 9 == 0 ? -0.0 : 1e-9;
        if (i % 5 == 0) direction.z = -1e-30;
        ModelRay const ray{corner - direction * (i % 7 == 0 ? 0 : random.Between(0, 30)), direction};
        ASSERT_EQ(FindItemsAlongRay(tree, ray), FindInScalars(tree, ray)) << i;
    }
}

TEST(TreeQuery, RayThroughALargeFlatModelGivesTheBitsOfTheWalkInScalars) {
    RandomBoxes random;
    auto boxes = random.Boxes(3000, {});
    for (auto& box : boxes) box.center.z = box.halfExtent.z = 0;
    auto const tree = MakeTree(boxes);
    ASSERT_TRUE(std::isinf(tree.getBvhQuantization().z));
    for (int i = 0; i < 500; ++i) {
        ModelRay ray{random.Point(12), random.Point(1)};
        if (i % 2 == 0) ray.origin.z = 0;
        if (i % 4 == 0) ray.direction.z = 0;
        ASSERT_EQ(FindItemsAlongRay(tree, ray), FindInScalars(tree, ray)) << i;
    }
}

TEST(TreeQuery, RayOfExtremeNumbersGivesTheBitsOfTheWalkInScalars) {
    RandomBoxes random;
    auto const tree = MakeTree(random.Boxes(2000, {}));
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    double const values[] = {0, 1, -1, 1e-44, 1e-22, 1e-12, 1e12, -1e25, 3e38, 1e300, kNan};
    for (double const o : values) {
        for (double const x : values) {
            for (double const y : values) {
                ModelRay const ray{{o, -3, o / 2}, {x, y, x * y}};
                ASSERT_EQ(FindItemsAlongRay(tree, ray), FindInScalars(tree, ray)) << o << ' ' << x << ' ' << y;
            }
        }
    }
}

/// A tree of `depth` levels of nodes with three children each, or two at every `pairs`-th.
void AddSubtree(std::vector<Node>& nodes, std::mt19937& engine, int depth, unsigned pairs) {
    std::size_t const top = nodes.size();
    nodes.emplace_back();
    if (depth == 0) {
        auto const corner = [&] { return static_cast<std::uint16_t>(engine() % 60000); };
        auto const far = [&](std::uint16_t v) { return static_cast<std::uint16_t>(v + engine() % 5000); };
        std::uint16_t const x = corner(), y = corner(), z = corner();
        nodes[top] = {x, far(x), y, far(y), z, far(z), static_cast<std::int32_t>(top)};
        return;
    }
    std::size_t const children = engine() % pairs == 0 ? 2 : 3;
    Node all{65535, 0, 65535, 0, 65535, 0, 0};
    for (std::size_t i = 0; i < children; ++i) {
        std::size_t const child = nodes.size();
        AddSubtree(nodes, engine, depth - 1, pairs);
        Node const& n = nodes[child];
        all = {std::min(all.minX, n.minX),
               std::max(all.maxX, n.maxX),
               std::min(all.minY, n.minY),
               std::max(all.maxY, n.maxY),
               std::min(all.minZ, n.minZ),
               std::max(all.maxZ, n.maxZ),
               0};
    }
    all.escapeOrItem = -static_cast<std::int32_t>(nodes.size() - top);
    nodes[top] = all;
}

TEST(TreeQuery, RayThroughATreeThatIsNotBinaryGivesTheBitsOfTheWalkInScalars) {
    RandomBoxes random;
    for (int i = 0; i < 20; ++i) {
        std::vector<Node> nodes;
        AddSubtree(nodes, random.engine, 6, i % 2 == 0 ? 1000 : 2);
        if (i % 5 == 0) AddSubtree(nodes, random.engine, 3, 1);  // a second root
        QuantizedAxisAlignedBoxTree const tree({}, {655.35, 655.35, 655.35}, nodes);
        for (int k = 0; k < 50; ++k) {
            Vertex const origin = random.Point(150);
            ModelRay const ray{origin, Vertex{50, 50, 50} + random.Point(40) - origin};
            ASSERT_EQ(FindItemsAlongRay(tree, ray), FindInScalars(tree, ray));
        }
    }
}

// A leaf is found only where all its ancestors are met, however their boxes stand to its own.
TEST(TreeQuery, RayThroughATreeWhoseBoxesDoNotContainTheirSubtreesGivesTheBitsOfTheWalkInScalars) {
    RandomBoxes random;
    auto const tree = MakeTree(random.Boxes(2000, {}));
    ASSERT_FALSE(tree.getWideNodes().empty());
    auto const isMissed = [&](auto const& change) {
        auto nodes = tree.getNodes();
        for (auto& node : nodes) {
            if (node.escapeOrItem < -3 && random.engine() % 8 == 0) change(node);
        }
        QuantizedAxisAlignedBoxTree const changed(tree.getOrigin(), tree.getBvhQuantization(), nodes);
        EXPECT_TRUE(changed.getWideNodes().empty());
        std::size_t missed = 0;
        for (int i = 0; i < 300; ++i) {
            ModelRay const ray{random.Point(15), random.Point(10)};
            auto const items = FindItemsAlongRay(changed, ray);
            EXPECT_EQ(items, FindInScalars(changed, ray));
            missed += FindItemsAlongRay(tree, ray).size() - items.size();
        }
        return missed > 0;
    };
    EXPECT_TRUE(isMissed([](Node& node) { node.maxX = static_cast<std::uint16_t>((node.minX + node.maxX) / 2); }));
    EXPECT_TRUE(isMissed([](Node& node) { std::swap(node.minY, node.maxY); }));
    EXPECT_TRUE(isMissed([](Node& node) { node.minZ = node.maxZ; }));
}

TEST(TreeQuery, PlanesGiveTheBitsOfTheWalkInScalars) {
    RandomBoxes random;
    auto const tree = MakeTree(random.Boxes(500, {}));
    std::size_t found = 0;
    for (int i = 0; i < 1000; ++i) {
        std::vector<Plane3f> planes;
        for (int k = 0; k < 4; ++k) {
            Vertex const n = random.Point(1);
            planes.push_back({{static_cast<float>(n.x), static_cast<float>(n.y), static_cast<float>(n.z)},
                              static_cast<float>(random.Between(-10, 10))});
        }
        auto const items = FindItemsInPlanes(tree, planes);
        ASSERT_EQ(items, WalkInScalars(tree, [&](ScalarBox const& box) { return box.IsWithin(planes); }));
        found += items.size();
    }
    EXPECT_GT(found, 2000u);
}

/// With AVX2 and without. Returns how many items were found.
std::size_t ExpectPlanesAsInScalars(QuantizedAxisAlignedBoxTree const& tree, std::vector<Plane3f> const& planes) {
    auto const expected = WalkInScalars(tree, [&](ScalarBox const& box) { return box.IsWithin(planes); });
    EXPECT_EQ(FindItemsInPlanes(tree, planes), expected);
    EXPECT_EQ(FindItemsInPlanes(tree, planes, {}, false), expected);
    return expected.size();
}

Plane3f MakePlane(Vertex const& normal, Vertex const& point) {
    Vector3f const n{static_cast<float>(normal.x), static_cast<float>(normal.y), static_cast<float>(normal.z)};
    return {n, static_cast<float>(Dot(normal, point))};
}

// The boxes around a pixel: two pairs of planes that are nearly parallel, near or far apart.
TEST(TreeQuery, PlanesThroughALargeTreeGiveTheBitsOfTheWalkInScalars) {
    RandomBoxes random;
    for (Vertex const& center : {Vertex{}, Vertex{3e6, -2e6, 5e5}}) {
        auto boxes = random.Boxes(5000, center);
        if (center.x != 0) {
            for (auto& box : boxes) {
                box.center.z = center.z;
                box.halfExtent.z = 0;
            }
        }
        auto const tree = MakeTree(boxes);
        ASSERT_FALSE(tree.getWideNodes().empty());
        std::size_t found = 0;
        for (int i = 0; i < 600 && !HasFailure(); ++i) {
            Vertex const u = random.Point(1);
            Vertex const v = random.Point(1);
            Vertex const point = random.Point(12) + center - tree.getOrigin();
            double const width = i % 3 == 0 ? 0.01 : random.Between(0, 3);
            found +=
                ExpectPlanesAsInScalars(tree, {MakePlane(u, point + width * u), MakePlane(-1 * u, point - width * u),
                                               MakePlane(v, point + width * v), MakePlane(-1 * v, point - width * v)});
        }
        EXPECT_GT(found, 2000u);
    }
}

TEST(TreeQuery, PlanesThatTouchBoxesGiveTheBitsOfTheWalkInScalars) {
    RandomBoxes random;
    auto const tree = MakeTree(random.Boxes(3000, {}));
    for (unsigned i = 0; i < 1500 && !HasFailure(); ++i) {
        std::vector<Plane3f> planes;
        for (unsigned k = 0; k < 4; ++k) {
            Vertex const corner = GetCorner(tree, random.engine() % tree.getNodes().size(), random.engine() % 8);
            Vertex normal = random.Point(1);
            if (i % 2 == 0) normal.x = 0;
            if (i % 3 == 0) normal.y = i % 9 == 0 ? -0.0 : 1e-9;
            planes.push_back(MakePlane(normal, corner - tree.getOrigin()));
        }
        ExpectPlanesAsInScalars(tree, planes);
    }
}

TEST(TreeQuery, PlanesOfExtremeNumbersGiveTheBitsOfTheWalkInScalars) {
    RandomBoxes random;
    auto const tree = MakeTree(random.Boxes(500, {}));
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinite = std::numeric_limits<float>::infinity();
    float const values[] = {0, -0.0F, 1, -1, 1e-44F, 1e-30F, 1e12F, -1e25F, 3e38F, kInfinite, kNan};
    for (float const x : values) {
        for (float const y : values) {
            for (float const distance : values) {
                ExpectPlanesAsInScalars(tree,
                                        {{{x, y, 0.5F}, distance}, {{y, x, -1}, 1}, {{0, 1, x}, 2}, {{1, 0, 0}, 20}});
                ASSERT_FALSE(HasFailure()) << x << ' ' << y << ' ' << distance;
            }
        }
    }
}

TEST(TreeQuery, PlanesThroughATreeWhoseBoxesDoNotContainTheirSubtreesGiveTheBitsOfTheWalkInScalars) {
    RandomBoxes random;
    auto nodes = MakeTree(random.Boxes(1000, {})).getNodes();
    for (auto& node : nodes) {
        if (node.escapeOrItem < -3 && random.engine() % 8 == 0) std::swap(node.minY, node.maxY);
    }
    QuantizedAxisAlignedBoxTree const tree({}, {3000, 3000, 3000}, nodes);
    ASSERT_TRUE(tree.getWideNodes().empty());
    for (int i = 0; i < 100; ++i) {
        Vertex const n = random.Point(1);
        ExpectPlanesAsInScalars(tree,
                                {MakePlane(n, random.Point(15)), {{1, 0, 0}, 15}, {{0, 1, 0}, 15}, {{0, 0, 1}, 15}});
    }
}

TEST(TreeQuery, ItemsAreNarrowedDownAboveTheirMost) {
    std::vector<AxisAlignedBox3> boxes;
    for (int i = 0; i < 20; ++i) boxes.push_back({{double(i), 0, 0}, {0.5, 0.5, 0.5}});
    auto const tree = MakeTree(boxes);
    ModelRay const ray{{5.1, 0, 0}, {0, 0, 1}};
    std::vector<Plane3f> const all(4, {{1, 0, 0}, 1e9F});
    EXPECT_EQ(FindItemsInPlanes(tree, all, {ray, 20, 3}), GetLeafOrder(tree));
    EXPECT_EQ(FindItemsInPlanes(tree, all, {ray, 19, 3}), (std::vector<unsigned>{5, 6, 4}));
    EXPECT_EQ(FindItemsInPlanes(tree, all, {ray, 19, 100}).size(), 20u);
}

TEST(TreeQuery, RayIsAHalfLine) {
    auto const tree = MakeTree(std::vector<AxisAlignedBox3>{{{0, 0, 0}, {1, 1, 1}}, {{10, 0, 0}, {1, 1, 1}}});
    EXPECT_EQ(FindItemsAlongRay(tree, {{5, 0, 0}, {1, 0, 0}}), (std::vector<unsigned>{1}));
    EXPECT_EQ(FindItemsAlongRay(tree, {{5, 0, 0}, {-1, 0, 0}}), (std::vector<unsigned>{0}));
    EXPECT_TRUE(FindItemsAlongRay(tree, {{15, 0, 0}, {1, 0, 0}}).empty());
    EXPECT_EQ(FindItemsAlongRay(tree, {{0, 0, 0}, {0, 0, 1}}), (std::vector<unsigned>{0}));
}

TEST(TreeQuery, AxisWithoutExtentHasBoxesWithoutExtent) {
    auto const tree = MakeTree(std::vector<AxisAlignedBox3>{{{0, 0, 7}, {1, 1, 0}}, {{4, 0, 7}, {1, 1, 0}}});
    ASSERT_TRUE(std::isinf(tree.getBvhQuantization().z));
    EXPECT_EQ(FindItemsAlongRay(tree, {{4, 0, 9}, {0, 0, -1}}), (std::vector<unsigned>{1}));
    EXPECT_TRUE(FindItemsAlongRay(tree, {{4, 0, 9}, {0, 0, 1}}).empty());
    EXPECT_EQ(FindItemsAlongRay(tree, {{-5, 0, 7}, {1, 0, 0}}), (std::vector<unsigned>{0, 1}));
    EXPECT_TRUE(FindItemsAlongRay(tree, {{-5, 0, 7.01}, {1, 0, 0}}).empty());
}

/// Four planes that cut nothing away.
std::vector<Plane3f> KeepAll() { return std::vector<Plane3f>(4, {{1, 0, 0}, 1e9f}); }

TEST(TreeQuery, NearestItemsAreSortedByTheDistanceOfTheirCentresToTheHalfLine) {
    RandomBoxes random;
    auto const boxes = random.Boxes(300, {});
    auto const tree = MakeTree(boxes);
    for (int i = 0; i < 100; ++i) {
        ModelRay const ray{random.Point(10), random.Point(3)};
        auto const distance = [&](unsigned item) {
            Vertex const toCenter = boxes[item].center - ray.origin;
            double const t = std::max(0.0, Dot(toCenter, ray.direction)) / Dot(ray.direction, ray.direction);
            return Length(toCenter - ray.direction * t);
        };
        auto const items = FindItemsInPlanes(tree, KeepAll(), {ray, 0, 40});
        ASSERT_EQ(items.size(), 40u);
        std::vector<double> all;
        for (unsigned item = 0; item < boxes.size(); ++item) all.push_back(distance(item));
        std::sort(all.begin(), all.end());
        // Centres are known to a grid cell.
        for (std::size_t k = 0; k < 40; ++k) EXPECT_NEAR(distance(items[k]), all[k], 1e-3);
    }
}

TEST(TreeQuery, NearestItemsAtEqualDistancesKeepTheOrderOfTheTree) {
    std::vector<AxisAlignedBox3> boxes;
    for (int i = 0; i < 20; ++i) boxes.push_back({{double(i), 0, 0}, {0.5, 0.5, 0.5}});
    auto const tree = MakeTree(boxes);
    // A ray without a direction or a place has no distances at all.
    double const nan = std::numeric_limits<double>::quiet_NaN();
    auto const order = GetLeafOrder(tree);
    auto const items = FindItemsInPlanes(tree, KeepAll(), {{{nan, 0, 0}, {1, 0, 0}}, 0, 12});
    EXPECT_EQ(items, std::vector<unsigned>(order.begin(), order.begin() + 12));
    EXPECT_EQ(FindItemsInPlanes(tree, KeepAll(), {{{nan, 0, 0}, {1, 0, 0}}, 0, 100}), order);
}

}  // namespace
