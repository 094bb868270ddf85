#include "Commands.h"
#include "GuidText.h"

#include <Tools/Identifiers.h>
#include <fmt/core.h>
#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace QuorlanProgram {
namespace {

int RunGuid(std::vector<std::string> const& texts) {
    std::string lines;
    for (auto const& text : texts) {
        auto const guid = RequireGuid(text);
        lines += Quorlan::Tools::GuidToIfcGuid(guid) == text ? Quorlan::Tools::GuidToText(guid)
                                                             : Quorlan::Tools::GuidToIfcGuid(guid);
        lines += '\n';
    }
    fmt::print("{}", lines);
    return kSuccess;
}

}  // namespace

Run DeclareGuid(CLI::App& app) {
    auto const texts = std::make_shared<std::vector<std::string>>();
    app.add_option("text", *texts, "A GUID in either form; the other one is printed")->required()->type_name("TEXT...");
    return [texts] { return RunGuid(*texts); };
}

}  // namespace QuorlanProgram
