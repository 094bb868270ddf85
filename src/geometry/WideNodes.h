#pragma once

#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>

#include <vector>

namespace GeometryObjectLib {

/// The wide nodes of a tree, breadth first from the root's on. None where some node has not two children whose boxes
/// its own contains, or where there are less than `kLeastNodes`.
///
/// A wide node takes in as many levels of the tree as give eight children; the children of a node of n leaves are of
/// at most the power of eight below n, so that the lowest wide nodes are nearly full however many leaves there are
/// (Wald, Benthin, Boulos, "Getting Rid of Packets", 2008; bounds in eight bits of their node's: Ylitie, Karras, Laine,
/// "Efficient Incoherent Ray Traversal on GPUs Through Compressed Wide BVHs", 2017).
std::vector<QuantizedAxisAlignedBoxTreeWideNode_s> MakeWideNodes(
    std::vector<QuantizedAxisAlignedBoxTreeNode_s> const& nodes);

}  // namespace GeometryObjectLib
