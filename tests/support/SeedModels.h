#pragma once

#include <string>
#include <vector>

/// Small models with every kind of content, from which fuzzers and tests of damaged buffers start.
namespace TestSupport {

struct SeedModel {
    std::string name;
    std::vector<char> buffer;
};

/// A few kilobytes each: nothing, one box, all shapes, all identifiers, changes, repeated shapes and odd numbers.
std::vector<SeedModel> MakeSeedModels();

/// The one of them with every kind of content.
std::vector<char> MakeFullSeedModel();

}  // namespace TestSupport
