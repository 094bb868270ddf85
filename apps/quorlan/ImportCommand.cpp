#include "Commands.h"
#include "ModelFile.h"
#include "OutputFile.h"
#include "Progress.h"
#include "Signals.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <new>

#include "import/ImportRecord.h"
#include "import/ImportSources.h"
#include "import/ModelParts.h"

namespace QuorlanProgram {
namespace {

struct Settings {
    std::vector<std::string> inputs;
    std::string output;
    std::string report;
    std::vector<std::string> with;
    std::string unit;
    bool isStrict = false;
    bool keepsTriangles = false;
    Import::ImportOptions options;
};

struct Unit {
    char const* name;
    double metres;
};
constexpr Unit kUnits[] = {{"m", 1}, {"dm", 0.1}, {"cm", 0.01}, {"mm", 0.001}, {"ft", 0.3048}, {"in", 0.0254}};

/// What `--with` takes, and the representation that it means.
struct CurveName {
    char const* name;
    char const* representation;
};
constexpr CurveName kCurveNames[] = {{"axis", "Axis"}, {"annotation", "Annotation"}, {"footprint", "FootPrint"}};

template <typename Names>
std::vector<std::string> ListNames(Names const& entries) {
    std::vector<std::string> names;
    for (auto const& entry : entries) names.emplace_back(entry.name);
    return names;
}

Import::ImportOptions MakeOptions(Settings const& settings, Progress& progress) {
    auto options = settings.options;
    options.joinsFaces = !settings.keepsTriangles;
    for (auto const& unit : kUnits) {
        if (settings.unit == unit.name) options.metresPerUnit = unit.metres;
    }
    for (auto const& wanted : settings.with) {
        for (auto const& known : kCurveNames) {
            if (wanted == known.name) options.curveNames.insert(known.representation);
        }
    }
    options.progress = [&](char const* stage, std::size_t done, std::size_t total) {
        progress.Report(stage, done, total);
    };
    return options;
}

std::string Format(std::string const& format, std::vector<Import::ImportReport> const& reports) {
    if (format == "json") return Import::ToJson(reports);
    return format == "md" ? Import::ToMarkdown(reports) : Import::ToText(reports);
}

/// Says on stderr which files had warnings. RETURNS whether one had.
bool WarnOf(std::vector<Import::ImportReport> const& reports) {
    bool hasWarnings = false;
    for (auto const& report : reports) {
        auto const count = report.CountWarnings();
        if (count == 0) continue;
        hasWarnings = true;
        std::fprintf(stderr, "quorlan: %s: %zu warning%s (--report names them)\n", report.file.c_str(), count,
                     count == 1 ? "" : "s");
    }
    return hasWarnings;
}

/// The model's first entity tells what the import found of copies.
void WriteRecord(Import::ModelParts& parts, std::vector<Import::ImportReport> const& reports) {
    Import::ImportRecord record;
    std::size_t entities = 0;
    for (auto const& report : reports) {
        entities += report.entities;
        record.shapes += report.shapes + report.curveSets;
        record.definitions += report.definitions;
        record.largestDeviation = std::max(record.largestDeviation, report.largestDeviation);
    }
    if (entities > 0) Import::WriteImportRecord(parts.GetBuilder(), record);
}

std::vector<char> ImportAll(Settings const& settings, std::vector<Import::ImportReport>& reports) {
    Progress progress;
    auto const options = MakeOptions(settings, progress);
    Import::ModelParts parts;
    reports.resize(settings.inputs.size());
    for (std::size_t i = 0; i < reports.size(); ++i) {
        auto const& input = settings.inputs[i];
        reports[i].file = input;
        parts.BeginFile(reports[i]);
        auto const error = Import::IsMeshFile(input)
                               ? Import::AddMeshFile(parts, input, options, reports[i])
                               : Import::AddIfc(parts, AsView(ReadFile(input)), options, reports[i]);
        if (!error.empty()) throw Failure(input + ": " + error);
    }
    WriteRecord(parts, reports);
    progress.Report("writing", 0, 1);
    try {
        return parts.Create();
    } catch (std::bad_array_new_length const&) {
        throw Failure(settings.output + ": " + Import::kTooLarge);
    }
}

int ImportHere(Settings const& settings) {
    std::vector<Import::ImportReport> reports;
    auto const model = ImportAll(settings, reports);
    WriteOutputFile(settings.output, AsView(model), settings.inputs);
    if (!settings.report.empty()) std::fputs(Format(settings.report, reports).c_str(), stdout);
    auto const hasWarnings = WarnOf(reports);
    return hasWarnings && settings.isStrict ? kFindings : kSuccess;
}

/// Runs the import in a process of its own: whatever a broken file does to the libraries behind it, the user gets one
/// line and no output.
int RunImport(Settings const& settings) {
    auto const names = settings.inputs.size() == 1 ? settings.inputs.front() : std::string("one of the files");
    CheckOutputFile(settings.output, settings.inputs);
    auto const child = ForkEndedOnInterrupt();
    if (child < 0) return ImportHere(settings);
    if (child == 0) {
        int code = kFindings;
        try {
            code = ImportHere(settings);
        } catch (std::bad_alloc const&) {
            std::fprintf(stderr, "quorlan: %s: not enough memory\n", names.c_str());
        } catch (std::exception const& error) {
            std::fprintf(stderr, "quorlan: %s\n", error.what());
        }
        if (std::fflush(stdout) != 0) {
            std::fprintf(stderr, "quorlan: stdout: %s\n", std::strerror(errno));
            code = kFindings;
        }
        _exit(code);
    }
    auto const code = WaitForChild(child);
    if (code >= 0) return code;
    throw Failure(names + ": the library that reads it broke down");
}

void DeclareIfcOptions(CLI::App& app, Settings& settings) {
    app.add_flag("--openings", settings.options.takesOpenings,
                 "Import openings as entities too, on the layer IfcOpeningElement");
    app.add_option("--with", settings.with, "Import curves too, as line graphics: axes, annotations, footprints")
        ->delimiter(',')
        ->check(CLI::IsMember(ListNames(kCurveNames)))
        ->allow_extra_args(false)
        ->type_name("axis|annotation|footprint,...");
    app.add_option("--deflection", settings.options.deflection,
                   "How far the chords of a circle may lie off it, in metres")
        ->check(CLI::PositiveNumber)
        ->capture_default_str()
        ->type_name("METRES");
}

void DeclareMeshOptions(CLI::App& app, Settings& settings) {
    app.add_option("--guid-seed", settings.options.guidSeed,
                   "Of meshes: make GUIDs of this and the names, the same in every run")
        ->type_name("TEXT");
    app.add_option("--unit", settings.unit, "Of meshes in formats that know no unit: theirs")
        ->check(CLI::IsMember(ListNames(kUnits)))
        ->default_str("m")
        ->type_name("m|dm|cm|mm|ft|in");
}

}  // namespace

Run DeclareImport(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("input", settings->inputs,
                   "The files to read: buildings (.ifc: IFC2x3, IFC4) and meshes (.obj, .ply, .stl, .gltf, .glb)")
        ->required()
        ->type_name("IN...");
    app.add_option("-o,--output", settings->output, "The model to write (.qln)")->required()->type_name("OUT");
    DeclareIfcOptions(app, *settings);
    DeclareMeshOptions(app, *settings);
    app.add_flag("--keep-triangles", settings->keepsTriangles,
                 "Do not join neighbouring triangles of one plane to polygons");
    app.add_flag("--strict", settings->isStrict, "Exit with 1 where there are warnings; the model is written");
    app.add_option("--report", settings->report, "Print what was read and what was not")
        ->check(CLI::IsMember({"text", "json", "md"}))
        ->type_name("text|json|md");
    return [settings] { return RunImport(*settings); };
}

}  // namespace QuorlanProgram
