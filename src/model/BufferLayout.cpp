// The layout of every struct of the buffer, held to the byte: what is written today must be read for ever.

#include <model_generated.h>

namespace Quorlan::Schema {

static_assert(sizeof(Vector3) == 12);
static_assert(sizeof(Placement) == 48 && alignof(Placement) == 8);
static_assert(sizeof(EntityRecord) == 64 && alignof(EntityRecord) == 8);
static_assert(sizeof(Guid) == 16);
static_assert(sizeof(GeometricKey) == 56);
static_assert(sizeof(OwnerHistoryRecord) == 24);
static_assert(sizeof(OwnerHistoryLink) == 8);
static_assert(sizeof(GeometryDefinitionInfo) == 32);
static_assert(sizeof(Instance) == 20);
static_assert(sizeof(Material) == 20);
static_assert(sizeof(PositionVertex) == 12);
static_assert(sizeof(UVVertex) == 20);
static_assert(sizeof(NormalVertex) == 24);
static_assert(sizeof(LineSegment) == 24);
static_assert(sizeof(ArcSegment) == 44);
static_assert(sizeof(PropertyEntry) == 24);

static_assert(Model::VT_ENTITIES == 4 && Model::VT_OWNERHISTORIES == 6 && Model::VT_GEOMETRY == 8);
static_assert(Entities::VT_RECORDS == 4);
static_assert(Geometry::VT_PLACEMENTS == 4 && Geometry::VT_MATERIALS == 6 && Geometry::VT_LAYERS == 8);
static_assert(Geometry::VT_DEFINITIONS == 10 && Geometry::VT_INSTANCES == 12 && Geometry::VT_TEXTURES == 14);
static_assert(Geometry::VT_FACETEDBREPS == 16 && Geometry::VT_BREPSWITHUV == 28);
static_assert(Geometry::VT_BREPSWITHNORMAL == 30 && Geometry::VT_GRAPHICSCONTAINERS == 32);
static_assert(FacetedBRepTable::VT_FACES == 4 && FacetedBRepTable::VT_HOLES == 6 && FacetedBRepTable::VT_VERTICES == 8);
static_assert(FaceTable::VT_OUTERLOOP == 4 && HoleTable::VT_FACE == 4 && HoleTable::VT_INNERLOOP == 6);
static_assert(GraphicsContainerTable::VT_SEGMENTS == 4 && GraphicsContainerTable::VT_ARCS == 6);

}  // namespace Quorlan::Schema
