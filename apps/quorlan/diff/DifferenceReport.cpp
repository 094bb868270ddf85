#include "diff/DifferenceReport.h"

#include <fmt/format.h>

#include <cmath>
#include <nlohmann/json.hpp>

namespace QuorlanProgram {
namespace {

using Kind = EntityChange::Kind;

/// [degrees] below which a motion does not turn.
constexpr double kNoTurn = 1e-3;

/// A relative change of a quantity below this is not worth a word.
constexpr double kSameQuantity = 1e-5;

/// [m], with the digits that a small length takes.
std::string LengthText(double length) {
    return length < 0.001 ? fmt::format("{:.2g} m", length) : fmt::format("{:.3f} m", length);
}

std::string ShapesText(std::size_t count, char const* what) {
    return fmt::format("{} {} {}", count, count == 1 ? "shape" : "shapes", what);
}

std::vector<std::string> PhrasesOf(EntityDifference const& difference) {
    std::vector<std::string> phrases;
    if (difference.name) {
        phrases.push_back(fmt::format("renamed from '{}' to '{}'", difference.name->first, difference.name->second));
    }
    if (auto const& motion = difference.motion) {
        phrases.push_back("moved by " + LengthText(motion->distance));
        if (motion->degrees > kNoTurn) phrases.push_back(fmt::format("turned by {:.2f}°", motion->degrees));
    }
    if (difference.isFrameMoved) phrases.push_back("placement changed while its shapes stay");
    if (difference.changedShapes > 0) phrases.push_back(ShapesText(difference.changedShapes, "changed"));
    if (difference.addedShapes > 0) phrases.push_back(ShapesText(difference.addedShapes, "added"));
    if (difference.removedShapes > 0) phrases.push_back(ShapesText(difference.removedShapes, "removed"));
    for (auto const& text : difference.materials) phrases.push_back("material " + text);
    for (auto const& text : difference.layers) phrases.push_back("layer " + text);
    phrases.insert(phrases.end(), difference.properties.begin(), difference.properties.end());
    return phrases;
}

bool IsChanged(double before, double after) {
    return !(std::abs(before - after) <= kSameQuantity * std::max(std::abs(before), std::abs(after)));
}

/// The old and the new quantities where the shapes changed.
std::vector<std::string> QuantityPhrasesOf(EntityChange const& change) {
    auto const& before = change.oldQuantities;
    auto const& after = change.newQuantities;
    if (!change.difference.HasShapeChange() || !before || !after) return {};
    std::vector<std::string> phrases;
    if (IsChanged(before->volume, after->volume)) {
        phrases.push_back(fmt::format("volume {:.4g} → {:.4g}", before->volume, after->volume));
    }
    if (IsChanged(before->area, after->area)) {
        phrases.push_back(fmt::format("area {:.4g} → {:.4g}", before->area, after->area));
    }
    return phrases;
}

std::vector<std::string> PhrasesOf(EntityChange const& change) {
    if (change.kind == Kind::Modified) {
        auto phrases = PhrasesOf(change.difference);
        auto const quantities = QuantityPhrasesOf(change);
        phrases.insert(phrases.end(), quantities.begin(), quantities.end());
        return phrases;
    }
    std::vector<std::string> phrases = {change.kind == Kind::Added ? "added" : "deleted"};
    auto const& quantities = change.newEntity ? change.newQuantities : change.oldQuantities;
    if (quantities && quantities->volume != 0) phrases.push_back(fmt::format("volume {:.4g}", quantities->volume));
    return phrases;
}

std::string SummaryOf(ModelDifference const& difference) {
    return fmt::format("{} added, {} modified, {} deleted, {} unchanged", difference.Count(Kind::Added),
                       difference.Count(Kind::Modified), difference.Count(Kind::Deleted), difference.unchanged);
}

/// What no increment can speak of.
std::string LeftOutOf(ModelContent const& model, char const* word) {
    std::string text;
    if (auto const count = model.GetUnnamedCount(); count > 0) {
        text += fmt::format("{} entities of the {} model have no GUID and are not compared\n", count, word);
    }
    if (auto const count = model.GetRepeatedCount(); count > 0) {
        text += fmt::format("{} entities of the {} model repeat an earlier GUID and are not compared\n", count, word);
    }
    return text;
}

/// Keeps a text from ending a cell of a table.
std::string ToCell(std::string const& text) {
    std::string cell;
    for (char const c : text) {
        if (c == '|') cell += '\\';
        cell += c == '\n' || c == '\r' ? ' ' : c;
    }
    return cell;
}

char const* NameOf(Kind kind) {
    switch (kind) {
        case Kind::Added: return "added";
        case Kind::Modified: return "modified";
        default: return "deleted";
    }
}

}  // namespace

std::string Describe(EntityDifference const& difference) {
    return fmt::format("{}", fmt::join(PhrasesOf(difference), ", "));
}

std::string ToText(ModelDifference const& difference, ModelContent const& oldModel, ModelContent const& newModel) {
    std::string text;
    for (auto const& change : difference.changes) {
        if (!change.className.empty()) text += change.className + " ";
        text += fmt::format("'{}' {}: {}\n", change.name, change.guid, fmt::join(PhrasesOf(change), ", "));
    }
    return text + SummaryOf(difference) + "\n" + LeftOutOf(oldModel, "old") + LeftOutOf(newModel, "new");
}

std::string ToMarkdown(ModelDifference const& difference, ModelContent const& oldModel, ModelContent const& newModel) {
    auto text = "# Changes\n\n" + SummaryOf(difference) + ".\n";
    for (auto const kind : {Kind::Added, Kind::Modified, Kind::Deleted}) {
        if (difference.Count(kind) == 0) continue;
        std::string title = NameOf(kind);
        title.front() = static_cast<char>(title.front() - 'a' + 'A');
        text += fmt::format("\n## {}\n\n| class | name | GUID | what |\n| --- | --- | --- | --- |\n", title);
        for (auto const& change : difference.changes) {
            if (change.kind != kind) continue;
            text += fmt::format("| {} | {} | `{}` | {} |\n", ToCell(change.className), ToCell(change.name), change.guid,
                                ToCell(fmt::format("{}", fmt::join(PhrasesOf(change), ", "))));
        }
    }
    auto const leftOut = LeftOutOf(oldModel, "old") + LeftOutOf(newModel, "new");
    return leftOut.empty() ? text : text + "\n" + leftOut;
}

std::string ToJson(ModelDifference const& difference, ModelContent const& oldModel, ModelContent const& newModel) {
    nlohmann::ordered_json report;
    for (auto const kind : {Kind::Added, Kind::Modified, Kind::Deleted}) report[NameOf(kind)] = difference.Count(kind);
    report["unchanged"] = difference.unchanged;
    report["notCompared"] = {{"old", oldModel.GetUnnamedCount() + oldModel.GetRepeatedCount()},
                             {"new", newModel.GetUnnamedCount() + newModel.GetRepeatedCount()}};
    report["changes"] = nlohmann::ordered_json::array();
    for (auto const& change : difference.changes) {
        nlohmann::ordered_json entry = {{"change", NameOf(change.kind)},
                                        {"guid", change.guid},
                                        {"class", change.className},
                                        {"name", change.name},
                                        {"what", PhrasesOf(change)}};
        if (auto const& motion = change.difference.motion) {
            entry["moved"] = motion->distance;
            entry["turned"] = motion->degrees;
        }
        if (change.oldQuantities) {
            entry["old"] = {{"volume", change.oldQuantities->volume}, {"area", change.oldQuantities->area}};
        }
        if (change.newQuantities) {
            entry["new"] = {{"volume", change.newQuantities->volume}, {"area", change.newQuantities->area}};
        }
        report["changes"].push_back(std::move(entry));
    }
    return report.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace QuorlanProgram
