#include "Rows.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdio>
#include <iterator>
#include <map>
#include <utility>

namespace QuorlanProgram {
namespace {

std::string ToCsv(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
    std::string quoted = "\"";
    for (char const c : text) quoted.append(c == '"' ? 2 : 1, c);
    return quoted + '"';
}

void AppendCell(std::string& out, Rows::Cell const& cell, RowFormat format) {
    auto const json = format == RowFormat::Json;
    if (auto const* const text = std::get_if<std::string_view>(&cell)) {
        out += json ? ToJson(*text) : ToCsv(*text);
    } else if (auto const* const number = std::get_if<double>(&cell)) {
        if (std::isfinite(*number)) {
            fmt::format_to(std::back_inserter(out), "{}", *number);
        } else if (json) {
            out += "null";
        }
    } else {
        fmt::format_to(std::back_inserter(out), "{}", std::get<std::uint64_t>(cell));
    }
}

}  // namespace

CLI::Option* AddRowFormat(CLI::App& app, RowFormat& format) {
    std::map<std::string, RowFormat> const names = {{"csv", RowFormat::Csv}, {"json", RowFormat::Json}};
    return app.add_option("--format", format, "How rows are written")
        ->transform(CLI::CheckedTransformer(names).description(""))
        ->type_name("csv|json")
        ->default_str("csv");
}

std::string ToJson(std::string_view text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

Rows::Rows(RowFormat format, std::vector<std::string> columns) : format_(format), columns_(std::move(columns)) {
    if (format_ == RowFormat::Csv) text_ = fmt::format("{}\n", fmt::join(columns_, ","));
}

void Rows::Add(std::vector<Cell> const& cells) {
    if (format_ == RowFormat::Json) text_ += empty_ ? "[\n {" : ",\n {";
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (i > 0) text_ += format_ == RowFormat::Json ? ", " : ",";
        if (format_ == RowFormat::Json) fmt::format_to(std::back_inserter(text_), "\"{}\": ", columns_[i]);
        AppendCell(text_, cells[i], format_);
    }
    text_ += format_ == RowFormat::Json ? "}" : "\n";
    empty_ = false;
}

void Rows::Print() {
    if (format_ == RowFormat::Json) text_ += empty_ ? "[]\n" : "\n]\n";
    std::fwrite(text_.data(), 1, text_.size(), stdout);
}

}  // namespace QuorlanProgram
