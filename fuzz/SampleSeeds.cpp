#include "SampleSeeds.h"

#include "TwoBuffers.h"
#include "sample/SampleBuilding.h"

#include <Quorlan/ModelStorage.h>
#include <Tools/Increments/IncrementModelBuilder.h>

#include <string>
#include <utility>

namespace {

using Quorlan::OwnerHistoryChangeAction;

constexpr std::uint32_t kParts = 16;
constexpr std::uint32_t kEntitiesOfPart = 3;
constexpr std::size_t kMaxSize = 8192;  // half of what the fuzzers take, so that a pair fits too

using Selection = std::vector<std::pair<OwnerHistoryChangeAction, Quorlan::EntityIndex_t>>;

std::vector<char> Extract(Quorlan::IModelReader const& reader, Selection const& selection) {
    Quorlan::Tools::Increments::IncrementModelBuilder builder;
    builder.Add(reader, selection);
    return builder.GetResult();
}

std::vector<char> ExtractPart(Quorlan::IModelReader const& reader, std::uint32_t first) {
    Selection selection;
    for (std::uint32_t i = first; i < first + kEntitiesOfPart; ++i) {
        selection.emplace_back(OwnerHistoryChangeAction::NOCHANGE, Quorlan::EntityIndex_t{i});
    }
    return Extract(reader, selection);
}

std::vector<char> ExtractChange(Quorlan::IModelReader const& reader, std::uint32_t first) {
    return Extract(reader, {{OwnerHistoryChangeAction::MODIFIED, Quorlan::EntityIndex_t{first}},
                            {OwnerHistoryChangeAction::DELETED, Quorlan::EntityIndex_t{first + 1}},
                            {OwnerHistoryChangeAction::ADDED, Quorlan::EntityIndex_t{first + kEntitiesOfPart}}});
}

/// Calls `make(reader, first)` for entities all over the building and keeps what is small enough.
template <typename Make>
std::vector<TestSupport::SeedModel> MakeAllOver(std::string const& name, std::size_t maxSize, Make make) {
    QuorlanSample::SampleOptions options;
    options.storeys = 1;
    auto const storage = Quorlan::ModelStorage::FromBuffer(QuorlanSample::BuildSampleBuilding(options));
    auto const& reader = storage.GetModelReader();
    auto const count = reader.GetEntities().GetCount() - kEntitiesOfPart;
    std::vector<TestSupport::SeedModel> seeds;
    for (std::uint32_t part = 0; part < kParts; ++part) {
        auto buffer = make(reader, part * (count / kParts));
        if (buffer.size() <= maxSize) seeds.push_back({name + std::to_string(part), std::move(buffer)});
    }
    return seeds;
}

}  // namespace

std::vector<TestSupport::SeedModel> MakeSampleParts() { return MakeAllOver("sample-part", kMaxSize, ExtractPart); }

std::vector<TestSupport::SeedModel> MakeSampleChanges() {
    return MakeAllOver("sample-change", 2 * kMaxSize, [](Quorlan::IModelReader const& reader, std::uint32_t first) {
        return JoinBuffers(ExtractPart(reader, first), ExtractChange(reader, first));
    });
}
