#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>

#include "geometry/WideNodes.h"

#include <utility>

namespace GeometryObjectLib {

QuantizedAxisAlignedBoxTree::QuantizedAxisAlignedBoxTree(Vertex origin, Vertex bvhQuantization,
                                                         std::vector<QuantizedAxisAlignedBoxTreeNode_s> nodes)
    : origin_(origin), bvhQuantization_(bvhQuantization), nodes_(std::move(nodes)), wideNodes_(MakeWideNodes(nodes_)) {}

}  // namespace GeometryObjectLib
