#include "step/TextRepair.h"

#include <algorithm>
#include <charconv>
#include <unordered_map>

#include "step/IndexedCurve.h"
#include "step/StandIns.h"
#include "step/StepReferences.h"
#include "step/StepText.h"
#include "step/StepUnits.h"
#include "step/StepValues.h"

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
    CurveRewriter(std::vector<StepStatement> const& statements, Chords const& chords) : chords_(chords) {
        for (auto const& statement : statements) {
            nextId_ = std::max(nextId_, statement.id + 1);
            if (statement.name.size() > 22 && ToUpper(statement.name.substr(0, 21)) == "IFCCARTESIANPOINTLIST") {
                lists_.emplace(statement.id, &statement);
            }
        }
    }

    /// The polyline that replaces `curve`, with its points; empty if it is not understood.
    std::string Rewrite(StepStatement const& curve, RepairedText& repaired) {
        auto const arguments = SplitArguments(curve.arguments);
        if (arguments.size() < 2 || arguments[0].empty() || arguments[0].front() != '#') return {};
        std::uint32_t listId = 0;
        std::from_chars(arguments[0].data() + 1, arguments[0].data() + arguments[0].size(), listId);
        auto const list = lists_.find(listId);
        if (list == lists_.end()) return {};
        auto segments = ReadSegments(ReadPointList(list->second->arguments), arguments[1]);
        auto const points = ExpandSegments(segments, chords_);
        if (points.size() < 2) return {};
        auto const hasArcs = std::any_of(segments.begin(), segments.end(), [](auto const& s) { return s.isArc; });
        if (hasArcs) repaired.arcs.emplace(curve.id, std::move(segments));

        std::string out;
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
        return out;
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

    Chords chords_;
    std::uint32_t nextId_ = 1;
    std::unordered_map<std::uint32_t, StepStatement const*> lists_;
};

void ListInstances(RepairedText& repaired, std::vector<StepStatement> const& statements) {
    std::unordered_map<std::string, std::uint32_t> indices;
    repaired.instances.reserve(statements.size());
    for (auto const& statement : statements) {
        auto const entry =
            indices.emplace(ToUpper(statement.name), static_cast<std::uint32_t>(repaired.classes.size()));
        if (entry.second) repaired.classes.push_back(entry.first->first);
        repaired.instances.push_back({statement.id, entry.first->second, statement.begin, statement.end});
    }
}

/// A piece of the text and what stands there instead.
struct Edit {
    std::size_t begin;
    std::size_t end;
    std::string text;
};

/// The text with its edits; one that begins within an earlier one is dropped with it.
std::string Apply(std::string_view text, std::vector<Edit>& edits) {
    std::sort(edits.begin(), edits.end(),
              [](Edit const& a, Edit const& b) { return a.begin != b.begin ? a.begin < b.begin : a.end > b.end; });
    std::string result;
    result.reserve(text.size() + text.size() / 16);
    std::size_t copied = 0;
    for (auto const& edit : edits) {
        if (edit.begin < copied) continue;
        result.append(text.substr(copied, edit.begin - copied)).append(edit.text);
        copied = edit.end;
    }
    return result.append(text.substr(copied));
}

void RewriteCurves(std::vector<Edit>& edits, RepairedText& repaired, std::vector<StepStatement> const& statements,
                   Chords const& chords) {
    auto const metresPerUnit = repaired.metresPerUnit > 0 ? repaired.metresPerUnit : 1;
    CurveRewriter rewriter(statements, chords.In(metresPerUnit));
    for (std::size_t i = 0; i < statements.size(); ++i) {
        if (repaired.classes[repaired.instances[i].classIndex] != "IFCINDEXEDPOLYCURVE") continue;
        auto polyline = rewriter.Rewrite(statements[i], repaired);
        ++(polyline.empty() ? repaired.curvesKept : repaired.curvesRewritten);
        if (!polyline.empty()) edits.push_back({statements[i].begin, statements[i].end, std::move(polyline)});
    }
}

