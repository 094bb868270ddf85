#pragma once

#include <Quorlan/ModelStorage.h>

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

}  // namespace QuorlanProgram
