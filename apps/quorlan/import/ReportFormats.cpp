#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string_view>

#include "ImportReport.h"

namespace QuorlanProgram::Import {

namespace {

constexpr std::size_t kShownEntries = 10;  ///< of a list, in text

using Counts = ImportReport::Counts;
using Names = std::vector<std::string>;

/// A title, its value in a line, and what it is made of.
struct Line {
    std::string title;
    std::string value;
    Names entries;
};

/// The lines of a report, in the order in which they are shown.
class Lines {
public:
    void Add(std::string title, std::string value) { lines_.push_back({std::move(title), std::move(value), {}}); }

    void Add(std::string title, std::size_t count) {
        if (count > 0) Add(std::move(title), std::to_string(count));
    }

    void Add(std::string title, Names entries) {
        if (entries.empty()) return;
        auto count = std::to_string(entries.size());
        lines_.push_back({std::move(title), std::move(count), std::move(entries)});
    }

    /// "Wall: 12", "Door: 3", the most frequent first.
    void Add(std::string title, Counts const& counts) {
        if (counts.empty()) return;
        std::vector<std::pair<std::string, std::size_t>> sorted(counts.begin(), counts.end());
        std::stable_sort(sorted.begin(), sorted.end(),
                         [](auto const& a, auto const& b) { return a.second > b.second; });
        std::size_t sum = 0;
        Names entries;
        for (auto const& [name, count] : sorted) {
            sum += count;
            entries.push_back(name + ": " + std::to_string(count));
        }
        lines_.push_back({std::move(title), std::to_string(sum), std::move(entries)});
    }

