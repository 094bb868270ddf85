#include <Tools/InstancesByEntitiesBuilder.h>

#include "model/ModelView.h"

namespace Quorlan::Tools {

bool InstancesByEntitiesBuilder::Build(void const* buffer) {
    entitiesHavingInstances_.clear();
    instancesByEntities_.clear();
    auto const model = ModelView::Open(buffer);
    if (!model || model->geometry->instances() == nullptr) return false;

    std::uint32_t const entityCount = model->records->size();
    auto const& instances = *model->geometry->instances();
    std::vector<unsigned int> counts(entityCount);  // so that every list is allocated once
    for (auto const* const instance : instances) ++counts[instance->entityIndex()];

    instancesByEntities_.resize(entityCount);
    entitiesHavingInstances_.reserve(entityCount);
    for (std::uint32_t i = 0; i < instances.size(); ++i) {
        std::uint32_t const entity = instances[i]->entityIndex();
        auto& list = instancesByEntities_[entity];
        if (list.empty()) {
            list.reserve(counts[entity]);
            entitiesHavingInstances_.push_back(entity);
        }
        list.push_back(i);
    }
    return true;
}

}  // namespace Quorlan::Tools
