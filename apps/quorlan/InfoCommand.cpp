#include "Command.h"
#include "Commands.h"
#include "ImportRecord.h"
#include "ModelFile.h"

#include <Quorlan/ModelStatistics.h>
#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace QuorlanProgram {
namespace {

using GeometryObjectLib::Vertex;
using Json = nlohmann::ordered_json;

struct Settings {
    std::string model;
    std::string format = "text";
};

Json ToJsonArray(Vertex const& v) { return Json::array({v.x, v.y, v.z}); }

Json BoundsOf(ModelFile const& model) {
    auto const bounds = Unite(ComputeWorldBoxes(model.GetBytes()));
    if (!bounds) return nullptr;
    return {{"min", ToJsonArray(bounds->GetMin())},
            {"max", ToJsonArray(bounds->GetMax())},
            {"size", ToJsonArray(2.0 * bounds->halfExtent)}};
}

Json EntitiesOf(Quorlan::IModelReader const& reader) {
    constexpr std::array<char const*, 5> kKinds = {"guid", "text", "geometricKey", "text", "none"};
    Json entities{
        {"count", reader.GetEntities().GetCount()}, {"guid", 0}, {"text", 0}, {"geometricKey", 0}, {"none", 0}};
    Quorlan::EntityIdentifier record;
    for (std::uint32_t i = 0; i < reader.GetEntities().GetCount(); ++i) {
        auto& count = entities[kKinds[std::min(reader.GetEntities().GetIdentifier(record, i).kind, 4u)]];
        count = count.get<std::uint64_t>() + 1;
    }
    return entities;
}

Json DefinitionsOf(Quorlan::IGeometryReader const& geometry, Quorlan::ModelStatistics const& statistics) {
    std::array<std::uint64_t, 4> counts{};
    for (std::uint32_t i = 0; i < geometry.GetDefinitionCount(); ++i) {
        switch (geometry.GetDefinitionKind(i)) {
            case 1: ++counts[0]; break;
            case 7: ++counts[1]; break;
            case 6: ++counts[2]; break;
            case 5: ++counts[3]; break;
            default: break;
        }
    }
    return {{"count", geometry.GetDefinitionCount()},
            {"plain", counts[0]},
            {"withNormals", counts[1]},
            {"withTextureCoordinates", counts[2]},
            {"lineGraphics", counts[3]},
            {"faces", statistics.GetFaceCount()},
            {"holes", statistics.GetHoleCount()},
            {"vertices", statistics.GetVertexCount()}};
}

/// How often a stored shape is placed, and what the import that wrote the model found of copies.
Json SharingOf(Quorlan::IModelReader const& reader) {
    auto const ratio = [](std::uint64_t many, std::uint64_t few) {
        return few == 0 ? Json(nullptr) : Json(static_cast<double>(many) / static_cast<double>(few));
    };
    auto const instances = reader.GetGeometry().GetInstanceCount();
    auto const definitions = reader.GetGeometry().GetDefinitionCount();
    Json sharing{
        {"instances", instances}, {"shapesKept", definitions},    {"instancesPerShape", ratio(instances, definitions)},
        {"shapesRead", nullptr},  {"shapesReadPerKept", nullptr}, {"largestDeviation", nullptr}};
    if (auto const record = Import::ReadImportRecord(reader)) {
        sharing["shapesRead"] = record->shapes;
        sharing["shapesReadPerKept"] = ratio(record->shapes, record->definitions);
        sharing["largestDeviation"] = record->largestDeviation;
    }
    return sharing;
}

Json LayersOf(Quorlan::IGeometryReader const& geometry) {
    std::vector<std::uint64_t> counts(geometry.GetExtraContentCount());
    Quorlan::InstanceRecord instance;
    for (std::uint32_t i = 0; i < geometry.GetInstanceCount(); ++i) {
        geometry.GetInstance(instance, i);
        if (instance.layerIndex < counts.size()) ++counts[instance.layerIndex];
    }
    auto layers = Json::array();
    std::string name;
    for (std::uint32_t i = 0; i < counts.size(); ++i) {
        geometry.GetLayerName(name, i);
        layers.push_back({{"name", name}, {"instances", counts[i]}});
    }
    return layers;
}

Json ChangesOf(Quorlan::IOwnerHistoryReader const& histories) {
    constexpr std::array<char const*, 5> kActions = {"noChange", "modified", "added", "deleted", "other"};
    Json changes{{"links", histories.GetLinkCount()},
                 {"noChange", 0},
                 {"modified", 0},
                 {"added", 0},
                 {"deleted", 0},
                 {"other", 0}};
    Quorlan::OwnerHistoryLink link;
    Quorlan::OwnerHistoryRecord record;
    for (std::uint32_t i = 0; i < histories.GetLinkCount(); ++i) {
        histories.GetLink(link, i);
        histories.GetOwnerHistory(record, histories.GetOwnerHistoryIndex(link.reference));
        auto& count = changes[kActions[std::min(static_cast<std::uint32_t>(record.changeAction), 4u)]];
        count = count.get<std::uint64_t>() + 1;
    }
    return changes;
}

Json Describe(ModelFile const& model) {
    auto const& reader = model.GetReader();
    auto const& geometry = reader.GetGeometry();
    Quorlan::ModelStatistics statistics;
    statistics.Build(model.GetBytes());
    std::uint64_t properties = 0;
    for (std::uint32_t i = 0; i < reader.GetEntities().GetCount(); ++i) {
        properties += reader.GetProperties().GetPropertyCount(Quorlan::EntityIndex_t{i});
    }
    Json info{{"file", model.GetPath()},
              {"bytes", model.GetBytes().size()},
              {"units", "metres"},
              {"bounds", BoundsOf(model)},
              {"entities", EntitiesOf(reader)},
              {"instances", geometry.GetInstanceCount()},
              {"definitions", DefinitionsOf(geometry, statistics)},
              {"sharing", SharingOf(reader)},
              {"materials", geometry.GetMaterialCount()},
              {"textures", geometry.GetTextureCount()},
              {"properties", properties},
              {"ownerHistories", ChangesOf(reader.GetOwnerHistories())},
              {"layers", LayersOf(geometry)}};
    for (auto const& table : statistics.GetTables()) {
        info["tables"].push_back({{"name", table.name}, {"count", table.count}, {"bytes", table.bytes}});
    }
    return info;
}

/// "1,234 (guid 1,200, none 34)": the first member, then those that are not 0.
std::string Summarise(Json const& counts) {
    std::string text, parts;
    for (auto const& [name, count] : counts.items()) {
        if (text.empty()) {
            text = fmt::format("{}", count.get<std::uint64_t>());
        } else if (count != 0) {
            parts += fmt::format("{}{} {}", parts.empty() ? "" : ", ", name, count.get<std::uint64_t>());
        }
    }
    return parts.empty() ? text : fmt::format("{} ({})", text, parts);
}

/// "25 kept, placed 1.52 times each; 31 imported, 1.24 for each kept, moved by at most 3e-07 m".
std::string SummariseSharing(Json const& sharing) {
    auto const kept = sharing["shapesKept"].get<std::uint64_t>();
    if (kept == 0) return "0";
    auto text = fmt::format("{} kept, placed {:.2f} times each", kept, sharing["instancesPerShape"].get<double>());
    if (sharing["shapesRead"].is_null()) return text;
    return text + fmt::format("; {} imported, {:.2f} for each kept, moved by at most {:.2g} m",
                              sharing["shapesRead"].get<std::uint64_t>(), sharing["shapesReadPerKept"].get<double>(),
                              sharing["largestDeviation"].get<double>());
}

std::string Join(Json const& xyz) {
    return fmt::format("{:.3f}  {:.3f}  {:.3f}", xyz[0].get<double>(), xyz[1].get<double>(), xyz[2].get<double>());
}

void PrintText(Json const& info) {
    fmt::print("{}\n", info["file"].get<std::string>());
    auto const print = [](char const* name, std::string const& value) { fmt::print("  {:<16}{}\n", name, value); };
    print("bytes", info["bytes"].dump());
    print("units", info["units"].get<std::string>());
    if (!info["bounds"].is_null()) {
        print("minimum", Join(info["bounds"]["min"]));
        print("maximum", Join(info["bounds"]["max"]));
        print("size", Join(info["bounds"]["size"]));
    }
    print("entities", Summarise(info["entities"]));
    print("instances", info["instances"].dump());
    print("definitions", Summarise(info["definitions"]));
    print("shapes", SummariseSharing(info["sharing"]));
    for (char const* const name : {"materials", "textures", "properties"}) print(name, info[name].dump());
    print("owner histories", Summarise(info["ownerHistories"]));
    fmt::print("layers{:>28}\n", "instances");
    for (auto const& layer : info["layers"]) {
        fmt::print("  {:<22}{:>10}\n", layer["name"].get<std::string>(), layer["instances"].get<std::uint64_t>());
    }
    fmt::print("tables{:>28}{:>14}\n", "count", "bytes");
    for (auto const& table : info["tables"]) {
        if (table["count"] == 0 && table["bytes"] == 0) continue;
        fmt::print("  {:<22}{:>10}{:>14}\n", table["name"].get<std::string>(), table["count"].get<std::uint64_t>(),
                   table["bytes"].get<std::uint64_t>());
    }
}

int RunInfo(Settings const& settings) {
    auto const info = Describe(ModelFile::Load(settings.model));
    if (settings.format == "json") {
        fmt::print("{}\n", info.dump(1, ' ', false, Json::error_handler_t::replace));
    } else {
        PrintText(info);
    }
    return kSuccess;
}

}  // namespace

Run DeclareInfo(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("model", settings->model, "The model to read (.qln)")->required()->type_name("");
    app.add_option("--format", settings->format, "How the answer is written")
        ->check(CLI::IsMember({"text", "json"}).description(""))
        ->type_name("text|json")
        ->capture_default_str();
    return [settings] { return RunInfo(*settings); };
}

}  // namespace QuorlanProgram
