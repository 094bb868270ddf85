#pragma once

#include <memory>
#include <vector>

#include "cut/SolidCuts.h"
#include "ifc/IfcFile.h"
#include "shape/Chords.h"
#include "shape/Shape.h"

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
    bool isAsModelled = false;     ///< otherwise the faces are joined from the kernel's triangles
    bool isSolid = false;          ///< the item is a solid, so that its shape should be closed
    std::size_t droppedFaces = 0;  ///< that are no polygon
    std::size_t addedFaces = 0;    ///< that the file lacks
    CutCount cuts;                 ///< the item's own boolean operations
};

/// An item of a body from which openings were cut.
struct CutShape {
    bool isCut = false;        ///< false: no opening changes the item, and `converted` has cuts that are wrong alone
    ConvertedShape converted;  ///< in the frame of the product
};

/// How shapes are made.
struct ShapeOptions {
    Chords chords;
    bool joinsFaces = true;  ///< whether the kernel's triangles become polygons
};

/// Makes shapes of representation items, through the geometry kernel of the IFC library where it must.
///
/// The kernel's headers stay in the source file: they are large and put names into the global namespace.
class IfcGeometry {
public:
    IfcGeometry(std::shared_ptr<BuildingModel> const& model, double metresPerUnit, ShapeOptions const& options,
                MessageLog& log);
    IfcGeometry(IfcGeometry const&) = delete;
    IfcGeometry& operator=(IfcGeometry const&) = delete;
    ~IfcGeometry();

    /// The shape of one item in its own coordinates, without openings; empty, with a message in the log, for an item
    /// that is not supported. Polygonal items and plain extrusions keep their faces and holes.
    ConvertedShape Convert(std::shared_ptr<IfcRepresentationItem> const& item);

    /// The items of `body` minus those of `openings`, all in the frame of one product; result i belongs to item i.
    std::vector<CutShape> Cut(std::vector<PlacedItem> const& body, std::vector<PlacedItem> const& openings);

    /// The points of a curve, as the kernel makes it discrete; none where it does not know it.
    Loop ConvertCurve(std::shared_ptr<IfcRepresentationItem> const& item);

private:
    struct Kernel;
    std::unique_ptr<Kernel> kernel_;
    double metresPerUnit_;
};

}  // namespace QuorlanProgram::Import
