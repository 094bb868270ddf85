#pragma once

#include <Tools/Export.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Quorlan {

/// How many of each thing a model buffer holds, and how many bytes they take.
class QUORLAN_TOOLS_API ModelStatistics {
public:
    /// One vector of the buffer ("instances", "facetedBReps"): its elements and all bytes below it.
    struct table_s {
        std::string name;
        std::uint64_t count = 0;
        std::uint64_t bytes = 0;
    };

    /// RETURNS false, with the earlier result kept, if `buffer` is no model that `ModelStorage` opens.
    bool Build(std::vector<char> const& buffer);

    /// The tables of the format in the order of their positions; absent ones with zeros.
    std::vector<table_s> const& GetTables() const { return tables_; }

    std::uint64_t GetVertexCount() const { return vertexCount_; }
    std::uint64_t GetFaceCount() const { return faceCount_; }
    std::uint64_t GetHoleCount() const { return holeCount_; }

private:
    std::vector<table_s> tables_;
    std::uint64_t vertexCount_ = 0;
    std::uint64_t faceCount_ = 0;
    std::uint64_t holeCount_ = 0;
};

}  // namespace Quorlan
