#include "ImportRecord.h"

#include <variant>

namespace QuorlanProgram::Import {
namespace {

constexpr Quorlan::EntityIndex_t kFirstEntity{0};

constexpr char const* kShapes = "ShapesRead";
constexpr char const* kDefinitions = "ShapesKept";
constexpr char const* kDeviation = "LargestDeviation";

}  // namespace

char const* const kImportRecordSet = "Quorlan.Import";

void WriteImportRecord(Quorlan::ModelBuilder& builder, ImportRecord const& record) {
    auto& writer = builder.GetPropertyWriter();
    writer.AddProperty(kFirstEntity, {kImportRecordSet, kShapes, static_cast<std::int64_t>(record.shapes)});
    writer.AddProperty(kFirstEntity, {kImportRecordSet, kDefinitions, static_cast<std::int64_t>(record.definitions)});
    writer.AddProperty(kFirstEntity, {kImportRecordSet, kDeviation, record.largestDeviation});
}

std::optional<ImportRecord> ReadImportRecord(Quorlan::IModelReader const& reader) {
    if (reader.GetEntities().GetCount() == 0) return std::nullopt;
    auto const& properties = reader.GetProperties();
    std::optional<std::int64_t> shapes, definitions;
    std::optional<double> deviation;
    Quorlan::PropertyRecord property;
    for (std::uint32_t i = 0; i < properties.GetPropertyCount(kFirstEntity); ++i) {
        properties.GetProperty(property, kFirstEntity, i);
        if (property.set != kImportRecordSet) continue;
        auto const* const count = std::get_if<std::int64_t>(&property.value);
        auto const* const length = std::get_if<double>(&property.value);
        if (property.name == kShapes && count != nullptr) shapes = *count;
        if (property.name == kDefinitions && count != nullptr) definitions = *count;
        if (property.name == kDeviation && length != nullptr) deviation = *length;
    }
    if (!shapes || !definitions || !deviation || *shapes < 0) return std::nullopt;
    if (*definitions != static_cast<std::int64_t>(reader.GetGeometry().GetDefinitionCount())) return std::nullopt;
    return ImportRecord{static_cast<std::uint64_t>(*shapes), static_cast<std::uint64_t>(*definitions), *deviation};
}

}  // namespace QuorlanProgram::Import
