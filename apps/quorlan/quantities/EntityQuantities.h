#pragma once

#include "quantities/ShapeTrust.h"

#include <GeometryObjectLib/Vertex.h>
#include <Quorlan/IModelReader.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace QuorlanProgram {

/// Area, volume and centre of gravity of an entity or of a group of entities, and what to hold against them.
struct Quantities {
    std::uint64_t entities = 0;
    std::uint64_t instances = 0;  ///< that counted
    double area = 0;              ///< [m2]
    double volume = 0;            ///< [m3]
    GeometryObjectLib::Vertex center;
    std::set<std::string> doubts;  ///< reasons to distrust the figures; empty: none known

    /// Adds another entity or group; centres are weighted by volumes.
    void Add(Quantities const& other);
};

/// The quantities of every entity that has instances, and the layers these stand on.
class EntityQuantities {
public:
    struct entity_s {
        std::uint32_t entity = 0;
        std::string layer;  ///< "several" where instances stand on different ones, "" for none
        Quantities quantities;
    };

    EntityQuantities(std::vector<char> const& model, Quorlan::IModelReader const& reader);

    std::vector<entity_s> const& GetEntities() const { return entities_; }

private:
    void Examine(entity_s& entry, std::vector<unsigned> const& instances, Quorlan::IGeometryReader const& geometry);

    std::vector<ShapeTrust> trust_;  ///< by definition
    std::vector<bool> isExamined_;   ///< by definition
    std::vector<entity_s> entities_;
};

}  // namespace QuorlanProgram
