#include "diff/EntityComparison.h"

#include "EntityLabel.h"
#include "diff/PartComparison.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <tuple>
#include <variant>

namespace QuorlanProgram {
namespace {

using Entity = ModelContent::entity_s;
using GeometryObjectLib::Matrix4;
using Quorlan::PlacementRecord;
using Quorlan::PropertyRecord;

PlacementRecord PlacementOf(ModelContent const& model, Entity const& entity) {
    PlacementRecord placement;
    model.GetReader().GetEntities().GetPlacementRecord(placement, entity.index);
    return placement;
}

Matrix4 FrameOf(ModelContent const& model, Entity const& entity) {
    Quorlan::EntityIdentifier identifier;
    model.GetReader().GetEntities().GetIdentifier(identifier, entity.index);
    return identifier.placement.matrix;
}

bool AreSame(PlacementRecord const& a, PlacementRecord const& b, Tolerances const& tolerances) {
    if (a.origin == b.origin && a.xAxis == b.xAxis && a.yAxis == b.yAxis) return true;
    for (std::size_t i = 0; i < 3; ++i) {
        bool const isSameNumber = std::memcmp(&a.origin[i], &b.origin[i], sizeof(double)) == 0;
        if (!isSameNumber && !(std::abs(a.origin[i] - b.origin[i]) <= tolerances.position)) return false;
        for (auto const axis : {&PlacementRecord::xAxis, &PlacementRecord::yAxis}) {
            bool const isSameAxis = std::memcmp(&(a.*axis)[i], &(b.*axis)[i], sizeof(float)) == 0;
            if (!isSameAxis && !(std::abs((a.*axis)[i] - (b.*axis)[i]) <= tolerances.direction)) return false;
        }
    }
    return true;
}

/// The motion from one frame to another.
Matrix4 MotionBetween(Matrix4 const& from, Matrix4 const& to) {
    Matrix4 inverse;
    for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 3; ++c) inverse(r, c) = from(c, r);
        inverse(r, 3) = -(from(0, r) * from(0, 3) + from(1, r) * from(1, 3) + from(2, r) * from(2, 3));
    }
    return to * inverse;
}

std::string NameOfMaterial(ModelContent const& model, std::uint32_t material) {
    if (material == Quorlan::kInvalidIndex) return "none";
    auto const& record = model.GetStore().GetMaterial(material);
    auto const& [r, g, b, a] = record.color;
    auto name = fmt::format("#{:02x}{:02x}{:02x}", r, g, b);
    if (a != 255) name += fmt::format("{:02x}", a);
    if (record.textureIndex >= 0) name += fmt::format(" with texture {}", record.textureIndex + 1);
    if (record.twoSided) name += " two-sided";
    return name;
}

std::string NameOfLayer(std::string const* layer) { return layer ? "'" + *layer + "'" : "none"; }

std::string ToText(decltype(PropertyRecord::value) const& value) {
    struct visitor_s {
        std::string operator()(std::string const& text) const { return "'" + text + "'"; }
        std::string operator()(double number) const { return fmt::format("{}", number); }
        std::string operator()(std::int64_t number) const { return fmt::format("{}", number); }
        std::string operator()(bool truth) const { return truth ? "true" : "false"; }
    };
    return std::visit(visitor_s{}, value);
}

bool AreSame(PropertyRecord const& a, PropertyRecord const& b, double tolerance) {
    auto const* const x = std::get_if<double>(&a.value);
    auto const* const y = std::get_if<double>(&b.value);
    if (!x || !y) return a.value == b.value;
    if (std::memcmp(x, y, sizeof(double)) == 0) return true;
    return std::abs(*x - *y) <= tolerance * std::max(std::abs(*x), std::abs(*y));
}

