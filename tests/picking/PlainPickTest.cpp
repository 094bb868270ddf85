// The pickers beside the plain rules, to the bit.

#include "picking/InstanceRays.h"
#include "picking/PickScene.h"
#include "picking/PlainPick.h"
#include "picking/SurfacePick.h"
#include "support/RandomModel.h"
#include "support/SameBits.h"

#include <Tools/Picking/ModelInstancesPicker.h>
#include <Tools/Picking/RayToBRepSurfaceIntersectionBuilder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace {

using namespace Quorlan::Testing;
using Quorlan::HasAvx2;
using Quorlan::kInvalidIndex;
using Quorlan::ModelView;

struct Random : RandomNumbers {
    using RandomNumbers::RandomNumbers;

    Vector3f Vector(double size) {
        return {FloatBetween(-size, size), FloatBetween(-size, size), FloatBetween(-size, size)};
    }
    Vertex Point(double size) { return {Between(-size, size), Between(-size, size), Between(-size, size)}; }
};

void ExpectSameHit(SurfaceHit const& a, SurfaceHit const& b) {
    EXPECT_EQ(a.isHit, b.isHit);
    EXPECT_EQ(a.face, b.face);
    EXPECT_TRUE(SameBits(a.t, b.t));
    EXPECT_TRUE(SameBits(a.position, b.position));
    EXPECT_TRUE(SameBits(a.normal, b.normal));
}

/// Faces of 0 to 11 vertices that are neither flat nor simple, holes of any of them, some vertices repeated.
GeometryObjectLib::FacetedBRep MakeTangle(Random& random) {
    GeometryObjectLib::FacetedBRep brep;
    std::uint32_t const vertexCount = 3 + random.Below(20);
    for (std::uint32_t i = 0; i < vertexCount; ++i) {
        Vector3f const p = random.Vector(1);
        bool const isRound = random.Below(3) == 0;
        brep.vertices.push_back(isRound ? Vertex{std::round(p.x), std::round(p.y), std::round(p.z)}
                                        : Vertex{p.x, p.y, p.z});
    }
    auto const makeLoop = [&] {
        std::vector<std::uint32_t> loop(random.Below(12));
        for (auto& index : loop) index = random.Below(vertexCount);
        return loop;
    };
    brep.faces.resize(1 + random.Below(11));
    for (auto& face : brep.faces) face = makeLoop();
    for (std::uint32_t i = random.Below(4); i > 0; --i) {
        brep.holes[random.Below(static_cast<std::uint32_t>(brep.faces.size()))].push_back(makeLoop());
    }
    return brep;
}

TEST(PlainPick, SurfacesOfAnyLoopsAreHitAlikeToTheBit) {
    constexpr std::uint32_t kSeed = 61;
    RecordProperty("seed", static_cast<int>(kSeed));
    Random random(kSeed);
    int hits = 0;
    for (int i = 0; i < 4000; ++i) {
        auto const brep = MakeTangle(random);
        FacetedBRepAccess const access(brep);
        Ray3f const ray{random.Vector(2), i % 7 == 0 ? Vector3f{0, 0, i % 2 == 0 ? 1.0f : -1.0f} : random.Vector(1)};
        std::vector<Plane3f> planes;
        if (i % 5 == 0) planes.push_back({random.Vector(1), random.FloatBetween(-0.5, 1)});
        for (bool const singleSided : {true, false}) {
            auto const plain = PlainIntersectSurface(ray, planes, access, singleSided);
            ExpectSameHit(IntersectSurface(ray, planes, access, singleSided), plain);
            hits += plain.isHit ? 1 : 0;
        }
        ASSERT_FALSE(HasFailure()) << "shape " << i;
    }
    EXPECT_GT(hits, 200);
}

