#pragma once

#include <GeometryObjectLib/AxisAlignedBox3.h>
#include <Quorlan/ModelStorage.h>

#include <optional>
#include <string>
#include <vector>

namespace QuorlanProgram {

/// The bytes of a file. THROWS Failure if it cannot be read.
std::vector<char> ReadFile(std::string const& path);

/// A model from a file, checked whole, so that it can be handed to tools that trust their buffer.
class ModelFile {
public:
    /// THROWS Failure, with the first problem and its place, if the file cannot be read or is no sound model.
    static ModelFile Load(std::string const& path);

    std::string const& GetPath() const { return path_; }
    std::vector<char> const& GetBytes() const { return bytes_; }
    Quorlan::IModelReader const& GetReader() const { return storage_.GetModelReader(); }

private:
    ModelFile(std::string path, std::vector<char> bytes, Quorlan::ModelStorage storage);

    std::string path_;
    std::vector<char> bytes_;
    Quorlan::ModelStorage storage_;
};

/// The world boxes of a sound model's instances, but for those that are nowhere because their placement is degenerate.
std::vector<GeometryObjectLib::AxisAlignedBox3> ComputeWorldBoxes(std::vector<char> const& model);

/// The box around all boxes; empty for none.
std::optional<GeometryObjectLib::AxisAlignedBox3> Unite(std::vector<GeometryObjectLib::AxisAlignedBox3> const& boxes);

}  // namespace QuorlanProgram
