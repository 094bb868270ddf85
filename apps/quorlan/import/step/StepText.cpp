#include "step/StepText.h"

#include <algorithm>
#include <charconv>

namespace QuorlanProgram::Import {

namespace {

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

/// The position of the semicolon that ends the statement at `at`; the text's size if there is none.
std::size_t FindEnd(std::string_view text, std::size_t at) {
    while (at < text.size() && text[at] != ';') {
        auto const next = SkipOpaque(text, at);
        at = next == at ? at + 1 : next;
    }
    return at;
}

std::size_t SkipSpaceAndComments(std::string_view text, std::size_t at) {
    while (at < text.size()) {
        if (IsSpace(text[at])) {
            ++at;
        } else if (text[at] == '/' && SkipOpaque(text, at) != at) {
            at = SkipOpaque(text, at);
        } else {
            break;
        }
    }
    return at;
}

bool ParseStatement(StepStatement& out, std::string_view line) {
    if (line.empty() || line.front() != '#') return false;
    auto const number = std::from_chars(line.data() + 1, line.data() + line.size(), out.id);
    if (number.ec != std::errc()) return false;
    auto const rest = Trim(line.substr(static_cast<std::size_t>(number.ptr - line.data())));
    if (rest.empty() || rest.front() != '=') return false;
    auto const open = rest.find('(');
    auto const close = rest.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open) return false;
    out.name = Trim(rest.substr(1, open - 1));
    out.arguments = rest.substr(open + 1, close - open - 1);
    return !out.name.empty();
}

}  // namespace

std::size_t SkipOpaque(std::string_view text, std::size_t at) {
    if (text[at] == '\'') {
        auto const close = text.find('\'', at + 1);
        return close == std::string_view::npos ? text.size() : close + 1;
    }
    if (text[at] == '/' && at + 1 < text.size() && text[at + 1] == '*') {
        auto const close = text.find("*/", at + 2);
        return close == std::string_view::npos ? text.size() : close + 2;
    }
    return at;
}

std::string_view Trim(std::string_view text) {
    while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
    return text;
}

std::vector<StepStatement> ReadStatements(std::string_view text) {
    std::vector<StepStatement> statements;
    statements.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), ';')));
    for (auto at = SkipSpaceAndComments(text, 0); at < text.size(); at = SkipSpaceAndComments(text, at)) {
        auto const semicolon = FindEnd(text, at);
        if (semicolon == text.size()) break;
        StepStatement statement;
        statement.begin = at;
        statement.end = semicolon + 1;
        if (ParseStatement(statement, text.substr(at, semicolon - at))) statements.push_back(statement);
        at = semicolon + 1;
    }
    return statements;
}

std::vector<std::string_view> SplitArguments(std::string_view arguments) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    int depth = 0;
    for (std::size_t at = 0; at < arguments.size();) {
        auto const next = SkipOpaque(arguments, at);
        if (next != at) {
            at = next;
            continue;
        }
        auto const c = arguments[at];
        if (c == '(') ++depth;
        if (c == ')') --depth;
        if (c == ',' && depth == 0) {
            parts.push_back(Trim(arguments.substr(start, at - start)));
            start = at + 1;
        }
        ++at;
    }
    auto const last = Trim(arguments.substr(start));
    if (!last.empty() || !parts.empty()) parts.push_back(last);
    return parts;
}

}  // namespace QuorlanProgram::Import
