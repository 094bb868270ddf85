#pragma once

#include "Command.h"

/// The commands, in the order of the table in Main.cpp; each stands in a file of its name.
namespace QuorlanProgram {

Run DeclareSample(CLI::App& app);
Run DeclareImport(CLI::App& app);
Run DeclareInfo(CLI::App& app);
Run DeclareValidate(CLI::App& app);
Run DeclareBoxes(CLI::App& app);
Run DeclarePlacements(CLI::App& app);
Run DeclareQuantities(CLI::App& app);
Run DeclareLod(CLI::App& app);
Run DeclareLines(CLI::App& app);
Run DeclareMesh(CLI::App& app);
Run DeclareExport(CLI::App& app);
Run DeclarePick(CLI::App& app);
Run DeclareRender(CLI::App& app);
Run DeclareDiff(CLI::App& app);
Run DeclareMerge(CLI::App& app);
Run DeclareSquash(CLI::App& app);
Run DeclareExtract(CLI::App& app);
Run DeclareCombine(CLI::App& app);
Run DeclareResolve(CLI::App& app);
Run DeclareGuid(CLI::App& app);
Run DeclareReference(CLI::App& app);

}  // namespace QuorlanProgram
