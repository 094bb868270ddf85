#include "IfcImport.h"

#include <ifcpp/IFC4/include/IfcProject.h>
#include <ifcpp/model/BuildingModel.h>

#include <chrono>
#include <new>

#include "ifc/IfcFile.h"
#include "ifc/IfcProducts.h"
#include "step/StepText.h"
#include "step/TextRepair.h"

namespace QuorlanProgram::Import {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kGuidLength = 22;
constexpr std::size_t kPlacementArgument = 5;  ///< of a product; its representation follows

double SecondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

char const* Describe(TextProblem problem) {
    switch (problem) {
        case TextProblem::kEmpty: return "the file is empty";
        case TextProblem::kNoStepFile: return "this is no IFC file: it does not start with ISO-10303-21";
        case TextProblem::kNoIfcSchema: return "this is no IFC file: its header names no IFC schema";
        default: return "";
    }
}

/// The GUID of an instance that looks like a product: a GUID first, then a placement and a representation, of which one
/// is given. Empty for any other instance.
std::string FindProductGuid(std::string_view statement) {
    auto const instances = ReadStatements(statement);
    if (instances.empty()) return {};
    auto const arguments = SplitArguments(instances.front().arguments);
    if (arguments.size() <= kPlacementArgument + 1) return {};
    auto const guid = arguments[0];
    if (guid.size() != kGuidLength + 2 || guid.front() != '\'') return {};
    auto const isReference = [](std::string_view argument) { return !argument.empty() && argument.front() == '#'; };
    auto const isProduct = isReference(arguments[kPlacementArgument]) || isReference(arguments[kPlacementArgument + 1]);
    return isProduct ? std::string(guid.substr(1, kGuidLength)) : std::string();
}

void NoteUnknownClasses(ImportReport& report, std::string_view original, RepairedText const& text,
                        BuildingModel const& model) {
    auto const& entities = model.getMapIfcEntities();
    for (auto const& instance : text.instances) {
        if (entities.count(static_cast<int>(instance.id)) > 0) continue;
        auto const& name = text.classes[instance.classIndex];
        auto const guid = FindProductGuid(original.substr(instance.begin, instance.end - instance.begin));
        if (guid.empty()) {
            ++report.unknownClasses[name];
        } else {
            report.unknownProducts.push_back(guid + ' ' + name);
        }
    }
}

/// What the report says in its own words is not said twice.
void NoteMessages(ImportReport& report, MessageLog const& log) {
    for (auto const& message : log.GetCounts()) {
        auto const says = [&](char const* text) { return message.first.find(text) != std::string::npos; };
        if (!says("unknown IFC entity") && !says("No length unit")) report.messages.insert(message);
    }
}

void NoteRepairs(ImportReport& report, RepairedText const& text) {
    report.schema = text.schema;
    report.isCutOff = text.isCutOff;
    report.curvesRewritten = text.curvesRewritten;
    report.typedNulls = text.typedNulls;
    report.missingReferences = text.faults.missing;
    report.circularReferences = text.faults.circles.size();
    report.absurdNumbers = text.absurdNumbers;
    if (text.curvesKept > 0) report.unreadItems["IfcIndexedPolyCurve"] = text.curvesKept;
}

}  // namespace

std::string AddIfc(ModelParts& parts, std::string_view file, ImportOptions const& options, ImportReport& report) {
    auto const text = WithoutMark(file);
    auto const problem = CheckText(text);
    if (problem != TextProblem::kNone) return Describe(problem);

    SilentStreams const silence;
    auto const start = Clock::now();
    if (options.progress) options.progress("reading", 0, 1);
    MessageLog log;
    auto repaired = RepairText(text, Chords(options.deflection));
    auto const model = ReadIfc(repaired.text, log);
    repaired.text = {};
    NoteRepairs(report, repaired);
    if (!model) {
        return repaired.isCutOff ? "the file is cut off before its project"
                                 : "no IFC project can be read from this file";
    }
    auto const units = ReadUnits(*model->getIfcProject());
    report.lacksUnit = !units.hasLength;
    NoteUnknownClasses(report, text, repaired, *model);
    report.secondsRead = SecondsSince(start);

    auto const shapeStart = Clock::now();
    IfcProducts(model, units, text, repaired, options, parts, report, log).WriteAll();
    CutCycles(*model);
    NoteMessages(report, log);
    report.secondsShape = SecondsSince(shapeStart);
    return {};
}

ImportResult ImportIfc(std::string_view text, ImportOptions const& options) {
    ImportResult result;
    ModelParts parts;
    parts.BeginFile(result.report);
    result.error = AddIfc(parts, text, options, result.report);
    if (!result.error.empty()) return result;
    try {
        result.model = parts.Create();
    } catch (std::bad_array_new_length const&) {
        result.error = kTooLarge;
    }
    return result;
}

}  // namespace QuorlanProgram::Import
