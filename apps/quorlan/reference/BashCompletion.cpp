#include "reference/Manual.h"

#include <algorithm>

namespace QuorlanProgram {
namespace {

/// "-o, --output" as words.
std::string WordsOf(std::string names) {
    names.erase(std::remove(names.begin(), names.end(), ','), names.end());
    return names;
}

/// "text|json" as words; empty for a value that is no choice.
std::string ChoicesOf(ManualOption const& option) {
    if (option.value.find('|') == std::string::npos) return "";
    auto choices = option.value;
    std::replace(choices.begin(), choices.end(), '|', ' ');
    return choices;
}

}  // namespace

std::string WriteBashCompletion(Manual const& manual) {
    std::string names, values, options;
    for (auto const& command : manual.commands) {
        names += " " + command.name;
        std::string words = "--help";
        for (auto const& option : command.options) {
            if (option.isPositional) continue;
            words += " " + WordsOf(option.names);
            auto const longName = option.names.substr(option.names.rfind("--"));
            auto const choices = ChoicesOf(option);
            if (!choices.empty()) {
                values += "        \"" + command.name + " " + longName + "\") choices=\"" + choices + "\" ;;\n";
            }
        }
        options += "        " + command.name + ") choices=\"" + words + "\" ;;\n";
    }
    return "# Completion of quorlan in bash: commands, options, values that are a choice, and files for all else.\n"
           "_quorlan() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} choices=\n"
           "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
           "        choices=\"--help --version" +
           names +
           "\"\n"
           "    elif [[ $word == -* ]]; then\n"
           "        case ${COMP_WORDS[1]} in\n" +
           options +
           "        esac\n"
           "    else\n"
           "        case \"${COMP_WORDS[1]} ${COMP_WORDS[COMP_CWORD - 1]}\" in\n" +
           values +
           "        esac\n"
           "    fi\n"
           "    # shellcheck disable=SC2207 # a list of words\n"
           "    COMPREPLY=($(compgen -W \"$choices\" -- \"$word\"))\n"
           "}\n"
           "complete -o default -F _quorlan quorlan\n";
}

}  // namespace QuorlanProgram
