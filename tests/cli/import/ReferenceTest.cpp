#include "Reference.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "ImportedModel.h"
#include "support/TestData.h"

/// Imports real models and holds them against the tables of an independent engine. What is expected to differ, and why,
/// stands in docs/import.md.
namespace Quorlan::Testing {
namespace {

struct Expectation {
    char const* file;
    char const* table;
    std::size_t products;   ///< of the table, openings left out
    std::size_t found;      ///< at least
    std::size_t goodBoxes;  ///< at least
    std::size_t goodAreas;  ///< at least
};

void PrintTo(Expectation const& expectation, std::ostream* out) { *out << expectation.file; }

class ImportReference : public testing::TestWithParam<Expectation> {};

TEST_P(ImportReference, AgreesWithAnIndependentEngine) {
    auto const data = TestSupport::FindTestData();
    if (!data) GTEST_SKIP() << TestSupport::kNoTestData;
    auto const& expected = GetParam();
    if (!std::filesystem::exists(*data / expected.file)) GTEST_SKIP() << (*data / expected.file) << " is not there";

    ImportedModel const model(TestSupport::ReadText(*data / expected.file));
    auto const comparison =
        Compare(ReadReference(*data / "reference" / expected.table), MeasureModel(model.GetReader()));
    std::printf("%s: %zu products, %zu found, %zu boxes, %zu areas, %.2f s\n", expected.file, comparison.reference,
                comparison.GetFound(), comparison.GetGoodBoxes(), comparison.GetGoodAreas(),
                model.GetReport().secondsRead + model.GetReport().secondsShape);
    EXPECT_EQ(comparison.reference, expected.products);
    EXPECT_GE(comparison.GetFound(), expected.found);
    EXPECT_GE(comparison.GetGoodBoxes(), expected.goodBoxes);
    EXPECT_GE(comparison.GetGoodAreas(), expected.goodAreas);
}

INSTANTIATE_TEST_SUITE_P(
    Files, ImportReference,
    testing::Values(
        Expectation{"AC20-FZK-Haus.ifc", "AC20-FZK-Haus.csv", 90, 90, 90, 90},
        Expectation{"Duplex_A_20110907.ifc", "Duplex_A_20110907.csv", 236, 236, 236, 236},
        Expectation{"Duplex_Electrical_20121207.ifc", "Duplex_Electrical_20121207.csv", 104, 104, 104, 104},
        Expectation{"IfcOpenHouse_IFC4.ifc", "IfcOpenHouse_IFC4.csv", 35, 35, 35, 35},
        Expectation{"SampleHouse_revA.ifc", "SampleHouse_revA.csv", 62, 62, 62, 61},
        Expectation{"SampleHouse_revB.ifc", "SampleHouse_revB.csv", 62, 62, 62, 61},
        Expectation{"Schependomlaan_MULTICOM-Prefab.ifc", "Schependomlaan_MULTICOM-Prefab.csv", 295, 295, 295, 292},
        Expectation{"Schependomlaan_MULTICOM-balkons.rev2.ifc", "Schependomlaan_MULTICOM-balkons.rev2.csv", 98, 98, 98,
                    95},
        Expectation{"Schependomlaan_MULTICOM-banden.rev2.ifc", "Schependomlaan_MULTICOM-banden.rev2.csv", 118, 118, 118,
                    118},
        Expectation{"Schependomlaan_MULTICOM-trappen+bordessen.rev2.ifc",
                    "Schependomlaan_MULTICOM-trappen+bordessen.rev2.csv", 150, 150, 150, 150},
        Expectation{"Schependomlaan_V_L_Constructief.ifc", "Schependomlaan_V_L_Constructief.csv", 530, 530, 530, 525},
        Expectation{"beams_ownerhistory_444.ifc", "beams_ownerhistory_444.csv", 1, 1, 1, 1},
        Expectation{"revisions_M1/M1.ifc", "M1.csv", 18, 18, 18, 18},
        Expectation{"revisions_simplehouse/12_4073fc7.ifc", "12_4073fc7.csv", 43, 35, 30, 24}));

}  // namespace
}  // namespace Quorlan::Testing
