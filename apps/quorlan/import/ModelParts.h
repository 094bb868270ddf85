#pragma once

#include <Quorlan/ModelBuilder.h>
#include <Tools/UniqueGeometryDefinitionBuilder.h>

#include <array>
#include <map>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "ImportReport.h"
#include "shape/Shape.h"

namespace QuorlanProgram::Import {

using Quorlan::MaterialRecord;

/// What the files of one import have in common: the model that they are written to, and its shapes, materials and
/// layers, each of which is written once however many instances and files use it. Shapes that are moved or turned
/// copies of one another are found and written once, whether a file shares them or not.
class ModelParts {
public:
    /// A definition, and how it stands in the coordinates of the shape it was made of.
    struct Definition {
        Quorlan::GeometryDefinitionIndex_t index;
        Matrix4 placement;
    };
    using Definitions = std::vector<Definition>;

    ModelParts() : uniqueDefinitions_(builder_.GetGeometryDefinitionBuilder()) {}

    /// Counts what follows in `report`, which must live until the next call.
    void BeginFile(ImportReport& report);

    Quorlan::ModelBuilder& GetBuilder() { return builder_; }

    /// An entity with an IFC GUID. A text that is no GUID becomes an identifier text. Equal GUIDs keep all their
    /// entities, and each is named once in each file that repeats it.
    Quorlan::EntityIndex_t AddEntity(std::string const& guid, std::wstring const& name, Matrix4 const& world);

    /// An entity that a UTF-8 text identifies; where a file repeats it, that is reported as for GUIDs.
    Quorlan::EntityIndex_t AddNamedEntity(std::string const& identifier, std::wstring const& name,
                                          Matrix4 const& world);

    /// The definitions of a shape: none of an empty one, several of one beyond 65,536 vertices.
    Definitions AddShape(FacetedBRep const& shape);

    /// The definition of line graphics; none of empty ones.
    Definitions AddGraphics(Quorlan::GraphicsContainer const& graphics);

    void AddInstances(Quorlan::EntityIndex_t entity, Definitions const& definitions, Matrix4 const& placement,
                      std::optional<MaterialRecord> const& material, std::string const& layer);

    std::vector<char> Create() const { return builder_.Create(); }

private:
    void NoteIdentifier(std::string const& identifier);
    Definition AddPart(FacetedBRep part);
    void NoteDeviation(Quorlan::GeometryDefinitionIndex_t index, FacetedBRep const& part, Matrix4 const& toDefinition);
    std::uint32_t GetMaterial(std::optional<MaterialRecord> const& style);
    std::uint32_t GetLayer(std::string const& name);

    Quorlan::ModelBuilder builder_;
    Quorlan::Tools::UniqueGeometryDefinitionBuilder uniqueDefinitions_;
    std::vector<std::vector<Vertex>> writtenVertices_;  ///< by definition; none of line graphics
    std::size_t earlierDefinitions_ = 0;                ///< those of the files before this one
    std::map<std::array<std::uint8_t, 5>, std::uint32_t> materials_;
    std::map<std::string, std::uint32_t> layers_;
    std::unordered_set<std::string> identifiers_;
    std::unordered_set<std::string> repeated_;  ///< those named in the report of this file
    ImportReport* report_ = nullptr;
};

}  // namespace QuorlanProgram::Import
