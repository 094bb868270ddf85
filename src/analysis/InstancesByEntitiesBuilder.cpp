#include <Tools/InstancesByEntitiesBuilder.h>

#include "model/ModelView.h"

namespace Quorlan::Tools {

bool InstancesByEntitiesBuilder::Build(void const* buffer) {
    entitiesHavingInstances_.clear();
    instancesByEntities_.clear();
    auto const model = ModelView::Open(buffer);
    if (!model || model->geometry->instances() == nullptr) return false;

    std::uint32_t const entityCount = model->records->size();
    instancesByEntities_.resize(entityCount);
    entitiesHavingInstances_.reserve(entityCount);
    auto const& instances = *model->geometry->instances();
    for (std::uint32_t i = 0; i < instances.size(); ++i) {
        std::uint32_t const entity = instances[i]->entityIndex();
        if (instancesByEntities_[entity].empty()) entitiesHavingInstances_.push_back(entity);
        instancesByEntities_[entity].push_back(i);
    }
    return true;
}

}  // namespace Quorlan::Tools
