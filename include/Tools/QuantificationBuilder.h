#pragma once

#include <GeometryObjectLib/Matrix4.h>
#include <GeometryObjectLib/Vertex.h>
#include <Tools/Export.h>
#include <Tools/InstancesByEntitiesBuilder.h>

#include <vector>

namespace Quorlan::Tools {

using GeometryObjectLib::Matrix4;
using GeometryObjectLib::Vertex;

/// Area, volume and centre of gravity of the entities of a model, from their faceted BReps.
///
/// Only shapes of kind 1 count; other kinds are skipped. Areas and volumes are those of the shapes in their own
/// coordinates, also where a placement scales; the centre is in the model's. Units are those of the buffer. Volumes are
/// sums of signed tetrahedra and positive for closed surfaces whose faces run counter-clockwise seen from outside
/// (Lien and Kajiya, "A Symbolic Method for Calculating the Integral Properties of Arbitrary Nonconvex Polyhedra",
/// 1984). A loop that runs against its face counts as a negative area.
///
///     Quorlan::Tools::QuantificationBuilder quantities(buffer.data());
///     for (unsigned entity = 0; quantities.Build(entity); ++entity) Report(entity, quantities.GetVolume());
///
/// COST: construction takes one pass over the instances; a shape is measured once, when an entity first needs it.
class QUORLAN_TOOLS_API QuantificationBuilder {
public:
    /// Prepares the model. The buffer is not copied and must stay as it is while the tool is in use. What is no model
    /// buffer leaves a tool of which every `Build` fails.
    explicit QuantificationBuilder(void const* buffer);

    /// Computes the quantities of one entity, the sums over its instances.
    /// RETURNS false, with all results zero, if the model has no such entity or is no model.
    bool Build(unsigned int entity);

    /// Results of the last `Build`; zero before the first.
    double GetVolume() const { return volume_; }
    double GetArea() const { return area_; }

    /// The mean of the shapes' centres, weighted by their volumes; zero for an entity without shapes. A shape without
    /// volume, a single face say, has no centre and makes the sum not a number.
    Vertex GetCenterOfGravity() const { return centerOfGravity_; }

private:
    /// What is known of a geometry definition.
    struct shape_s {
        bool isMeasured = false;
        bool isFacetedBRep = false;
        double area = 0;
        double volume = 0;
        Vertex centroid;
    };

    void const* buffer_ = nullptr;  ///< null: unusable
    InstancesByEntitiesBuilder instances_;
    std::vector<Matrix4> placements_;
    double volume_ = 0;
    double area_ = 0;
    Vertex centerOfGravity_;
    std::vector<shape_s> shapes_;  ///< by geometry definition
};

}  // namespace Quorlan::Tools
