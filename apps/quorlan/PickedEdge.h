#pragma once

#include "PickScene.h"

#include <GeometryObjectLib/Vertex.h>
#include <Quorlan/IModelReader.h>

#include <vector>

namespace QuorlanProgram {

constexpr double kDefaultTolerance = 10;  ///< [pixels] between a pixel and the edge that it picks

/// The edge that an edge pick found: what it is, and its course through the world.
class PickedEdge {
public:
    enum class Kind { Edge, Line, Arc };

    /// REQUIRES: `hit` is a hit in the reader's model.
    static PickedEdge Find(Quorlan::IModelReader const& reader, EdgeHit const& hit);

    Kind GetKind() const { return kind_; }
    char const* GetKindName() const;

    /// Two points; an arc has more. Empty for an edge that the shape does not have.
    std::vector<GeometryObjectLib::Vertex> const& GetPath() const { return path_; }

private:
    Kind kind_ = Kind::Edge;
    std::vector<GeometryObjectLib::Vertex> path_;
};

}  // namespace QuorlanProgram
