#pragma once

#include <Quorlan/IModelReader.h>

#include <array>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

/// What an independent engine says about the products of a file, and what an import gave.
namespace Quorlan::Testing {

/// One product: its surface, its volume and its box in the world, in metres.
struct Measure {
    std::string type;
    double area = 0;
    double volume = 0;  ///< of the table only
    std::array<double, 3> min{};
    std::array<double, 3> max{};
};

/// The products of a reference table, by GUID. A GUID that occurs twice is there once, as the table has it last.
std::map<std::string, Measure> ReadReference(std::filesystem::path const& csv);

/// The same of a model: every entity with at least one face. Areas are Newell sums with holes taken off.
std::map<std::string, Measure> MeasureModel(Quorlan::IModelReader const& model);

struct Comparison {
    std::size_t reference = 0;  ///< products of the table, openings left out
    std::vector<std::string> missing;
    std::vector<std::string> wrongBoxes;  ///< a corner is off by more than 1 cm
    std::vector<std::string> wrongAreas;  ///< off by more than 1 %

    std::size_t GetFound() const { return reference - missing.size(); }
    std::size_t GetGoodBoxes() const { return GetFound() - wrongBoxes.size(); }
    std::size_t GetGoodAreas() const { return GetFound() - wrongAreas.size(); }
};

Comparison Compare(std::map<std::string, Measure> const& reference, std::map<std::string, Measure> const& measured);

}  // namespace Quorlan::Testing