/// Reads elements of classes that came with IFC4X3 as proxies, by the attributes that they have in common.
void StandIn(std::vector<Edit>& edits, RepairedText& repaired, std::string_view text,
             std::vector<StepStatement> const& statements) {
    std::vector<std::string_view> names;
    for (auto const& name : repaired.classes) names.push_back(FindLaterElementClass(name));
    for (std::size_t i = 0; i < statements.size(); ++i) {
        auto const classIndex = repaired.instances[i].classIndex;
        if (repaired.classes[classIndex] == "IFCLINEARPLACEMENT") {
            // Another placement that is not followed: without any, the reader would lose all of the product.
            edits.push_back({statements[i].begin, statements[i].end,
                             '#' + std::to_string(statements[i].id) + "=IFCGRIDPLACEMENT($,$);"});
        }
        auto const name = names[classIndex];
        if (name.empty()) continue;
        auto const arguments = SplitArguments(statements[i].arguments);
        if (arguments.size() < kStandInAttributes) continue;
        auto const place = [&](char const* at) { return static_cast<std::size_t>(at - text.data()); };
        auto const& last = arguments[kStandInAttributes - 1];
        auto const nameBegin = place(statements[i].name.data());
        edits.push_back({nameBegin, nameBegin + statements[i].name.size(), std::string(kStandIn)});
        edits.push_back({place(last.data() + last.size()),
                         place(statements[i].arguments.data() + statements[i].arguments.size()), ",$"});
        repaired.standIns.emplace(statements[i].id, name);
    }
}

/// Some writers leave blanks or a zero byte behind the end mark.
bool IsCutOff(std::string_view text) {
    text = Trim(text);
    return text.substr(text.size() - std::min<std::size_t>(text.size(), 256)).find(kEnd) == std::string_view::npos;
}

}  // namespace

std::string_view WithoutMark(std::string_view text) {
    return text.substr(0, kByteOrderMark.size()) == kByteOrderMark ? text.substr(kByteOrderMark.size()) : text;
}

TextProblem CheckText(std::string_view text) {
    text = WithoutMark(text);
    text = Trim(text);
    if (text.empty()) return TextProblem::kEmpty;
    if (text.substr(0, kHead.size()) != kHead) return TextProblem::kNoStepFile;
    auto const [begin, length] = FindSchema(text);
    if (begin == std::string_view::npos || ToUpper(text.substr(begin, length)).substr(0, 3) != "IFC") {
        return TextProblem::kNoIfcSchema;
    }
    return TextProblem::kNone;
}

RepairedText RepairText(std::string_view text, Chords const& chords) {
    text = WithoutMark(text);
    RepairedText repaired;
    auto const statements = ReadStatements(text);
    ListInstances(repaired, statements);
    repaired.metresPerUnit = FindMetresPerUnit(statements);
    repaired.faults = CheckReferences(text, statements);

    std::vector<Edit> edits;
    auto const [schemaBegin, schemaLength] = FindSchema(text);
    repaired.schema = ToUpper(text.substr(schemaBegin, schemaLength));
    repaired.schemaReplaced = repaired.schema != "IFC4" && repaired.schema.substr(0, 4) == "IFC4";
    if (repaired.schemaReplaced) {
        edits.push_back({schemaBegin, schemaBegin + schemaLength, "IFC4"});
        StandIn(edits, repaired, text, statements);
    }
    RewriteCurves(edits, repaired, statements, chords);
    for (auto const& [begin, end] : repaired.faults.circles) edits.push_back({begin, end, "$"});
    auto const nulls = FindTypedNulls(text, statements);
    repaired.typedNulls = nulls.size();
    for (auto const& [begin, end] : nulls) edits.push_back({begin, end, "$"});
    for (auto const& [begin, end] : FindAbsurdNumbers(text, statements)) {
        edits.push_back({begin, end, "NAN"});  // which the reader takes for no number, and no other text
        ++repaired.absurdNumbers;
    }
    repaired.isCutOff = IsCutOff(text);
    if (repaired.isCutOff) {
        auto const last = statements.empty() ? text.size() : statements.back().end;
        edits.push_back({last, text.size(), "\nENDSEC;\nEND-ISO-10303-21;\n"});
    }
    repaired.text = Apply(text, edits);
    return repaired;
}

}  // namespace QuorlanProgram::Import
