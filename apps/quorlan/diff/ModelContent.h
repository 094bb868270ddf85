#pragma once

#include "diff/ShapeStore.h"

#include <Quorlan/IModelReader.h>
#include <Tools/PlacementBuilder.h>

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace QuorlanProgram {

/// What a model holds of each entity that a GUID identifies, in the form that comparing takes.
class ModelContent {
public:
    /// One placed shape.
    struct part_s {
        std::uint32_t shape = 0;     ///< in the store
        std::uint32_t material = 0;  ///< in the store; kInvalidIndex for none
        std::uint32_t instance = 0;
        std::string const* layer = nullptr;  ///< null for none
    };

    struct entity_s {
        std::uint32_t index = 0;
        std::string guid;  ///< 22 characters
        std::vector<part_s> parts;
    };

    /// The bytes and the reader of one model, which must outlive this object, as must the store.
    ModelContent(std::vector<char> const& model, Quorlan::IModelReader const& reader, ShapeStore& store);
    ModelContent(ModelContent const&) = delete;
    ModelContent& operator=(ModelContent const&) = delete;

    /// In the order of the model; of equal GUIDs the first entity alone.
    std::vector<entity_s> const& GetEntities() const { return entities_; }

    /// Null if there is none.
    entity_s const* Find(std::string const& guid) const;

    /// How many entities stand outside of every comparison because no GUID, or one that came before, identifies them.
    std::uint32_t GetUnnamedCount() const { return reader_.GetEntities().GetCount() - GetNamedCount() - repeated_; }
    std::uint32_t GetRepeatedCount() const { return repeated_; }

    std::vector<char> const& GetBytes() const { return model_; }
    Quorlan::IModelReader const& GetReader() const { return reader_; }
    ShapeStore const& GetStore() const { return store_; }
    Quorlan::Tools::Matrix4 const& GetWorld(part_s const& part) const { return placements_[part.instance]; }

    /// But for those that tell of the import rather than of the building.
    std::vector<Quorlan::PropertyRecord> GetProperties(entity_s const& entity) const;

private:
    std::uint32_t GetNamedCount() const { return static_cast<std::uint32_t>(entities_.size()); }
    void AddEntities();
    void AddParts();

    std::vector<char> const& model_;
    Quorlan::IModelReader const& reader_;
    ShapeStore& store_;
    std::vector<entity_s> entities_;
    std::unordered_map<std::string, std::uint32_t> entityOfGuid_;
    std::vector<std::uint32_t> slots_;  ///< by entity index, into `entities_`
    std::vector<std::string> layers_;
    std::vector<Quorlan::Tools::Matrix4> placements_;
    std::uint32_t repeated_ = 0;
};

}  // namespace QuorlanProgram
