#pragma once

#include "Command.h"

/// The commands, in the order of the table in Main.cpp; each stands in a file of its name.
namespace QuorlanProgram {

Run DeclareSample(CLI::App& app);

}  // namespace QuorlanProgram
