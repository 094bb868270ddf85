// Writes the seed corpus of a fuzzer into a folder: models, pairs of a model and an increment (both small ones with
// every kind of content and parts of the sample building), texts, or IFC files.
//
// usage: MakeSeeds models|pairs|identifiers|ifc FOLDER

#include "SampleSeeds.h"
#include "TwoBuffers.h"
#include "cli/import/IfcSeeds.h"
#include "support/SeedModels.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace {

void Append(std::vector<TestSupport::SeedModel>& seeds, std::vector<TestSupport::SeedModel> const& more) {
    seeds.insert(seeds.end(), more.begin(), more.end());
}

std::vector<TestSupport::SeedModel> MakeModels() {
    auto models = TestSupport::MakeSeedModels();
    Append(models, MakeSampleParts());
    return models;
}

/// Each of the small models alone and with each, and changes of the sample building.
std::vector<TestSupport::SeedModel> MakePairs() {
    auto const models = TestSupport::MakeSeedModels();
    auto pairs = models;
    for (auto const& first : models) {
        for (auto const& second : models) {
            pairs.push_back({first.name + "-" + second.name, JoinBuffers(first.buffer, second.buffer)});
        }
    }
    Append(pairs, MakeSampleChanges());
    return pairs;
}

std::vector<TestSupport::SeedModel> MakeIdentifierSeeds() {
    std::vector<TestSupport::SeedModel> seeds;
    for (std::string const text : {"{01234567-89AB-CDEF-0123-456789ABCDEF}", "0YvctVUKr0kugbFTf53O9L",
                                   "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA", "$_zzzzzzzzzzzzzzzzzzz", "+1.5e300/-0=\"'&<>"}) {
        seeds.push_back({"text" + std::to_string(seeds.size()), {text.begin(), text.end()}});
    }
    return seeds;
}

std::vector<TestSupport::SeedModel> MakeIfcFiles() {
    std::vector<TestSupport::SeedModel> seeds;
    for (auto const& [name, text] : MakeIfcSeeds()) seeds.push_back({name + ".ifc", {text.begin(), text.end()}});
    return seeds;
}

std::vector<TestSupport::SeedModel> MakeSeeds(std::string const& kind) {
    if (kind == "models") return MakeModels();
    if (kind == "ifc") return MakeIfcFiles();
    return kind == "pairs" ? MakePairs() : MakeIdentifierSeeds();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return std::fputs("usage: MakeSeeds models|pairs|identifiers|ifc FOLDER\n", stderr), 2;
    std::filesystem::create_directories(argv[2]);
    for (auto const& seed : MakeSeeds(argv[1])) {
        std::ofstream file(std::filesystem::path(argv[2]) / seed.name, std::ios::binary);
        file.write(seed.buffer.data(), static_cast<std::streamsize>(seed.buffer.size()));
        if (!file.flush()) return std::perror(argv[2]), 1;
    }
    return 0;
}
