#pragma once

#include <Quorlan/ModelBuilder.h>
#include <Tools/UniqueGeometryDefinitionBuilder.h>

#include <array>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "Body.h"
#include "ImportReport.h"

namespace QuorlanProgram::Import {

/// Writes shapes, materials and layers, each once however many instances use it. Shapes that are moved or turned copies
/// of one another are found and written once, whether the file shares them or not.
class BodyWriter {
public:
    BodyWriter(Quorlan::ModelBuilder& builder, IfcGeometry& geometry, ImportReport& report)
        : builder_(builder),
          geometry_(geometry),
          report_(report),
          uniqueDefinitions_(builder.GetGeometryDefinitionBuilder()) {}

    /// Writes the body of an entity, minus `openings`, which are in the frame of the entity. Items without a style get
    /// `fallback`, items without a layer `defaultLayer` where that is not empty.
    /// RETURNS how many cuts were missed: openings, and boolean operations of items that are written for the first
    /// time.
    std::size_t Write(Quorlan::EntityIndex_t entity, Body const& body, std::vector<PlacedItem> const& openings,
                      std::optional<MaterialRecord> const& fallback, std::string const& defaultLayer);

private:
    /// A definition, and how it stands in the coordinates of the item.
    struct Definition {
        Quorlan::GeometryDefinitionIndex_t index;
        Matrix4 placement;
    };
    using Definitions = std::vector<Definition>;

    Definitions const& GetDefinitions(std::shared_ptr<IfcRepresentationItem> const& item);
    ConvertedShape Convert(std::shared_ptr<IfcRepresentationItem> const& item);
    Definition AddPart(FacetedBRep part);
    void NoteDeviation(Quorlan::GeometryDefinitionIndex_t index, FacetedBRep const& part, Matrix4 const& toDefinition);
    Definitions AddShape(FacetedBRep shape, bool isAsModelled);
    void AddInstances(Quorlan::EntityIndex_t entity, Definitions const& definitions, Matrix4 const& placement,
                      std::uint32_t material, std::uint32_t layer);
    std::uint32_t GetMaterial(std::optional<MaterialRecord> const& style);
    std::uint32_t GetLayer(std::string const& name);

    Quorlan::ModelBuilder& builder_;
    IfcGeometry& geometry_;
    ImportReport& report_;
    Quorlan::Tools::UniqueGeometryDefinitionBuilder uniqueDefinitions_;
    std::vector<std::vector<Vertex>> writtenVertices_;  ///< by definition
    std::unordered_map<IfcRepresentationItem const*, Definitions> definitions_;
    std::map<std::array<std::uint8_t, 5>, std::uint32_t> materials_;
    std::map<std::string, std::uint32_t> layers_;
    std::size_t missedCuts_ = 0;
};

}  // namespace QuorlanProgram::Import