TEST(PlainPick, ValuesThatAreNotFiniteGiveTheSameSurfaceHits) {
    constexpr float kInfinite = std::numeric_limits<float>::infinity();
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    Random random(62);
    for (int i = 0; i < 600; ++i) {
        auto brep = MakeTangle(random);
        float const odd = i % 3 == 0 ? kNaN : i % 3 == 1 ? kInfinite : 3e38f;
        brep.vertices[random.Below(static_cast<std::uint32_t>(brep.vertices.size()))].x = odd;
        Ray3f ray{random.Vector(2), random.Vector(1)};
        if (i % 4 == 0) ray.direction.y = odd;
        FacetedBRepAccess const access(brep);
        std::vector<Plane3f> const none;
        ExpectSameHit(IntersectSurface(ray, none, access, i % 2 == 0),
                      PlainIntersectSurface(ray, none, access, i % 2 == 0));
        ASSERT_FALSE(HasFailure()) << "shape " << i;
    }
}

TEST(PlainPick, RaysInLanesHaveTheBitsOfOneByOne) {
    for (auto const style : {RandomPlacements::kAligned, RandomPlacements::kRotated, RandomPlacements::kMixed}) {
        Random random(63);
        auto const buffer = Quorlan::Testing::MakeRandomModel(64, 203, style).Write();
        auto const model = *ModelView::Open(buffer.data());
        ModelRay const ray{random.Point(100), random.Point(1)};
        InstancePick const pick(model, ray, {});
        std::vector<std::uint32_t> ids(model.GetInstanceCount());
        std::iota(ids.rbegin(), ids.rend(), 0);
        Quorlan::InstanceArrays const arrays(model);
        for (std::size_t first = 0; first < ids.size(); first += 4) {
            for (std::size_t i = 0; i < 8; ++i) {
                std::size_t const lane = i % 4;
                InstanceRays const rays(arrays, ids.data(), first, ids.size(), ray, i < 4 && HasAvx2());
                auto const id = ids[std::min(first + lane, ids.size() - 1)];
                Ray3f const plain = pick.GetRayOf(*model.geometry->instances()->Get(id));
                EXPECT_TRUE(SameBits(rays.Get(lane).origin, plain.origin));
                EXPECT_TRUE(SameBits(rays.Get(lane).direction, plain.direction));
            }
        }
    }
}

/// Picks of both kinds over one random model. Bounds that lie and scaled transforms are part of it.
class WholePicks {
public:
    WholePicks(std::uint32_t seed, RawModel const& model) : random_(seed), buffer_(model.Write()) {
        all_.resize(model.instances->size());
        std::iota(all_.begin(), all_.end(), 0);
    }

    void Run(int count) {
        for (int i = 0; i < count && !testing::Test::HasFailure(); ++i) {
            std::shuffle(all_.begin(), all_.end(), shuffle_);
            RunOne(i);
        }
    }

    int surfaceHits = 0;
    int edgeHits = 0;

private:
    void RunOne(int i) {
        double const scale = i % 4 == 0 ? 0.3 : i % 4 == 1 ? 3 : 1;
        AffineTransform transform;
        for (std::size_t k = 0; k < 3; ++k) transform.matrix(k, k) = scale;
        Vertex const direction = random_.Point(1);
        Vertex const unit = direction / Length(direction);
        Vertex const location = random_.Point(2 * scale) - unit * (8 * scale);
        auto const view = ViewProjection::FromPerspective(location, unit, {0.1, 0.2, 1}, 1, 480, 480);
        std::vector<Plane3f> planes;
        if (i % 3 == 0) planes.push_back({random_.Vector(1), random_.FloatBetween(-1, 2)});
        ModelInstancesPicker picker;
        picker.SetViewProjection(view);
        picker.SetPickPositionX(200);
        picker.SetPickPositionY(250);
        picker.SetDynamicClippingPlanes(planes);

        auto const model = *ModelView::Open(buffer_.data());
        ModelRay const ray = CreatePickRay(view, 200, 250, transform);
        auto const carried = CarryPlanes(planes, transform);
        auto const surface = PlainPickSurfaces(model, ray, carried, all_);
        Expect(picker, picker.PickSurfaces(buffer_, transform, all_), surface, transform);
        surfaceHits += surface.instance != kInvalidIndex ? 1 : 0;
        ExpectSameWithoutAvx2(picker, FindNearestSurface(model, transform, ray, planes, all_, false));

        double const tolerance = 8;
        auto const focal = static_cast<float>((480 * 0.5) / std::tan(1.0 / 2));
        auto const edge = PlainPickEdges(model, buffer_, ray, carried, all_, focal, static_cast<float>(tolerance));
        bool const isEdgePicked = picker.PickEdges({GeometryType::FACETED_BREP, GeometryType::BREP_WITH_NORMAL,
                                                    GeometryType::BREP_WITH_UV, GeometryType::GRAPHICS_CONTAINER},
                                                   buffer_, transform, all_, tolerance);
        Expect(picker, isEdgePicked, edge, transform);
        edgeHits += edge.instance != kInvalidIndex ? 1 : 0;
    }

