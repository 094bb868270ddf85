#include "geometry/Frame.h"

#include <Quorlan/IModelReader.h>
#include <Quorlan/ModelBuilder.h>

#include <algorithm>

/// What the operations do that an implementation of the interfaces may leave to us: they are told by the others.
namespace Quorlan {
namespace {

using GeometryObjectLib::DoubleFrame;
using GeometryObjectLib::ToVector3f;
using GeometryObjectLib::Vector3f;

PlacementRecord ToRecord(AffineTransform const& placement) {
    Vertex const origin = placement.matrix.GetColumn(3);
    Vector3f const x = ToVector3f(placement.matrix.GetColumn(0));
    Vector3f const y = ToVector3f(placement.matrix.GetColumn(1));
    return {{origin.x, origin.y, origin.z}, {x.x, x.y, x.z}, {y.x, y.y, y.z}};
}

AffineTransform ToTransform(PlacementRecord const& placement) {
    auto const& o = placement.origin;
    auto const& x = placement.xAxis;
    auto const& y = placement.yAxis;
    auto const frame = DoubleFrame::FromAxes({o[0], o[1], o[2]}, {x[0], x[1], x[2]}, {y[0], y[1], y[2]});
    return AffineTransform::FromMatrix(frame.ToMatrix());
}

}  // namespace

void IEntityReader::GetPlacementRecord(PlacementRecord& out, std::uint32_t entity) const {
    EntityIdentifier identifier;
    out = ToRecord(GetIdentifier(identifier, entity).placement);
}

void IGeometryReader::GetPlacementRecord(PlacementRecord& out, std::uint32_t placement) const {
    AffineTransform transform;
    GetPlacement(transform, placement);
    out = ToRecord(transform);
}

std::uint32_t IGeometryReader::GetPlacementCount() const {
    std::uint32_t count = 0;
    InstanceRecord instance;
    for (std::uint32_t i = 0, end = GetInstanceCount(); i < end; ++i) {
        GetInstance(instance, i);
        if (instance.placementIndex != kInvalidIndex) count = std::max(count, instance.placementIndex + 1);
    }
    return count;
}

void IGeometryReader::PreparePlacements() const {}

std::uint32_t IOwnerHistoryReader::GetReferenceCount() const {
    std::uint32_t count = 0;
    OwnerHistoryLink link;
    for (std::uint32_t i = 0, end = GetLinkCount(); i < end; ++i) {
        GetLink(link, i);
        if (link.reference != kInvalidIndex) count = std::max(count, link.reference + 1);
    }
    return count;
}

EntityIndex_t IEntityWriter::AddEntityAt(_GUID const& guid, std::wstring const& text,
                                         PlacementRecord const& placement) {
    return AddEntity(guid, text, ToTransform(placement));
}

void IInstanceWriter::AddInstanceAt(EntityIndex_t entity, GeometryDefinitionIndex_t definition, std::uint32_t material,
                                    std::uint32_t layer, PlacementRecord const& placement) {
    AddInstance(entity, definition, material, layer, ToTransform(placement));
}

}  // namespace Quorlan
