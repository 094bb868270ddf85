#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "ModelParts.h"
#include "ifc/Body.h"
#include "ifc/CurveReader.h"

namespace QuorlanProgram::Import {

/// Writes the bodies and curves of one file's products: an item that several products use is converted once.
class BodyWriter {
public:
    BodyWriter(ModelParts& parts, IfcGeometry& geometry, ImportReport& report)
        : parts_(parts), geometry_(geometry), report_(report) {}

    /// Whose body it is, and what it gets where the file says nothing.
    struct Owner {
        Quorlan::EntityIndex_t entity{};
        std::string guid;                        ///< by which the report names it
        std::optional<MaterialRecord> material;  ///< of items without a style
        std::string layer;                       ///< of items without a layer; may be empty
    };

    /// Writes a body minus `openings`, which are in the frame of the entity. Cuts that went wrong, solids that are not
    /// closed and items without a shape are named in the report.
    void WriteBody(Owner const& owner, std::vector<BodyItem> const& body, std::vector<PlacedItem> const& openings);

    /// Writes curve items: what belongs together by material and layer as one definition of line graphics.
    void WriteCurves(Owner const& owner, std::vector<BodyItem> const& items, CurveReader const& curves);

private:
    using Definitions = ModelParts::Definitions;

    struct Converted {
        Definitions definitions;
        CutCount cuts;
        std::size_t droppedFaces = 0;
        std::size_t addedFaces = 0;
        bool isSolid = false;
        bool isOpenSolid = false;
    };

    void WriteItem(Owner const& owner, BodyItem const& item, CutShape cut);
    ConvertedShape Convert(std::shared_ptr<IfcRepresentationItem> const& item);
    Converted const& GetDefinitions(std::shared_ptr<IfcRepresentationItem> const& item);
    Converted Add(ConvertedShape const& shape);
    void Note(Owner const& owner, BodyItem const& item, Converted const& converted);

    ModelParts& parts_;
    IfcGeometry& geometry_;
    ImportReport& report_;
    std::unordered_map<IfcRepresentationItem const*, Converted> definitions_;
};

}  // namespace QuorlanProgram::Import
