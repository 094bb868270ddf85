#include "Commands.h"
#include "Options.h"
#include "OutputFile.h"
#include "sample/SampleBuilding.h"

#include <memory>

namespace QuorlanProgram {
namespace {

constexpr std::uint32_t kMaxStoreys = 1000;

struct Settings {
    std::string output;
    std::uint32_t storeys = 5;
    std::uint64_t seed = 1;
    std::array<double, 3> origin{};
};

int RunSample(Settings const& settings) {
    CheckOutputFile(settings.output, {});
    QuorlanSample::SampleOptions options;
    options.storeys = settings.storeys;
    options.seed = settings.seed;
    options.origin = {settings.origin[0], settings.origin[1], settings.origin[2]};
    WriteOutputFile(settings.output, AsView(QuorlanSample::BuildSampleBuilding(options)));
    return kSuccess;
}

}  // namespace

Run DeclareSample(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("-o,--output", settings->output, "The model to write (.qln)")->required()->type_name("OUT");
    app.add_option("--storeys", settings->storeys, "Storeys above the ground, 1 to 1000; 200 make 100,000 instances")
        ->check(CLI::Range(std::uint32_t{1}, kMaxStoreys).description(""))
        ->type_name("N")
        ->capture_default_str();
    app.add_option("--seed", settings->seed, "Another seed, other rooms, furniture and trees")
        ->type_name("S")
        ->capture_default_str();
    AddNumbers(app, "--origin", settings->origin, "X,Y,Z", "Where the building's south-west corner stands [m]")
        ->default_str("0,0,0");
    return [settings] { return RunSample(*settings); };
}

}  // namespace QuorlanProgram
