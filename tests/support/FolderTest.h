#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace Quorlan::Testing {

/// A folder of its own for each test, gone afterwards.
class FolderTest : public testing::Test {
protected:
    FolderTest() {
        auto pattern = (std::filesystem::temp_directory_path() / "quorlan-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
        folder_ = pattern;
    }
    ~FolderTest() override {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    std::filesystem::path Write(std::string const& name, std::string const& text) const {
        std::ofstream(folder_ / name, std::ios::binary) << text;
        return folder_ / name;
    }

    std::filesystem::path folder_;
};

}  // namespace Quorlan::Testing
