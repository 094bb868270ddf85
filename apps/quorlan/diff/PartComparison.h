#pragma once

#include "diff/EntityComparison.h"

#include <GeometryObjectLib/Matrix4.h>

#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace QuorlanProgram {

/// How the placed shapes of two states of an entity belong together.
struct PartMatch {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> pairs;  ///< same world geometry, old and new part
    std::size_t oldCount = 0;
    std::size_t newCount = 0;

    bool IsComplete() const { return pairs.size() == oldCount && pairs.size() == newCount; }
};

/// Compares the parts of two entities.
class PartComparison {
public:
    PartComparison(ModelContent const& oldModel, std::vector<ModelContent::part_s> const& oldParts,
                   ModelContent const& newModel, std::vector<ModelContent::part_s> const& newParts,
                   Tolerances const& tolerances);

    /// Pairs of parts with the same world geometry once `motion` has moved the old ones, in any order; equal materials
    /// and layers are preferred.
    PartMatch Match(GeometryObjectLib::Matrix4 const& motion) const;

    /// The rigid motion that brings all old parts, in order, onto the new ones.
    std::optional<GeometryObjectLib::Matrix4> FindMotion() const;

    /// The distance and the angle of a motion as the old parts undergo it, or where there are none, as `origin` does.
    Motion Describe(GeometryObjectLib::Matrix4 const& motion, GeometryObjectLib::Vertex const& origin) const;

    /// How far the middle of the box around all parts went [m]; not a number where one of the two has no parts.
    double MeasureShift() const;

private:
    using Part = ModelContent::part_s;
    using PartIndex = std::multimap<double, std::uint32_t>;  ///< old parts by the x of their middle

    bool HaveSameGeometry(GeometryObjectLib::Matrix4 const& motion, Part const& a, Part const& b) const;
    PartIndex::iterator FindPartner(GeometryObjectLib::Matrix4 const& motion, PartIndex& rest, Part const& newPart,
                                    bool needsStyle) const;
    double GetTolerance(PlainShape const& a, PlainShape const& b) const;

    ModelContent const& oldModel_;
    std::vector<Part> const& oldParts_;
    ModelContent const& newModel_;
    std::vector<Part> const& newParts_;
    Tolerances tolerances_;
};

}  // namespace QuorlanProgram
