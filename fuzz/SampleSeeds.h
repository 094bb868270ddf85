#pragma once

#include "support/SeedModels.h"

#include <vector>

/// Parts of the sample building that are small enough for a fuzzer to move in: neighbouring entities with all that they
/// use, spread over the whole building.
std::vector<TestSupport::SeedModel> MakeSampleParts();

/// Such a part as it was, and behind it an increment in which one of its entities is modified, one deleted and the next
/// one of the building added.
std::vector<TestSupport::SeedModel> MakeSampleChanges();
