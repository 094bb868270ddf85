#pragma once

#include <GeometryObjectLib/Vertex.h>

#include <cstdint>
#include <vector>

namespace QuorlanSample {

struct SampleOptions {
    std::uint32_t storeys = 5;         ///< above the ground plate, 1 or more; 200 make over 100,000 instances
    std::uint64_t seed = 1;            ///< varies rooms, furniture and trees; what both seeds have keeps its GUID
    GeometryObjectLib::Vertex origin;  ///< [m] where the south-west corner of the building stands
};

/// The model buffer of a small residential building with everything a model can hold: shapes of all kinds, with holes,
/// with normals, with texture coordinates and a texture, lines and arcs, two-sided glass, layers, owner histories of
/// all change actions, properties, and entities of every kind of identifier.
///
/// Units are metres, x runs east, y north, z up. All solids are closed and oriented outwards. The same options give the
/// same bytes. COST: some 600 instances a storey, a fifth of a second per 100,000.
std::vector<char> BuildSampleBuilding(SampleOptions const& options = {});

}  // namespace QuorlanSample
