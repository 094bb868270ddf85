#include "reference/Manual.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>

namespace QuorlanProgram {
namespace {

constexpr char const* kOrdinaryGroup = "Options";

std::string ToCapitals(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

/// The value's form, without what validators add to it: "DEG" of "DEG:FLOAT in [0 - 180]".
std::string ValueOf(CLI::Option const& option) {
    auto const type = option.get_type_name();
    return type.substr(0, type.find(':'));
}

std::string NamesOf(CLI::Option const& option) {
    std::string names;
    for (auto const& name : option.get_snames()) names += "-" + name + ", ";
    for (auto const& name : option.get_lnames()) names += "--" + name + ", ";
    if (!names.empty()) names.erase(names.size() - 2);
    return names;
}

ManualOption ReadOption(CLI::Option const& option) {
    ManualOption result;
    result.isPositional = option.nonpositional() ? false : option.get_positional();
    result.isRequired = option.get_required();
    result.value = result.isPositional || option.get_type_size_max() == 0 ? "" : ValueOf(option);
    result.names = NamesOf(option);
    if (result.isPositional) {
        auto const type = ValueOf(option);
        result.names = ToCapitals(type.empty() ? option.get_name(true) : type);
    }
    result.meaning = option.get_description();
    result.standard = option.get_default_str();
    if (option.get_group() != kOrdinaryGroup && !result.isPositional) result.group = option.get_group();
    return result;
}

std::string UsageOf(ManualCommand const& command) {
    auto usage = "quorlan " + command.name;
    bool hasMore = false;
    for (auto const& option : command.options) {
        if (option.isPositional) usage += " " + option.names;
    }
    for (auto const& option : command.options) {
        if (option.isPositional) continue;
        hasMore = hasMore || !option.isRequired;
        if (!option.isRequired) continue;
        auto const shortest = option.names.substr(0, option.names.find(','));
        usage += " " + shortest + (option.value.empty() ? "" : " " + option.value);
    }
    return usage + (hasMore ? " [OPTIONS]" : "");
}

ManualCommand ReadCommand(CLI::App const& app) {
    ManualCommand command;
    command.name = app.get_name();
    command.summary = app.get_description();
    command.text = ManualTextOf(command.name);
    for (auto const* option : app.get_options()) {
        bool const isHidden = option->get_group().empty() || option == app.get_help_ptr();
        if (!isHidden) command.options.push_back(ReadOption(*option));
    }
    command.usage = UsageOf(command);
    return command;
}

}  // namespace

Manual ReadManual(CLI::App const& program) {
    Manual manual;
    manual.purpose = program.get_description();
    manual.text = ManualTextOf("");
    for (auto const* command : program.get_subcommands([](CLI::App const*) { return true; })) {
        if (!command->get_group().empty()) manual.commands.push_back(ReadCommand(*command));
    }
    return manual;
}

std::string WithoutLinks(std::string const& markdown) {
    std::string text;
    for (std::size_t i = 0; i < markdown.size(); ++i) {
        auto const middle = markdown[i] == '[' ? markdown.find("](", i) : std::string::npos;
        auto const end = middle == std::string::npos ? middle : markdown.find(')', middle);
        auto const close = markdown.find(']', i);
        if (end == std::string::npos || close != middle) {
            text += markdown[i];
        } else {
            text += markdown.substr(i + 1, middle - i - 1);
            i = end;
        }
    }
    return text;
}

std::string ToTerminalText(std::string const& markdown) {
    auto text = WithoutLinks(markdown);
    for (auto at = text.find("**"); at != std::string::npos; at = text.find("**", at)) text.erase(at, 2);
    return text;
}

}  // namespace QuorlanProgram
