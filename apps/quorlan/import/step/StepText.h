#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace QuorlanProgram::Import {

/// One instance of the data section of a STEP file, `#12=IFCWALL('…',#3,$);`. The views lead into the file's text.
struct StepStatement {
    std::uint32_t id = 0;
    std::string_view name;       ///< the class, as it is written
    std::string_view arguments;  ///< what stands between the outer brackets
    std::size_t begin = 0;       ///< of the statement in the text
    std::size_t end = 0;         ///< behind its semicolon
};

/// The instances of a STEP file in their order. Strings and comments are skipped as wholes; what is no simple instance
/// (header lines, external mappings) is left out. COST: one pass over the text.
std::vector<StepStatement> ReadStatements(std::string_view text);

/// The arguments of a list at its outermost level: "1,(2,3),'a,b'" gives three.
std::vector<std::string_view> SplitArguments(std::string_view arguments);

/// The position behind the string or comment that starts at `at`, or `at` where neither does.
std::size_t SkipOpaque(std::string_view text, std::size_t at);

/// `text` without leading and trailing white space.
std::string_view Trim(std::string_view text);

}  // namespace QuorlanProgram::Import
