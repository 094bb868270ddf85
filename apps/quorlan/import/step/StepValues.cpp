#include "step/StepValues.h"

#include <charconv>

namespace QuorlanProgram::Import {

namespace {

constexpr std::size_t kLongExponent = 3;  ///< [digits] that a number beyond the range of a double has at least

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsNameCharacter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || IsDigit(c); }

/// Visits every character of the arguments that stands in no string or comment.
template <typename Visit>
void ForEachCharacter(std::string_view text, StepStatement const& statement, Visit&& visit) {
    auto const first = static_cast<std::size_t>(statement.arguments.data() - text.data());
    auto const last = first + statement.arguments.size();
    for (auto at = first; at < last;) {
        auto const next = SkipOpaque(text, at);
        if (next == at) visit(at++, first, last);
        at = next > at ? next : at;
    }
}

/// The token around `at`, between commas and brackets.
std::pair<std::size_t, std::size_t> FindToken(std::string_view text, std::size_t at, std::size_t first,
                                              std::size_t last) {
    auto begin = at;
    while (begin > first && text[begin - 1] != ',' && text[begin - 1] != '(') --begin;
    auto const end = text.find_first_of(",)", at);
    return {begin, end < last ? end : last};
}

bool IsBeyondRange(std::string_view token) {
    token = Trim(token);
    double value = 0;
    return std::from_chars(token.data(), token.data() + token.size(), value).ec == std::errc::result_out_of_range;
}

/// An exponent long enough for a number beyond the range of a double.
bool IsLongExponent(std::string_view text, std::size_t at) {
    if ((text[at] != 'E' && text[at] != 'e') || at == 0 || !(IsDigit(text[at - 1]) || text[at - 1] == '.'))
        return false;
    auto digits = at + 1;
    if (digits < text.size() && (text[digits] == '+' || text[digits] == '-')) ++digits;
    std::size_t count = 0;
    while (digits + count < text.size() && IsDigit(text[digits + count])) ++count;
    return count >= kLongExponent;
}

}  // namespace

TextPlaces FindTypedNulls(std::string_view text, std::vector<StepStatement> const& statements) {
    TextPlaces nulls;
    for (auto const& statement : statements) {
        if (statement.arguments.find("($)") == std::string_view::npos) continue;
        ForEachCharacter(text, statement, [&](std::size_t at, std::size_t first, std::size_t) {
            if (text.substr(at, 3) != "($)") return;
            auto begin = at;
            while (begin > first && IsNameCharacter(text[begin - 1])) --begin;
            if (begin < at) nulls.emplace_back(begin, at + 3);
        });
    }
    return nulls;
}

TextPlaces FindAbsurdNumbers(std::string_view text, std::vector<StepStatement> const& statements) {
    TextPlaces numbers;
    for (auto const& statement : statements) {
        ForEachCharacter(text, statement, [&](std::size_t at, std::size_t first, std::size_t last) {
            auto const isNone = text.substr(at, 2) == ".#" && at > first && IsDigit(text[at - 1]);
            if (!isNone && !IsLongExponent(text, at)) return;
            auto const token = FindToken(text, at, first, last);
            if (isNone || IsBeyondRange(text.substr(token.first, token.second - token.first))) {
                numbers.push_back(token);
            }
        });
    }
    return numbers;
}

}  // namespace QuorlanProgram::Import
