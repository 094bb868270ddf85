#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

/// What the program says of itself: its commands, their options as they are declared, and a text for each. The command
/// reference, the manual page and the completion of the shell are written from it, so that none can differ from what
/// the program does.
namespace QuorlanProgram {

struct ManualOption {
    std::string names;     ///< "-o, --output"; of a positional its name in capitals
    std::string value;     ///< "OUT", "text|json"; empty for a flag
    std::string meaning;   ///< one sentence, without a full stop
    std::string standard;  ///< what holds where the option is not given; may be empty
    std::string group;     ///< empty for those that belong to the command alone
    bool isRequired = false;
    bool isPositional = false;
};

struct ManualCommand {
    std::string name;
    std::string summary;
    std::string usage;  ///< "quorlan info MODEL [OPTIONS]"
    std::string text;   ///< in Markdown; may be empty
    std::vector<ManualOption> options;
};

struct Manual {
    std::string purpose;
    std::string text;  ///< what holds for all commands, in Markdown
    std::vector<ManualCommand> commands;
};

/// Everything that `program` and its visible commands declare.
Manual ReadManual(CLI::App const& program);

/// The text of a command, in Markdown: paragraphs, lists, tables, indented code, links to pages of docs/. The text of
/// the program itself has the name "". Empty where there is none.
std::string ManualTextOf(std::string const& commandName);

/// Links without their targets.
std::string WithoutLinks(std::string const& markdown);

/// As a terminal shows it: without the targets of links and the marks of strong words.
std::string ToTerminalText(std::string const& markdown);

std::string WriteMarkdown(Manual const& manual);
std::string WriteManPage(Manual const& manual, std::string const& version);
std::string WriteBashCompletion(Manual const& manual);

}  // namespace QuorlanProgram
