#include "Command.h"
#include "Commands.h"
#include "ModelFile.h"

#include <Quorlan/ModelValidator.h>
#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <vector>

namespace QuorlanProgram {
namespace {

/// The validator names no more problems than these.
constexpr std::size_t kMostProblems = 100;

struct Settings {
    std::string model;
    std::string format = "text";
};

void PrintText(std::string const& path, std::vector<std::string> const& problems) {
    for (auto const& problem : problems) fmt::print("{}\n", problem);
    if (problems.empty()) {
        fmt::print("{}: sound\n", path);
    } else if (problems.size() < kMostProblems) {
        fmt::print("{}: {} problem{}\n", path, problems.size(), problems.size() == 1 ? "" : "s");
    } else {
        fmt::print("{}: {} problems or more\n", path, problems.size());
    }
}

void PrintJson(std::string const& path, std::size_t size, std::vector<std::string> const& problems) {
    nlohmann::ordered_json const answer{{"file", path},
                                        {"bytes", size},
                                        {"sound", problems.empty()},
                                        {"problems", problems},
                                        {"complete", problems.size() < kMostProblems}};
    fmt::print("{}\n", answer.dump(1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

int RunValidate(Settings const& settings) {
    auto const bytes = ReadFile(settings.model);
    Quorlan::ModelValidator validator;
    bool const isSound = validator.Build(bytes);
    if (settings.format == "json") {
        PrintJson(settings.model, bytes.size(), validator.GetProblems());
    } else {
        PrintText(settings.model, validator.GetProblems());
    }
    return isSound ? kSuccess : kFindings;
}

}  // namespace

Run DeclareValidate(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("model", settings->model, "The model to check (.qln)")->required()->type_name("");
    app.add_option("--format", settings->format, "How the answer is written")
        ->check(CLI::IsMember({"text", "json"}).description(""))
        ->type_name("text|json")
        ->capture_default_str();
    return [settings] { return RunValidate(*settings); };
}

}  // namespace QuorlanProgram
