#include "TextRepair.h"

#include <algorithm>
#include <charconv>
#include <unordered_map>

#include "IndexedCurve.h"
#include "StepText.h"

namespace QuorlanProgram::Import {

namespace {

constexpr std::string_view kHead = "ISO-10303-21;";
constexpr std::string_view kEnd = "END-ISO-10303-21;";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string ToUpper(std::string_view text) {
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return upper;
}

/// Where the schema's name stands in the text; npos as its begin if there is none.
std::pair<std::size_t, std::size_t> FindSchema(std::string_view text) {
    auto const none = std::make_pair(std::string_view::npos, std::string_view::npos);
    auto const entry = text.find("FILE_SCHEMA");
    if (entry == std::string_view::npos) return none;
    auto const open = text.find('\'', entry);
    if (open == std::string_view::npos || text.substr(entry, open - entry).find(';') != std::string_view::npos) {
        return none;
    }
    auto const close = text.find('\'', open + 1);
    if (close == std::string_view::npos) return none;
    return {open + 1, close - open - 1};
}

void AppendNumber(std::string& out, double value) {
    char digits[40];
    auto const result = std::to_chars(digits, digits + sizeof digits, value);
    std::string_view const text(digits, static_cast<std::size_t>(result.ptr - digits));
    auto const exponent = text.find('e');
    out += text.substr(0, exponent);
    if (text.find('.') == std::string_view::npos) out += '.';  // a STEP real always has its point
    if (exponent != std::string_view::npos) out.append("E").append(text.substr(exponent + 1));
}

/// Writes indexed curves as polylines over new points.
class CurveRewriter {
public:
    CurveRewriter(std::vector<StepStatement> const& statements, int verticesPerCircle)
        : verticesPerCircle_(verticesPerCircle) {
        for (auto const& statement : statements) {
            nextId_ = std::max(nextId_, statement.id + 1);
            if (statement.name.size() > 22 && ToUpper(statement.name.substr(0, 21)) == "IFCCARTESIANPOINTLIST") {
                lists_.emplace(statement.id, &statement);
            }
        }
    }

    /// Appends the replacement of `curve` to `out`. RETURNS false, with nothing appended, if it is not understood.
    bool Rewrite(std::string& out, StepStatement const& curve) {
        auto const arguments = SplitArguments(curve.arguments);
        if (arguments.size() < 2 || arguments[0].empty() || arguments[0].front() != '#') return false;
        std::uint32_t listId = 0;
        std::from_chars(arguments[0].data() + 1, arguments[0].data() + arguments[0].size(), listId);
        auto const list = lists_.find(listId);
        if (list == lists_.end()) return false;
        auto const points =
            ExpandIndexedCurve(ReadPointList(list->second->arguments), arguments[1], verticesPerCircle_);
        if (points.size() < 2) return false;

        auto const isPlane = list->second->name.substr(21, 1) == "2";
        auto const firstId = nextId_;
        for (auto const& point : points) AppendPoint(out, point, isPlane);
        out += '#' + std::to_string(curve.id) + "=IFCPOLYLINE((";
        for (std::size_t i = 0; i < points.size(); ++i) {
            // A closed curve ends in the very point it starts from, not in an equal one.
            auto const isClosing = i > 0 && i + 1 == points.size() && points[i] == points[0];
            if (i > 0) out += ',';
            out += '#' + std::to_string(isClosing ? firstId : firstId + static_cast<std::uint32_t>(i));
        }
        out += "));";
        return true;
    }

private:
    void AppendPoint(std::string& out, CurvePoint const& point, bool isPlane) {
        out += '#' + std::to_string(nextId_++) + "=IFCCARTESIANPOINT((";
        for (std::size_t i = 0; i < (isPlane ? 2 : 3); ++i) {
            if (i > 0) out += ',';
            AppendNumber(out, point[i]);
        }
        out += "));\n";
    }

    int verticesPerCircle_;
    std::uint32_t nextId_ = 1;
    std::unordered_map<std::uint32_t, StepStatement const*> lists_;
};

void ListClasses(RepairedText& repaired, std::vector<StepStatement> const& statements) {
    std::unordered_map<std::string, std::uint32_t> indices;
    repaired.ids.reserve(statements.size());
    for (auto const& statement : statements) {
        auto const entry =
            indices.emplace(ToUpper(statement.name), static_cast<std::uint32_t>(repaired.classes.size()));
        if (entry.second) repaired.classes.push_back(entry.first->first);
        repaired.ids.emplace_back(statement.id, entry.first->second);
    }
}

}  // namespace

TextProblem CheckText(std::string_view text) {
    if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) text.remove_prefix(kByteOrderMark.size());
    text = Trim(text);
    if (text.empty()) return TextProblem::kEmpty;
    if (text.substr(0, kHead.size()) != kHead) return TextProblem::kNoStepFile;
    auto const [begin, length] = FindSchema(text);
    if (begin == std::string_view::npos || ToUpper(text.substr(begin, length)).substr(0, 3) != "IFC") {
        return TextProblem::kNoIfcSchema;
    }
    // Some writers leave blanks or a zero byte behind the end mark.
    auto const tail = text.substr(text.size() - std::min<std::size_t>(text.size(), 256));
    return tail.find(kEnd) == std::string_view::npos ? TextProblem::kTruncated : TextProblem::kNone;
}

RepairedText RepairText(std::string_view text, int verticesPerCircle) {
    if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) text.remove_prefix(kByteOrderMark.size());
    RepairedText repaired;
    auto const statements = ReadStatements(text);
    ListClasses(repaired, statements);

    auto const [schemaBegin, schemaLength] = FindSchema(text);
    repaired.schema = ToUpper(text.substr(schemaBegin, schemaLength));
    repaired.schemaReplaced = repaired.schema != "IFC4" && repaired.schema.substr(0, 4) == "IFC4";
    repaired.text.reserve(text.size() + text.size() / 16);
    std::size_t copied = 0;
    if (repaired.schemaReplaced) {
        repaired.text.append(text.substr(0, schemaBegin)).append("IFC4");
        copied = schemaBegin + schemaLength;
    }
    CurveRewriter rewriter(statements, verticesPerCircle);
    for (std::size_t i = 0; i < statements.size(); ++i) {
        if (repaired.classes[repaired.ids[i].second] != "IFCINDEXEDPOLYCURVE") continue;
        std::string polyline;
        if (!rewriter.Rewrite(polyline, statements[i])) {
            ++repaired.curvesKept;
            continue;
        }
        repaired.text.append(text.substr(copied, statements[i].begin - copied)).append(polyline);
        copied = statements[i].end;
        ++repaired.curvesRewritten;
    }
    repaired.text.append(text.substr(copied));
    return repaired;
}

}  // namespace QuorlanProgram::Import
