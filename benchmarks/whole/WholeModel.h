#pragma once

#include "picking/View.h"

#include <GeometryObjectLib/QuantizedAxisAlignedBoxTree.h>
#include <Quorlan/ModelStorage.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Quorlan::Benchmarks {

/// A model of a file with what its benchmarks need besides.
struct WholeModel {
    using View = CampusBenchmark::View;

    /// Throws std::runtime_error, naming the file, for what is not a sound model with instances.
    explicit WholeModel(std::string const& path);

    std::string name;  ///< of the file, without its folder and ending
    std::vector<char> buffer;
    ModelStorage storage;
    std::uint32_t instanceCount = 0;
    std::uint32_t entityCount = 0;
    GeometryObjectLib::QuantizedAxisAlignedBoxTree tree;
    std::vector<View> views;      ///< by turns from around the model and from inside it
    std::vector<char> increment;  ///< modifies every hundredth entity to what it is
};

}  // namespace Quorlan::Benchmarks