    std::vector<Line> const& Get() const { return lines_; }

private:
    std::vector<Line> lines_;
};

/// Shapes read for each one written.
double GetRatio(std::size_t shapes, std::size_t definitions) {
    return definitions == 0 ? 1.0 : static_cast<double>(shapes) / static_cast<double>(definitions);
}

std::string Format(double value) {
    std::ostringstream out;
    out.precision(3);
    out << value;
    return out.str();
}

std::string FormatShapes(ImportReport const& r) {
    return std::to_string(r.shapes) + " (" + std::to_string(r.modelledShapes) + " with their faces as modelled, " +
           std::to_string(r.joinedShapes) +
           " from joined triangles), distinct ones kept: " + std::to_string(r.definitions) + ", ratio " +
           Format(GetRatio(r.shapes + r.curveSets, r.definitions)) + ", largest deviation " +
           Format(r.largestDeviation) + " m";
}

std::string FormatCuts(CutCount const& cuts) {
    return std::to_string(cuts.made) + ", each checked by volume; " + std::to_string(cuts.nudged) +
           " needed a second try, " + std::to_string(cuts.exact) + " exact arithmetic";
}

std::size_t GetClosed(ImportReport const& r) {
    std::size_t open = 0;
    for (auto const& entry : r.openSolids) open += entry.second;
    return r.solids - std::min(open, r.solids);
}

void AddWarnings(Lines& lines, ImportReport const& r) {
    lines.Add("warnings", std::to_string(r.CountWarnings()));
    if (r.isCutOff) lines.Add("the file is cut off", "what comes before that is read");
    if (r.lacksUnit) lines.Add("the file has no unit of length", "taken for metres");
    lines.Add("references to instances that are not there", r.missingReferences);
    lines.Add("references that closed a circle, cut", r.circularReferences);
    lines.Add("products with such references", r.damagedProducts);
    lines.Add("numbers beyond all range", r.absurdNumbers);
    lines.Add("not read, products of unknown classes", r.unknownProducts);
    lines.Add("left out, products whose placement is not known", r.misplacedProducts);
    lines.Add("placements with axes that are parallel or of no length, repaired", r.repairedPlacements);
    lines.Add("not read, products whose body gave no shape", r.productsWithoutShape);
    lines.Add("not read, body items", r.unreadItems);
    lines.Add("not read, faces that are no polygon", r.droppedFaces);
    lines.Add("faces that solids lacked, added", r.addedFaces);
    lines.Add("cuts that stayed wrong, by product", r.wrongCuts);
    lines.Add("solids that did not come out closed", r.openSolids);
    lines.Add("GUIDs that occur more than once", r.duplicateGuids);
    lines.Add("GUIDs that are none", r.invalidGuids);
    lines.Add("messages of the reader", r.messages);
}

std::vector<Line> ToLines(ImportReport const& r) {
    Lines lines;
    if (!r.file.empty()) lines.Add("file", r.file);
    lines.Add("schema", r.schema);
    lines.Add("products", std::to_string(r.products) + ", imported " + std::to_string(r.entities));
    lines.Add("instances", std::to_string(r.instances) + " of " + std::to_string(r.definitions) + " definitions");
    lines.Add("shapes read", FormatShapes(r));
    lines.Add("of these, shapes of an earlier file", r.shapesOfEarlierFiles);
    if (r.solids > 0) {
        lines.Add("solids", std::to_string(r.solids) + ", closed and outward " + std::to_string(GetClosed(r)));
    }
    if (r.cuts.made > 0) lines.Add("cuts", FormatCuts(r.cuts));
    lines.Add("line graphics", r.curveSets);
    lines.Add("materials", std::to_string(r.materials) + ", layers: " + std::to_string(r.layers) + ", properties: " +
                               std::to_string(r.properties) + ", owner histories: " + std::to_string(r.ownerHistories));
    if (r.spaces > 0) {
        lines.Add("spaces", std::to_string(r.spaces) + ", on layer IfcSpace where they have no layer of their own");
    }
    lines.Add("indexed curves read as polylines", r.curvesRewritten);
    lines.Add("values without content repaired", r.typedNulls);
    lines.Add("shapes split at 65536 vertices", r.splitShapes);
    lines.Add("left out, openings", r.openings);
    lines.Add("left out, products without a body", r.withoutBody);
    lines.Add("of these, products with representations other than a body", r.otherProducts);
    lines.Add("left out, representations other than the body", r.representations);
    lines.Add("left out, properties that are no plain value", r.unreadProperties);
    lines.Add("left out, instances of unknown classes", r.unknownClasses);
    AddWarnings(lines, r);
    return lines.Get();
}

nlohmann::ordered_json ToCounts(ImportReport const& r) {
    return {{"products", r.products},
            {"entities", r.entities},
            {"spaces", r.spaces},
            {"instances", r.instances},
            {"shapes", r.shapes},
            {"shapesOfEarlierFiles", r.shapesOfEarlierFiles},
            {"lineGraphics", r.curveSets},
            {"definitions", r.definitions},
            {"modelledShapes", r.modelledShapes},
            {"joinedShapes", r.joinedShapes},
            {"splitShapes", r.splitShapes},
            {"solids", r.solids},
            {"closedSolids", GetClosed(r)},
            {"cuts", r.cuts.made},
            {"cutsTriedAgain", r.cuts.nudged},
            {"cutsExact", r.cuts.exact},
            {"materials", r.materials},
            {"layers", r.layers},
            {"properties", r.properties},
            {"ownerHistories", r.ownerHistories},
            {"curvesRewritten", r.curvesRewritten},
            {"typedNulls", r.typedNulls},
            {"openings", r.openings},
            {"missingReferences", r.missingReferences},
            {"circularReferences", r.circularReferences},
            {"absurdNumbers", r.absurdNumbers},
            {"warnings", r.CountWarnings()}};
}

nlohmann::ordered_json ToFile(ImportReport const& r) {
    nlohmann::ordered_json json = {{"file", r.file}, {"schema", r.schema}};
    json.update(ToCounts(r));
    json.update({{"shapesPerDefinition", GetRatio(r.shapes, r.definitions)},
                 {"largestDeviation", r.largestDeviation},
                 {"withoutBody", r.withoutBody},
                 {"otherProducts", r.otherProducts},
                 {"representations", r.representations},
                 {"unreadProperties", r.unreadProperties},
                 {"unknownClasses", r.unknownClasses},
                 {"cutOff", r.isCutOff},
                 {"lacksUnit", r.lacksUnit},
                 {"damagedProducts", r.damagedProducts},
                 {"unknownProducts", r.unknownProducts},
                 {"misplacedProducts", r.misplacedProducts},
                 {"repairedPlacements", r.repairedPlacements},
                 {"productsWithoutShape", r.productsWithoutShape},
                 {"unreadItems", r.unreadItems},
                 {"droppedFaces", r.droppedFaces},
                 {"addedFaces", r.addedFaces},
                 {"wrongCuts", r.wrongCuts},
                 {"openSolids", r.openSolids},
                 {"duplicateGuids", r.duplicateGuids},
                 {"invalidGuids", r.invalidGuids},
                 {"messages", r.messages},
                 {"secondsRead", r.secondsRead},
                 {"secondsShape", r.secondsShape}});
    return json;
}

}  // namespace

std::string ToText(std::vector<ImportReport> const& reports) {
    std::string out;
    for (auto const& report : reports) {
        if (!out.empty()) out += '\n';
        for (auto const& line : ToLines(report)) {
            out.append(line.title).append(": ").append(line.value).append("\n");
            auto const shown = std::min(line.entries.size(), kShownEntries);
            for (std::size_t i = 0; i < shown; ++i) out.append("    ").append(line.entries[i]).append("\n");
            if (line.entries.size() > shown) out += "    …\n";
        }
    }
    return out;
}

std::string ToMarkdown(std::vector<ImportReport> const& reports) {
    std::string out = "# Import\n";
    for (auto const& report : reports) {
        auto const lines = ToLines(report);
        out.append("\n## ").append(report.file.empty() ? report.schema : report.file);
        out.append("\n\n| | |\n| --- | --- |\n");
        for (auto const& line : lines) {
            out.append("| ").append(line.title).append(" | ").append(line.value).append(" |\n");
        }
        for (auto const& line : lines) {
            if (line.entries.empty()) continue;
            out.append("\n### ").append(line.title).append("\n\n");
            for (auto const& entry : line.entries) out.append("- `").append(entry).append("`\n");
        }
    }
    return out;
}

std::string ToJson(std::vector<ImportReport> const& reports) {
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    nlohmann::ordered_json files = nlohmann::ordered_json::array();
    for (auto const& report : reports) {
        auto const counts = ToCounts(report);
        for (auto const& [name, count] : counts.items()) {
            json[name] = json.value(name, std::size_t{0}) + count.get<std::size_t>();
        }
        files.push_back(ToFile(report));
    }
    json["shapesPerDefinition"] =
        GetRatio(json.value("shapes", std::size_t{0}), json.value("definitions", std::size_t{0}));
    json["files"] = std::move(files);
    // Texts of a file may be no valid UTF-8; they are shown, not refused.
    return json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
}

}  // namespace QuorlanProgram::Import