    static void ExpectSameWithoutAvx2(ModelInstancesPicker const& picker, std::optional<SurfacePick> const& pick) {
        ASSERT_EQ(pick.has_value(), picker.GetGeometryInstanceId() != kInvalidIndex);
        if (!pick) return;
        EXPECT_EQ(pick->instance, picker.GetGeometryInstanceId());
        EXPECT_EQ(pick->face, picker.GetGeometryInstancePrimitiveId());
        EXPECT_TRUE(SameBits(pick->distance, picker.GetShortestDistance()));
        EXPECT_TRUE(SameBits(pick->point, picker.GetPickedPoint()));
        EXPECT_TRUE(SameBits(pick->normal, picker.GetPickedNormal()));
    }

    void Expect(ModelInstancesPicker const& picker, bool isPicked, PlainHit const& plain,
                AffineTransform const& transform) {
        ASSERT_EQ(isPicked, plain.instance != kInvalidIndex);
        EXPECT_EQ(picker.GetGeometryInstanceId(), plain.instance);
        EXPECT_EQ(picker.GetGeometryInstancePrimitiveId(), plain.primitive);
        if (!isPicked) return;
        auto const model = *ModelView::Open(buffer_.data());
        InstanceFrame const frame =
            InstancePick(model, {}, {}).GetFrameOf(*model.geometry->instances()->Get(plain.instance));
        EXPECT_TRUE(SameBits(picker.GetShortestDistance(), plain.t * Length(transform.matrix.GetColumn(0))));
        EXPECT_TRUE(
            SameBits(picker.GetPickedPoint(), TransformPoint(transform.matrix, frame.ToModelPoint(plain.position))));
    }

    Random random_;
    std::mt19937 shuffle_{5};
    std::vector<char> buffer_;
    std::vector<unsigned> all_;
};

TEST(PlainPick, WholePicksOfRandomModelsAgreeToTheBit) {
    WholePicks picks(65, Quorlan::Testing::MakeRandomModel(66, 60, 3.0));
    picks.Run(400);
    EXPECT_GT(picks.surfaceHits, 50);
    EXPECT_GT(picks.edgeHits, 50);
}

TEST(PlainPick, BoundsThatLieDecideOnSurfacesByTheRuleAndNotOnEdges) {
    RawModel model = Quorlan::Testing::MakeRandomModel(67, 50, 3.0);
    Random random(68);
    for (auto& definition : *model.definitions) {
        definition.lo = random.Vector(2);
        definition.hi = definition.lo + Vector3f{0.1f, 0.1f, 0.1f};
    }
    WholePicks picks(69, model);
    picks.Run(300);
    EXPECT_GT(picks.surfaceHits, 30);
    EXPECT_GT(picks.edgeHits, 30);
}

}  // namespace
