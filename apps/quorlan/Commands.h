#pragma once

#include "Command.h"

/// The commands, in the order of the table in Main.cpp; each stands in a file of its name.
namespace QuorlanProgram {

Run DeclareSample(CLI::App& app);
Run DeclareImport(CLI::App& app);
Run DeclareInfo(CLI::App& app);
Run DeclareBoxes(CLI::App& app);
Run DeclarePlacements(CLI::App& app);
Run DeclarePick(CLI::App& app);
Run DeclareRender(CLI::App& app);

}  // namespace QuorlanProgram
