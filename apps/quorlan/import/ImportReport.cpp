#include "ImportReport.h"

namespace QuorlanProgram::Import {

namespace {

std::size_t Sum(ImportReport::Counts const& counts) {
    std::size_t sum = 0;
    for (auto const& entry : counts) sum += entry.second;
    return sum;
}

}  // namespace

std::size_t ImportReport::CountWarnings() const {
    return (isCutOff ? 1u : 0u) + (lacksUnit ? 1u : 0u) + missingReferences + circularReferences + absurdNumbers +
           unknownProducts.size() + misplacedProducts.size() + repairedPlacements.size() + productsWithoutShape.size() +
           Sum(unreadItems) + Sum(droppedFaces) + Sum(addedFaces) + Sum(wrongCuts) + Sum(openSolids) +
           duplicateGuids.size() + invalidGuids.size() + Sum(messages);
}

}  // namespace QuorlanProgram::Import
