#pragma once

#include "geometry/Avx2.h"
#include "picking/ModelRay.h"

#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

/// Queries of the tree over a model's instances. All of them list the items of leaves in the tree's depth-first order
/// and work relative to the tree's origin, which is subtracted in double precision before anything is narrowed.
namespace Quorlan::Tools::Picking {

using GeometryObjectLib::QuantizedAxisAlignedBoxTree;
using Quorlan::HasAvx2;

/// Where the records of items lie, one behind the other, for queries to fetch those that they find into the cache.
struct ItemRecords {
    std::uint8_t const* first = nullptr;
    std::size_t size = 0;  ///< [bytes] of one
};

/// The items whose boxes the ray meets. The ray is a half line. REQUIRES: with `usesAvx2`, HasAvx2().
std::vector<unsigned> FindItemsAlongRay(QuantizedAxisAlignedBoxTree const& tree, ModelRay const& ray,
                                        ItemRecords const& records = {}, bool usesAvx2 = HasAvx2());

/// Which items of many count: of more than `most` the at most `limit` whose boxes' centres lie nearest to the ray.
struct Narrowing {
    ModelRay ray;
    std::size_t most = std::numeric_limits<std::size_t>::max();
    std::size_t limit = 0;
};

/// The items whose boxes are not wholly outside one of the four planes. The planes are relative to the tree's origin.
/// Where items are narrowed down, the nearest come first and, of equal distances, the first in the tree.
std::vector<unsigned> FindItemsInPlanes(QuantizedAxisAlignedBoxTree const& tree, std::vector<Plane3f> const& planes,
                                        Narrowing const& narrowing = {}, bool usesAvx2 = HasAvx2());

}  // namespace Quorlan::Tools::Picking
