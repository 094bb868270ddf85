#pragma once

#include "diff/ModelContent.h"

#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace QuorlanProgram {

/// How far numbers may lie apart and still count as equal.
struct Tolerances {
    double position = 1e-4;   ///< [m] of every point in the world; a shape's size adds 2e-5 of itself
    double direction = 1e-4;  ///< [-] of axes, normals and texture coordinates
    double property = 1e-6;   ///< [-] of a property's value, relative to the larger one
};

/// A rigid motion in the words of an engineer.
struct Motion {
    double distance = 0;  ///< [m] from the middle of the points to the middle of their images
    double degrees = 0;   ///< of the rotation
};

/// What is different about an entity, from an old to a new state.
struct EntityDifference {
    std::optional<std::pair<std::string, std::string>> name;
    std::optional<Motion> motion;  ///< of the entity with its shapes
    bool isFrameMoved = false;     ///< the placement differs, the shapes stay
    std::size_t changedShapes = 0;
    std::size_t addedShapes = 0;
    std::size_t removedShapes = 0;
    std::set<std::string> materials;      ///< "#c82828 → #2828c8"
    std::set<std::string> layers;         ///< "'Walls' → 'Doors'"
    std::vector<std::string> properties;  ///< "Pset.Name 'a' → 'b'"

    bool HasShapeChange() const { return changedShapes + addedShapes + removedShapes > 0; }
    bool IsNone() const;
};

/// Compares an entity of one model with one of another; both models' content stands in one store.
///
/// Shapes count by where they are in the world, not by how they are stored: which definition, at which placement, in
/// which order of instances makes no difference. Their loops must be the same, vertex by vertex.
EntityDifference CompareEntities(ModelContent const& oldModel, ModelContent::entity_s const& oldEntity,
                                 ModelContent const& newModel, ModelContent::entity_s const& newEntity,
                                 Tolerances const& tolerances);

}  // namespace QuorlanProgram
