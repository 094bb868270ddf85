#pragma once

#include <CLI/CLI.hpp>

#include <array>
#include <cmath>
#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

/// Option values that several commands take.
namespace QuorlanProgram {

/// Reads `N` finite numbers between `separator`s and nothing else. RETURNS false if `text` is anything else.
template <std::size_t N>
bool ParseNumbers(std::string const& text, char separator, std::array<double, N>& out) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    for (std::size_t i = 0; i < N; ++i) {
        if (i > 0 && stream.get() != separator) return false;
        if (!(stream >> out[i]) || !std::isfinite(out[i])) return false;
    }
    return stream.peek() == std::istringstream::traits_type::eof();
}

/// An option of N numbers: `--origin 10,-2.5,0`. `form` names the numbers in the help.
template <std::size_t N>
CLI::Option* AddNumbers(CLI::App& app, std::string const& name, std::array<double, N>& out, std::string const& form,
                        std::string const& description) {
    auto const parse = [&out, name, form](std::string const& text) {
        if (!ParseNumbers(text, ',', out)) throw CLI::ValidationError(name, "'" + text + "' is not " + form);
    };
    return app.add_option_function<std::string>(name, parse, description)->type_name(form);
}

/// An option that may be given several times, of N numbers each.
template <std::size_t N>
CLI::Option* AddNumberLists(CLI::App& app, std::string const& name, std::vector<std::array<double, N>>& out,
                            std::string const& form, std::string const& description) {
    auto const parse = [&out, name, form](std::vector<std::string> const& texts) {
        out.clear();
        for (auto const& text : texts) {
            if (!ParseNumbers(text, ',', out.emplace_back())) {
                throw CLI::ValidationError(name, "'" + text + "' is not " + form);
            }
        }
    };
    return app.add_option_function<std::vector<std::string>>(name, parse, description)
        ->type_name(form)
        ->allow_extra_args(false);
}

}  // namespace QuorlanProgram
