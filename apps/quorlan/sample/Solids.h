#pragma once

#include <GeometryObjectLib/FacetedBRep.h>
#include <GeometryObjectLib/Vertex.h>

#include <utility>
#include <vector>

/// Closed solids, oriented outwards: an outer loop runs counter-clockwise seen from outside.
///
/// Where several faces of one solid lie on a ray, a picker reports the one that stands last in the solid. The solids
/// here are convex but for openings, and list the faces inside openings first: what is reported is what is seen.
namespace QuorlanSample {

using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::Vertex;

/// A rectangle in the plane of a plate.
struct Rectangle {
    double left, bottom, right, top;
};

struct SolidWithNormals {
    FacetedBRep brep;
    std::vector<Vertex> normals;  ///< one unit normal per vertex
};

struct SolidWithUVs {
    FacetedBRep brep;
    std::vector<std::pair<float, float>> uvs;  ///< one per vertex
};

/// The unit vector (cosine, sine) at a part of a full turn, on a grid so fine that it does not show and so coarse that
/// every platform's sine gives the same bits.
std::pair<double, double> DirectionAt(double turns);

/// The box from the origin to `size`.
FacetedBRep MakeBox(Vertex const& size);

/// A plate in the xy plane from z = 0 to `thickness`, with rectangular openings strictly inside `outline`.
FacetedBRep MakePlate(Rectangle const& outline, double thickness, std::vector<Rectangle> const& openings);

/// The same standing upright: `outline` counts along x and z, its outer side is y = 0, its inner side y = `thickness`.
FacetedBRep MakePanel(Rectangle const& outline, double thickness, std::vector<Rectangle> const& openings);

/// The convex outline (x, z), counter-clockwise seen from the front (from -y), extruded from y = 0 to `depth`.
FacetedBRep MakePrism(std::vector<std::pair<double, double>> const& outline, double depth);

/// A solid of revolution about z. `profile` are the (radius, z) of its rings, upwards; a radius of 0 at an end is a
/// tip, any other a flat end.
SolidWithNormals MakeLathe(std::vector<std::pair<double, double>> const& profile, std::uint32_t sides);

/// The solid with texture coordinates projected along the axis that each face looks along most; one repetition of the
/// texture covers `width` x `height`.
SolidWithUVs MakeTextured(FacetedBRep const& solid, double width, double height);

}  // namespace QuorlanSample
