#pragma once

#include <string>
#include <utility>
#include <vector>

/// Small IFC files, by name: each of the shapes, relations and repairs that the import knows.
std::vector<std::pair<std::string, std::string>> MakeIfcSeeds();
