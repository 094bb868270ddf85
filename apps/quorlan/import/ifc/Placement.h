#pragma once

#include <GeometryObjectLib/Matrix4.h>

#include <unordered_map>

class IfcMappedItem;
class IfcObjectPlacement;
class IfcPlacement;

namespace QuorlanProgram::Import {

using GeometryObjectLib::Matrix4;

/// A placement in the world.
struct WorldPlacement {
    Matrix4 matrix;
    bool isUsable = true;     ///< its origin is a number and not beyond all measure, and every part of it is known
    bool isRepaired = false;  ///< an axis of it was parallel to the other or of no length
};

/// Reads placements as matrices in metres.
///
/// Directions that are missing, of no length or parallel are replaced as the standard derives them, so that every
/// placement is a frame. What is no local placement (a grid or linear placement) is not known.
class PlacementReader {
public:
    explicit PlacementReader(double metresPerUnit) : metresPerUnit_(metresPerUnit) {}

    /// From the placement's own coordinates to the world, along the whole chain. A chain that meets itself ends there.
    WorldPlacement const& GetWorld(IfcObjectPlacement const* placement);

    /// From a placement's own coordinates to those it stands in; the identity for null.
    Matrix4 GetLocal(IfcPlacement const* placement) const;

    /// From the coordinates of the mapped representation to those of the item's own: target times origin. Need not be
    /// rigid.
    Matrix4 GetMapping(IfcMappedItem const& item) const;

private:
    double metresPerUnit_;
    std::unordered_map<IfcObjectPlacement const*, WorldPlacement> worlds_;
};

}  // namespace QuorlanProgram::Import
