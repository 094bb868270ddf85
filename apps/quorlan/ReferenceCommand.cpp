#include "Command.h"
#include "Commands.h"
#include "reference/Manual.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>
#include <string>

namespace QuorlanProgram {

Run DeclareReference(CLI::App& app) {
    auto const format = std::make_shared<std::string>("markdown");
    app.group("");  // for those who build the program, not for those who use it
    app.add_option("--format", *format, "The command reference, the manual page, or the completion of bash")
        ->check(CLI::IsMember({"markdown", "man", "bash"}).description(""))
        ->type_name("markdown|man|bash")
        ->capture_default_str();
    return [format, &app] {
        auto const manual = ReadManual(*app.get_parent());
        auto const text = *format == "man"    ? WriteManPage(manual, QUORLAN_VERSION)
                          : *format == "bash" ? WriteBashCompletion(manual)
                                              : WriteMarkdown(manual);
        std::fputs(text.c_str(), stdout);
        return static_cast<int>(kSuccess);
    };
}

}  // namespace QuorlanProgram
