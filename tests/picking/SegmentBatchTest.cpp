#include "picking/SegmentBatch.h"

#include "picking/EdgeScenes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Quorlan::Testing {

namespace {

using Tools::Picking::ClosestPointRaySegment;
using Tools::Picking::SegmentBatch;

void ExpectTheScalarDistances(SegmentBatch const& batch, Ray3f const& ray) {
    float squaredDistances[SegmentBatch::kCapacity];
    batch.Measure(ray, squaredDistances);
    for (std::size_t i = 0; i < batch.GetSize(); ++i) {
        float const expected = ClosestPointRaySegment(ray, batch.GetStart(i), batch.GetEnd(i)).distance;
        if (std::isnan(expected)) {
            ASSERT_TRUE(std::isnan(squaredDistances[i])) << i;
        } else {
            ASSERT_EQ(std::sqrt(squaredDistances[i]), expected) << i;
        }
    }
}

}  // namespace

TEST(SegmentBatch, KeepsWhatWasAddedInOrder) {
    SegmentBatch batch;
    EXPECT_EQ(batch.GetSize(), 0u);
    batch.Add({1, 2, 3}, {4, 5, 6});
    batch.Add({7, 8, 9}, {10, 11, 12});
    ASSERT_EQ(batch.GetSize(), 2u);
    EXPECT_EQ(batch.GetStart(1).y, 8);
    EXPECT_EQ(batch.GetEnd(0).z, 6);
    batch.Clear();
    EXPECT_EQ(batch.GetSize(), 0u);
}

TEST(SegmentBatch, GivesTheBitsOfTheScalarSearchForEverySize) {
    constexpr std::uint32_t kSeed = 4330;
    SCOPED_TRACE(kSeed);
    RandomScene random(kSeed);
    for (int round = 0; round < 3000; ++round) {
        Ray3f const ray = round % 5 == 0 ? Ray3f{random.Point(20), {0, 0, -1}} : random.Ray(20);
        SegmentBatch batch;
        for (std::size_t size = random.Below(SegmentBatch::kCapacity + 1); batch.GetSize() < size;) {
            Vector3f const p = random.Point(round % 7 == 0 ? 1e6f : 5);
            switch (random.Below(6)) {
                case 0: batch.Add(p, p); break;
                case 1: batch.Add(p, p + ray.direction * random.Between(-4, 4)); break;
                case 2: batch.Add(ray.origin, p); break;
                case 3: batch.Add({p.x, std::nanf(""), p.z}, random.Point(5)); break;
                default: batch.Add(p, random.Point(5));
            }
        }
        ExpectTheScalarDistances(batch, ray);
    }
}

}  // namespace Quorlan::Testing
