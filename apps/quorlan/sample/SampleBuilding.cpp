#include "SampleBuilding.h"

#include "Parts.h"

namespace QuorlanSample {

std::vector<char> BuildSampleBuilding(SampleOptions const& options) {
    SampleModel model(options);
    AddSite(model);
    for (std::uint32_t storey = 0; storey < options.storeys; ++storey) {
        AddStructure(model, storey);
        AddFacade(model, storey);
        AddInterior(model, storey);
        AddFurniture(model, storey);
    }
    AddRoof(model);
    return model.GetBuilder().Create();
}

}  // namespace QuorlanSample
