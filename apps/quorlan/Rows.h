#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace QuorlanProgram {

enum class RowFormat { Csv, Json };

/// `--format csv|json`, DEFAULT csv.
CLI::Option* AddRowFormat(CLI::App& app, RowFormat& format);

/// A table on its way to stdout: CSV with a header line (RFC 4180), or a JSON array of one object per line. Numbers are
/// written so that they read back as the same bits; what is not finite is empty in CSV and null in JSON.
class Rows {
public:
    using Cell = std::variant<std::uint64_t, double, std::string_view>;

    Rows(RowFormat format, std::vector<std::string> columns);

    /// REQUIRES: one cell per column.
    void Add(std::vector<Cell> const& cells);

    /// Writes what was added.
    void Print();

private:
    RowFormat format_;
    std::vector<std::string> columns_;
    std::string text_;
    bool empty_ = true;
};

/// A text as a JSON string, quotes included; bytes that are no UTF-8 become U+FFFD.
std::string ToJson(std::string_view text);

}  // namespace QuorlanProgram
