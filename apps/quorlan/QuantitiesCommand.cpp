#include "Commands.h"
#include "EntityLabel.h"
#include "ModelFile.h"
#include "Rows.h"
#include "quantities/EntityQuantities.h"

#include <fmt/core.h>
#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace QuorlanProgram {
namespace {

enum class GroupBy { Entity, Layer, Name };
enum class Format { Text, Csv, Json };

struct Settings {
    std::string model;
    std::vector<std::string> entities;
    GroupBy by = GroupBy::Entity;
    Format format = Format::Text;
};

/// One line of the bill.
struct Line {
    EntityLabel label;  ///< of an entity; for a group only the name
    std::string layer;
    Quantities quantities;
};

std::vector<Line> MakeLines(Settings const& settings, ModelFile const& model) {
    auto const labels = LabelsOf(model.GetReader().GetEntities());
    std::map<std::string, bool> wanted;
    for (auto const& guid : settings.entities) wanted[guid] = false;

    EntityQuantities const all(model.GetBytes(), model.GetReader());
    std::vector<Line> lines;
    std::map<std::string, std::size_t> groups;
    for (auto const& entry : all.GetEntities()) {
        auto const& label = labels[entry.entity];
        if (!wanted.empty()) {
            auto const found = wanted.find(label.guid);
            if (found == wanted.end()) continue;
            found->second = true;
        }
        if (settings.by == GroupBy::Entity) {
            lines.push_back({label, entry.layer, entry.quantities});
            continue;
        }
        auto const& key = settings.by == GroupBy::Layer ? entry.layer : label.name;
        auto const [group, isNew] = groups.try_emplace(key, lines.size());
        if (isNew) lines.push_back({{"", settings.by == GroupBy::Name ? key : ""}, entry.layer, {}});
        auto& line = lines[group->second];
        if (line.layer != entry.layer) line.layer = "several";
        line.quantities.Add(entry.quantities);
    }
    for (auto const& [guid, isFound] : wanted) {
        if (!isFound) throw Failure(settings.model + ": entity " + guid + " is not there or has no shapes");
    }
    return lines;
}

std::string TrustOf(Quantities const& quantities) {
    return quantities.doubts.empty() ? "closed" : fmt::format("{}", fmt::join(quantities.doubts, "; "));
}

Quantities Total(std::vector<Line> const& lines) {
    Quantities total;
    for (auto const& line : lines) total.Add(line.quantities);
    return total;
}

std::string Shorten(std::string const& text, std::size_t width) {
    if (text.size() <= width) return text;
    std::size_t end = width - 3;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    return text.substr(0, end) + "...";
}

void PrintText(Settings const& settings, std::vector<Line> const& lines) {
    char const* const heads[] = {"entity", "layer", "name"};
    fmt::print("{:<22}  {:<32}  {:>12}  {:>12}  {:^32}  {}\n", heads[static_cast<int>(settings.by)], "", "area m2",
               "volume m3", "centre of gravity", "trust");
    auto const print = [](std::string const& key, std::string const& name, Quantities const& q) {
        fmt::print("{:<22}  {:<32}  {:>12.3f}  {:>12.4f}  {:>10.3f},{:>10.3f},{:>10.3f}  {}\n", key, Shorten(name, 32),
                   q.area, q.volume, q.center.x, q.center.y, q.center.z, TrustOf(q));
    };
    for (auto const& line : lines) {
        print(line.label.guid, settings.by == GroupBy::Layer ? line.layer : line.label.name, line.quantities);
    }
    auto const total = Total(lines);
    auto const doubtful = static_cast<std::size_t>(
        std::count_if(lines.begin(), lines.end(), [](Line const& line) { return !line.quantities.doubts.empty(); }));
    print("total", fmt::format("{} entities, {} shapes", total.entities, total.instances), total);
    if (doubtful > 0) fmt::print("{} of {} lines are not to be trusted blindly\n", doubtful, lines.size());
}

void PrintRows(Settings const& settings, std::vector<Line> const& lines) {
    Rows rows(
        settings.format == Format::Json ? RowFormat::Json : RowFormat::Csv,
        {"guid", "name", "layer", "entities", "shapes", "area", "volume", "centerX", "centerY", "centerZ", "trust"});
    for (auto const& line : lines) {
        auto const& q = line.quantities;
        auto const trust = TrustOf(q);
        rows.Add({std::string_view(line.label.guid), std::string_view(line.label.name), std::string_view(line.layer),
                  q.entities, q.instances, q.area, q.volume, q.center.x, q.center.y, q.center.z,
                  std::string_view(trust)});
    }
    rows.Print();
}

int RunQuantities(Settings const& settings) {
    auto const model = ModelFile::Load(settings.model);
    auto const lines = MakeLines(settings, model);
    if (settings.format == Format::Text) {
        PrintText(settings, lines);
    } else {
        PrintRows(settings, lines);
    }
    return kSuccess;
}

}  // namespace

Run DeclareQuantities(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    std::map<std::string, GroupBy> const groups = {
        {"entity", GroupBy::Entity}, {"layer", GroupBy::Layer}, {"name", GroupBy::Name}};
    std::map<std::string, Format> const formats = {
        {"text", Format::Text}, {"csv", Format::Csv}, {"json", Format::Json}};
    app.add_option("model", settings->model, "The model to read (.qln)")->required()->type_name("");
    app.add_option("--entity", settings->entities, "Only this entity; may be repeated")
        ->type_name("GUID")
        ->allow_extra_args(false);
    app.add_option("--by", settings->by, "What a line adds up")
        ->transform(CLI::CheckedTransformer(groups).description(""))
        ->type_name("entity|layer|name")
        ->default_str("entity");
    app.add_option("--format", settings->format, "How lines are written")
        ->transform(CLI::CheckedTransformer(formats).description(""))
        ->type_name("text|csv|json")
        ->default_str("text");
    return [settings] { return RunQuantities(*settings); };
}

}  // namespace QuorlanProgram
