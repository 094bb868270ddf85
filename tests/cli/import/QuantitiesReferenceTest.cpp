#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "Reference.h"
#include "cli/Program.h"
#include "support/TestData.h"

/// Imports real models, takes their quantities, and holds these against the tables of an independent engine, entity by
/// entity. Volumes are compared where the body is closed: of an open one it depends on the point that it is measured
/// from. Where the engine's figure cannot be right, the file's own dimensions say what is.
namespace Quorlan::Testing {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kTolerance = 0.01;  ///< [-] of areas and volumes

double GetBox(double length, double width, double height) { return length * width * height; }

/// A rolled I-section with fillets: [m] but the length of the beam, everything of the profile in [mm].
double GetRolledBeam(double length, double width, double depth, double web, double flange, double fillet) {
    double const section = 2 * width * flange + (depth - 2 * flange) * web + (4 - kPi) * fillet * fillet;
    return section * 1e-6 * length;
}

struct Expectation {
    char const* file;
    char const* table;
    std::size_t closed;   ///< at least
    std::size_t areas;    ///< at least, of all
    std::size_t volumes;  ///< at least, of the closed ones that are not measured by dimensions
    /// Volumes [m3] by the file's own dimensions. The engine keeps more than the body had before it was cut, or takes
    /// fillets for straight lines.
    std::map<std::string, double> byDimensions = {};
};

void PrintTo(Expectation const& expectation, std::ostream* out) { *out << expectation.file; }

class QuantitiesReference : public ProgramTest, public testing::WithParamInterface<Expectation> {
protected:
    /// The rows of `quorlan quantities` by GUID.
    std::map<std::string, nlohmann::json> TakeQuantities(std::filesystem::path const& ifc) const {
        auto const model = PathOf("model.qln");
        auto const import = RunQuorlan({"import", ifc.string(), "-o", model});
        EXPECT_EQ(import.exitCode, 0) << import.err;
        auto const run = RunQuorlan({"quantities", model, "--format", "json"});
        EXPECT_EQ(run.exitCode, 0) << run.err;
        std::map<std::string, nlohmann::json> rows;
        for (auto& row : nlohmann::json::parse(run.out)) rows[row["guid"]] = row;
        return rows;
    }
};

bool Agrees(double actual, double expected) { return std::abs(actual - expected) <= kTolerance * std::abs(expected); }

TEST_P(QuantitiesReference, OfRealModelsAgreeEntityByEntity) {
    auto const data = TestSupport::FindTestData();
    if (!data) GTEST_SKIP() << TestSupport::kNoTestData;
    auto const& expected = GetParam();
    if (!std::filesystem::exists(*data / expected.file)) GTEST_SKIP() << (*data / expected.file) << " is not there";

    auto const rows = TakeQuantities(*data / expected.file);
    std::size_t closed = 0;
    std::size_t areas = 0;
    std::size_t volumes = 0;
    std::size_t knownFound = 0;
    for (auto const& [guid, product] : ReadReference(*data / "reference" / expected.table)) {
        auto const found = rows.find(guid);
        if (found == rows.end() || product.type == "IfcOpeningElement") continue;
        auto const& row = found->second;
        areas += Agrees(row["area"], product.area);
        if (row["trust"] != "closed") continue;
        ++closed;
        EXPECT_GT(row["volume"], 0) << guid;
        auto const known = expected.byDimensions.find(guid);
        if (known == expected.byDimensions.end()) {
            volumes += Agrees(row["volume"], product.volume);
        } else {
            EXPECT_NEAR(row["volume"], known->second, 0.005 * known->second) << guid;
            ++knownFound;
        }
    }
    std::printf("%s: %zu closed, %zu areas, %zu volumes\n", expected.file, closed, areas, volumes);
    EXPECT_GE(closed, expected.closed);
    EXPECT_GE(areas, expected.areas);
    EXPECT_GE(volumes, expected.volumes);
    EXPECT_EQ(knownFound, expected.byDimensions.size());
}

INSTANTIATE_TEST_SUITE_P(
    Files, QuantitiesReference,
    testing::Values(
        Expectation{"AC20-FZK-Haus.ifc", "AC20-FZK-Haus.csv", 90, 90, 90},
        Expectation{"Duplex_A_20110907.ifc", "Duplex_A_20110907.csv", 169, 236, 169},
        Expectation{"Duplex_Electrical_20121207.ifc", "Duplex_Electrical_20121207.csv", 88, 104, 88},
        Expectation{"IfcOpenHouse_IFC4.ifc", "IfcOpenHouse_IFC4.csv", 34, 35, 34},
        Expectation{"SampleHouse_revA.ifc",
                    "SampleHouse_revA.csv",
                    62,
                    60,
                    60,
                    {{"3cUkl32yn9qRSPvBJVyWXt", GetBox(5.51, 0.095, 2.335) - 2 * GetBox(0.81, 0.095, 2.11)}}},
        Expectation{"SampleHouse_revB.ifc",
                    "SampleHouse_revB.csv",
                    62,
                    60,
                    60,
                    {{"3cUkl32yn9qRSPvBJVyWXt", GetBox(5.51, 0.095, 2.335) - 2 * GetBox(0.81, 0.095, 2.11)}}},
        Expectation{"Schependomlaan_MULTICOM-Prefab.ifc", "Schependomlaan_MULTICOM-Prefab.csv", 292, 292, 292},
        Expectation{"Schependomlaan_MULTICOM-balkons.rev2.ifc", "Schependomlaan_MULTICOM-balkons.rev2.csv", 95, 95, 95},
        Expectation{"Schependomlaan_MULTICOM-banden.rev2.ifc", "Schependomlaan_MULTICOM-banden.rev2.csv", 118, 118,
                    117},
        Expectation{"Schependomlaan_MULTICOM-trappen+bordessen.rev2.ifc",
                    "Schependomlaan_MULTICOM-trappen+bordessen.rev2.csv", 150, 150, 150},
        Expectation{"Schependomlaan_V_L_Constructief.ifc",
                    "Schependomlaan_V_L_Constructief.csv",
                    521,
                    525,
                    495,
                    {{"0UnLGBJTPFy93jyab1NVW8", GetBox(0.685, 0.214, 9.37) - 2 * GetBox(0.685, 0.214, 0.38)},
                     {"2WvDsFDgT4$OpOodtrLx0N", GetBox(2.7, 0.214, 0.46)},
                     {"0eXPrOxTf4UhQHrOKpb8U6", GetBox(2.436, 0.3, 3.37)},
                     {"3csGQdbV9AEf4vjjNnS$cU", GetRolledBeam(1.5, 160, 152, 6, 9, 15)},
                     {"0$aO8zflfCXQUg1UGGvDaQ", GetRolledBeam(11.35000000445, 220, 220, 9.5, 16, 18)}}},
        Expectation{"beams_ownerhistory_444.ifc", "beams_ownerhistory_444.csv", 1, 1, 1},
        Expectation{"revisions_M1/M1.ifc", "M1.csv", 18, 18, 18},
        Expectation{"revisions_simplehouse/12_4073fc7.ifc", "12_4073fc7.csv", 34, 24, 21}));

}  // namespace
}  // namespace Quorlan::Testing
