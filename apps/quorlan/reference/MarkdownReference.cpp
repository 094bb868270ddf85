#include "reference/Manual.h"

namespace QuorlanProgram {
namespace {

std::string InCell(std::string const& text) {
    std::string cell;
    for (char const c : text) cell += c == '|' ? "\\|" : std::string(1, c);
    return cell;
}

std::string RowOf(ManualOption const& option) {
    auto const call = option.names + (option.value.empty() ? "" : " " + option.value);
    auto const standard = option.isRequired ? "required" : InCell(option.standard);
    return "| `" + InCell(call) + "` | " + InCell(option.meaning) + " | " + standard + " |\n";
}

/// A table for each group of options, in the order in which the groups are met.
std::string TablesOf(ManualCommand const& command) {
    std::vector<std::string> groups;
    std::string tables;
    for (auto const& first : command.options) {
        bool isNew = true;
        for (auto const& group : groups) isNew = isNew && group != first.group;
        if (!isNew) continue;
        groups.push_back(first.group);
        tables +=
            "\n| " + (first.group.empty() ? "argument" : first.group) + " | meaning | default |\n| --- | --- | --- |\n";
        for (auto const& option : command.options) {
            if (option.group == first.group) tables += RowOf(option);
        }
    }
    return tables;
}

}  // namespace

std::string WriteMarkdown(Manual const& manual) {
    std::string page =
        "# The program quorlan\n\n"
        "<!-- Written by the program: quorlan reference >docs/commands.md -->\n\n" +
        manual.purpose +
        "\n\n"
        "    quorlan COMMAND [OPTIONS] ...\n"
        "    quorlan --help\n"
        "    quorlan COMMAND --help\n"
        "    quorlan --version\n\n"
        "| command | does |\n| --- | --- |\n";
    for (auto const& command : manual.commands) {
        page += "| [`" + command.name + "`](#" + command.name + ") | " + command.summary + " |\n";
    }
    page += "\n## What holds for all\n\n" + manual.text + "\n";
    for (auto const& command : manual.commands) {
        page += "\n## " + command.name + "\n\n" + command.summary + ".\n\n    " + command.usage + "\n";
        page += TablesOf(command);
        if (!command.text.empty()) page += "\n" + command.text + "\n";
    }
    return page;
}

}  // namespace QuorlanProgram
