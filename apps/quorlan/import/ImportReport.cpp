#include "ImportReport.h"

#include <algorithm>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>

namespace QuorlanProgram::Import {

namespace {

constexpr std::size_t kShownEntries = 10;

using Counts = std::map<std::string, std::size_t>;
using Names = std::vector<std::string>;

std::size_t Sum(Counts const& counts) {
    std::size_t sum = 0;
    for (auto const& entry : counts) sum += entry.second;
    return sum;
}

/// "Wall 12, Door 3", the most frequent first.
void WriteCounts(std::ostream& out, char const* title, Counts const& counts) {
    if (counts.empty()) return;
    std::vector<std::pair<std::string, std::size_t>> sorted(counts.begin(), counts.end());
    std::stable_sort(sorted.begin(), sorted.end(), [](auto const& a, auto const& b) { return a.second > b.second; });
    out << title << ": " << Sum(counts) << " (";
    for (std::size_t i = 0; i < std::min(sorted.size(), kShownEntries); ++i) {
        out << (i > 0 ? ", " : "") << sorted[i].first << ' ' << sorted[i].second;
    }
    out << (sorted.size() > kShownEntries ? ", …)\n" : ")\n");
}

void WriteNames(std::ostream& out, char const* title, Names const& names) {
    if (names.empty()) return;
    out << title << ": " << names.size() << '\n';
    for (std::size_t i = 0; i < std::min(names.size(), kShownEntries); ++i) out << "    " << names[i] << '\n';
    if (names.size() > kShownEntries) out << "    …\n";
}

/// Shapes read for each one written.
double GetRatio(ImportReport const& r) {
    return r.definitions == 0 ? 1.0 : static_cast<double>(r.shapes) / static_cast<double>(r.definitions);
}

}  // namespace

std::string ToText(ImportReport const& r) {
    std::ostringstream out;
    out << "schema: " << r.schema << '\n'
        << "products: " << r.products << ", imported " << r.entities << '\n'
        << "instances: " << r.instances << " of " << r.definitions << " definitions\n"
        << "shapes read: " << r.shapes << " (" << r.modelledShapes << " with their faces as modelled, "
        << r.joinedShapes << " from joined triangles), distinct ones kept: " << r.definitions << ", ratio "
        << std::setprecision(3) << GetRatio(r) << ", largest deviation " << r.largestDeviation << " m\n"
        << "materials: " << r.materials << ", layers: " << r.layers << ", properties: " << r.properties
        << ", owner histories: " << r.ownerHistories << '\n';
    if (r.spaces > 0) out << "spaces: " << r.spaces << ", on layer IfcSpace where they have no layer of their own\n";
    if (r.curvesRewritten > 0) out << "indexed curves read as polylines: " << r.curvesRewritten << '\n';
    if (r.splitShapes > 0) out << "shapes split at 65536 vertices: " << r.splitShapes << '\n';
    if (r.openings > 0) out << "left out, openings: " << r.openings << '\n';
    WriteCounts(out, "left out, products without a body", r.withoutBody);
    WriteCounts(out, "left out, representations other than the body", r.representations);
    WriteCounts(out, "not read, instances of unknown classes", r.unknownClasses);
    WriteCounts(out, "not read, body items", r.unreadItems);
    WriteCounts(out, "not read, properties", r.unreadProperties);
    WriteNames(out, "not read, products whose body gave no shape", r.productsWithoutShape);
    WriteNames(out, "cuts that failed (product: number)", r.missedCuts);
    WriteNames(out, "GUIDs that occur more than once", r.duplicateGuids);
    WriteNames(out, "GUIDs that are none", r.invalidGuids);
    WriteCounts(out, "messages of the reader", r.messages);
    return out.str();
}

std::string ToJson(ImportReport const& r) {
    nlohmann::ordered_json const json = {
        {"schema", r.schema},
        {"products", r.products},
        {"entities", r.entities},
        {"spaces", r.spaces},
        {"instances", r.instances},
        {"shapes", r.shapes},
        {"definitions", r.definitions},
        {"shapesPerDefinition", GetRatio(r)},
        {"largestDeviation", r.largestDeviation},
        {"modelledShapes", r.modelledShapes},
        {"joinedShapes", r.joinedShapes},
        {"splitShapes", r.splitShapes},
        {"materials", r.materials},
        {"layers", r.layers},
        {"properties", r.properties},
        {"ownerHistories", r.ownerHistories},
        {"curvesRewritten", r.curvesRewritten},
        {"openings", r.openings},
        {"withoutBody", r.withoutBody},
        {"representations", r.representations},
        {"unknownClasses", r.unknownClasses},
        {"unreadItems", r.unreadItems},
        {"unreadProperties", r.unreadProperties},
        {"productsWithoutShape", r.productsWithoutShape},
        {"duplicateGuids", r.duplicateGuids},
        {"invalidGuids", r.invalidGuids},
        {"missedCuts", r.missedCuts},
        {"messages", r.messages},
        {"secondsRead", r.secondsRead},
        {"secondsShape", r.secondsShape},
    };
    // Texts of a file may be no valid UTF-8; they are shown, not refused.
    return json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
}

}  // namespace QuorlanProgram::Import
