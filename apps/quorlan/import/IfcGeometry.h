#pragma once

#include <memory>
#include <vector>

#include "IfcFile.h"
#include "Shape.h"

class BuildingModel;
class IfcRepresentationItem;

namespace QuorlanProgram::Import {

/// An item and where it stands in the frame of its product.
struct PlacedItem {
    std::shared_ptr<IfcRepresentationItem> item;
    Matrix4 placement;
};

struct ConvertedShape {
    FacetedBRep shape;
    bool isAsModelled = false;   ///< otherwise the faces are joined from the kernel's triangles
    std::size_t missedCuts = 0;  ///< boolean operations of the item that failed
};

/// An item of a body from which openings were cut.
struct CutShape {
    bool isCut = false;          ///< false: no opening changes the item, and `shape` is empty
    FacetedBRep shape;           ///< in the frame of the product
    std::size_t missedCuts = 0;  ///< openings that failed; of an item that is cut, its own operations too
};

/// Makes shapes of representation items, through the geometry kernel of the IFC library where it must.
///
/// The kernel's headers stay in the source file: they are large and put names into the global namespace.
class IfcGeometry {
public:
    IfcGeometry(std::shared_ptr<BuildingModel> const& model, double metresPerUnit, int verticesPerCircle,
                MessageLog& log);
    IfcGeometry(IfcGeometry const&) = delete;
    IfcGeometry& operator=(IfcGeometry const&) = delete;
    ~IfcGeometry();

    /// The shape of one item in its own coordinates, without openings; empty, with a message in the log, for an item
    /// that is not supported. Polygonal items and plain extrusions keep their faces and holes.
    ConvertedShape Convert(std::shared_ptr<IfcRepresentationItem> const& item);

    /// The items of `body` minus those of `openings`, all in the frame of one product; result i belongs to item i.
    std::vector<CutShape> Cut(std::vector<PlacedItem> const& body, std::vector<PlacedItem> const& openings);

private:
    struct Kernel;
    std::unique_ptr<Kernel> kernel_;
    double metresPerUnit_;
};

}  // namespace QuorlanProgram::Import