/// Both lists by set and name, where equal names keep their order.
void CompareProperties(EntityDifference& out, std::vector<PropertyRecord> oldOnes, std::vector<PropertyRecord> newOnes,
                       Tolerances const& tolerances) {
    auto const isBefore = [](PropertyRecord const& a, PropertyRecord const& b) {
        return std::tie(a.set, a.name) < std::tie(b.set, b.name);
    };
    std::stable_sort(oldOnes.begin(), oldOnes.end(), isBefore);
    std::stable_sort(newOnes.begin(), newOnes.end(), isBefore);
    auto const add = [&out](PropertyRecord const& key, std::string const& what) {
        out.properties.push_back((key.set.empty() ? key.name : key.set + "." + key.name) + what);
    };
    for (auto a = oldOnes.begin(), b = newOnes.begin(); a != oldOnes.end() || b != newOnes.end();) {
        if (b == newOnes.end() || (a != oldOnes.end() && isBefore(*a, *b))) {
            add(*a, " " + ToText(a->value) + " removed");
            ++a;
        } else if (a == oldOnes.end() || isBefore(*b, *a)) {
            add(*b, " " + ToText(b->value) + " added");
            ++b;
        } else {
            if (!AreSame(*a, *b, tolerances.property)) add(*a, " " + ToText(a->value) + " → " + ToText(b->value));
            ++a;
            ++b;
        }
    }
}

/// How the shapes differ, and which motion the rest of the comparison goes by.
PartMatch CompareShapes(EntityDifference& out, PartComparison const& comparison, Matrix4 const& oldFrame,
                        Matrix4 const& newFrame, bool isFrameSame, Tolerances const& tolerances) {
    auto const frameMotion = MotionBetween(oldFrame, newFrame);
    auto const origin = oldFrame.GetColumn(3);
    auto match = comparison.Match({});
    if (match.IsComplete()) {
        if (isFrameSame) return match;
        if (match.oldCount > 0) {
            out.isFrameMoved = true;
        } else {
            out.motion = comparison.Describe(frameMotion, origin);
        }
        return match;
    }
    if (auto const motion = comparison.FindMotion()) {
        out.motion = comparison.Describe(*motion, origin);
        return comparison.Match(*motion);
    }
    if (!isFrameSame) {
        auto moved = comparison.Match(frameMotion);
        if (moved.pairs.size() > match.pairs.size()) {
            out.motion = comparison.Describe(frameMotion, origin);
            match = std::move(moved);
        } else if (match.pairs.empty()) {
            // No shape tells how far the whole went. A frame may sit at either end of a beam that was made anew in its
            // place, and the middle of a wall goes up as it grows: what is less speaks of a motion.
            double const distance = Length(newFrame.GetColumn(3) - origin);
            double const shift = comparison.MeasureShift();
            double const least = shift < distance ? shift : distance;
            if (least > tolerances.position) out.motion = Motion{least, 0};
        }
    }
    auto const oldRest = match.oldCount - match.pairs.size();
    auto const newRest = match.newCount - match.pairs.size();
    out.changedShapes = std::min(oldRest, newRest);
    out.removedShapes = oldRest - out.changedShapes;
    out.addedShapes = newRest - out.changedShapes;
    return match;
}

}  // namespace

bool EntityDifference::IsNone() const {
    return !name && !motion && !isFrameMoved && !HasShapeChange() && materials.empty() && layers.empty() &&
           properties.empty();
}

EntityDifference CompareEntities(ModelContent const& oldModel, Entity const& oldEntity, ModelContent const& newModel,
                                 Entity const& newEntity, Tolerances const& tolerances) {
    EntityDifference out;
    auto const oldName = LabelOf(oldModel.GetReader().GetEntities(), oldEntity.index).name;
    auto const newName = LabelOf(newModel.GetReader().GetEntities(), newEntity.index).name;
    if (oldName != newName) out.name = {oldName, newName};

    bool const isFrameSame = AreSame(PlacementOf(oldModel, oldEntity), PlacementOf(newModel, newEntity), tolerances);
    PartComparison const comparison(oldModel, oldEntity.parts, newModel, newEntity.parts, tolerances);
    auto const match = CompareShapes(out, comparison, FrameOf(oldModel, oldEntity), FrameOf(newModel, newEntity),
                                     isFrameSame, tolerances);
    for (auto const& [a, b] : match.pairs) {
        auto const& oldPart = oldEntity.parts[a];
        auto const& newPart = newEntity.parts[b];
        if (oldPart.material != newPart.material) {
            out.materials.insert(NameOfMaterial(oldModel, oldPart.material) + " → " +
                                 NameOfMaterial(newModel, newPart.material));
        }
        auto const oldLayer = NameOfLayer(oldPart.layer), newLayer = NameOfLayer(newPart.layer);
        if (oldLayer != newLayer) out.layers.insert(oldLayer + " → " + newLayer);
    }
    CompareProperties(out, oldModel.GetProperties(oldEntity), newModel.GetProperties(newEntity), tolerances);
    return out;
}

}  // namespace QuorlanProgram
