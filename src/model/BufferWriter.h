#pragma once

#include "model/ModelWriters.h"
#include "model/StoredContent.h"

#include <vector>

namespace Quorlan {

/// Everything that a model builder has collected.
struct ModelContent {
    EntityWriter const& entities;
    OwnerHistoryWriter const& ownerHistories;
    MaterialWriter const& materials;
    LayerWriter const& layers;
    TextureWriter const& textures;
    DefinitionWriter const& definitions;
    InstanceWriter const& instances;
    PropertyWriter const& properties;
    StoredContent* stored = nullptr;  ///< what is written without having been collected; null for nothing
};

/// The model buffer of the content. THROWS std::bad_array_new_length if it would reach 2 GiB.
std::vector<char> WriteModelBuffer(ModelContent const& content);

}  // namespace Quorlan
