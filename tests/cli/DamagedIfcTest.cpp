#include "cli/Program.h"
#include "cli/import/IfcSeeds.h"
#include "support/TestData.h"

#include <IfcImport.h>
#include <Quorlan/ModelValidator.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>

/// IFC files that end too early or hold anything: the program says why in one line, or imports what is there.
namespace Quorlan::Testing {
namespace {

namespace fs = std::filesystem;

#if defined(__SANITIZE_ADDRESS__)
constexpr std::size_t kSparing = 8;  // a run takes much longer then
#else
constexpr std::size_t kSparing = 1;
#endif

constexpr char kSmallFile[] = "IfcOpenHouse_IFC4.ifc";
constexpr char kEndOfFile[] = "ENDSEC;\nEND-ISO-10303-21;\n";

class DamagedIfc : public ProgramTest {
protected:
    /// RETURNS whether the program made a model of the text, which then is sound.
    bool Import(std::string const& text) const {
        WriteBytes(PathOf("damaged.ifc"), {text.begin(), text.end()});
        auto const run = RunQuorlan({"import", PathOf("damaged.ifc"), "-o", PathOf("model.qln")});
        if (run.exitCode != 0) {
            ExpectFailure(run, {"damaged.ifc"});
            EXPECT_EQ(GetFiles(), std::vector<std::string>{"damaged.ifc"});
            return false;
        }
        // Nothing, or one line that counts the warnings.
        EXPECT_LE(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
        EXPECT_TRUE(run.err.empty() || run.err.find(" warning") != std::string::npos) << run.err;
        EXPECT_TRUE(ModelValidator().Build(ReadBytes(PathOf("model.qln"))));
        fs::remove(PathOf("model.qln"));
        return true;
    }

    /// Cuts a text at every `step` bytes and puts an end behind it, so that what is there is read.
    void CutAndEnd(std::string const& text, std::size_t step) const {
        for (std::size_t size = 0; size < text.size(); size += step) {
            SCOPED_TRACE("cut at " + std::to_string(size));
            Import(text.substr(0, text.rfind('\n', size) + 1) + kEndOfFile);
        }
    }
};

TEST_F(DamagedIfc, AFileThatIsCutOffIsReadAsFarAsItGoesAndRefusedBeforeItsProject) {
    auto const text = MakeIfcSeeds().front().second;
    EXPECT_TRUE(Import(text));
    EXPECT_TRUE(Import(text.substr(0, text.size() - 3)));
    for (auto const size : {std::size_t{0}, std::size_t{14}, text.find("IFCPROJECT(")}) {
        EXPECT_FALSE(Import(text.substr(0, size))) << size;
    }
}

TEST_F(DamagedIfc, WhatIsLeftOfAFileIsRead) {
    for (auto const& [name, text] : MakeIfcSeeds()) {
        SCOPED_TRACE(name);
        CutAndEnd(text, 400 * kSparing);
    }
}

/// 24 files, each with up to four bytes changed.
TEST_F(DamagedIfc, ChangedBytesDoNoHarm) {
    constexpr unsigned kSeed = 17;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    auto const seeds = MakeIfcSeeds();
    std::size_t imported = 0;
    for (std::size_t round = 0; round < 24 / kSparing; ++round) {
        auto text = seeds[round % seeds.size()].second;
        for (auto changes = 1 + random() % 4; changes > 0; --changes) {
            text[random() % text.size()] = static_cast<char>(random());
        }
        imported += Import(text);
    }
    EXPECT_GT(imported, 0u);
}

TEST_F(DamagedIfc, HugeNumbersDoNoHarm) {
    for (auto const& [name, text] : MakeIfcSeeds()) {
        SCOPED_TRACE(name);
        for (std::string const huge : {"4294967295", "99999999999999999999"}) {
            auto changed = text;
            changed.replace(changed.find("#3"), 2, "#" + huge);
            Import(changed);
        }
        auto changed = text;
        changed.replace(changed.find("(0.,0.,"), 7, "(1.E308,-1.E308,");
        Import(changed);
    }
}

// Found by the fuzzer: the IFC library asks a side that is not there.
TEST_F(DamagedIfc, AHalfSpaceWithoutASideEndsNeitherTheProgramNorTheLine) {
    auto text = MakeIfcSeeds().back().second;
    auto const side = text.find(",.F.)");
    ASSERT_NE(side, std::string::npos);
    Import(text.replace(side, 5, ",$)"));
}

TEST_F(DamagedIfc, ARealFileCutAtEveryKilobyteIsReadWithAWarningOrRefused) {
    auto const folder = TestSupport::FindTestData();
    if (!folder || !fs::exists(*folder / kSmallFile)) GTEST_SKIP() << TestSupport::kNoTestData;
    auto const text = TestSupport::ReadText(*folder / kSmallFile);
    auto const whole = std::string_view(text).substr(0, text.rfind("END-ISO-10303-21"));
    std::size_t imported = 0;
    for (std::size_t size = 0; size < whole.size(); size += 1024 * kSparing) {
        SCOPED_TRACE(size);
        auto const result = QuorlanProgram::Import::ImportIfc(whole.substr(0, size));
        EXPECT_EQ(result.error.find('\n'), std::string::npos);
        EXPECT_EQ(result.error.empty(), ModelValidator().Build(result.model));
        if (!result.error.empty()) continue;
        EXPECT_GE(result.report.CountWarnings(), 1u);
        ++imported;
    }
    EXPECT_GT(imported, 0u);
}

TEST_F(DamagedIfc, WhatIsLeftOfARealFileAtEveryKilobyteIsRead) {
    auto const folder = TestSupport::FindTestData();
    if (!folder || !fs::exists(*folder / kSmallFile)) GTEST_SKIP() << TestSupport::kNoTestData;
    CutAndEnd(TestSupport::ReadText(*folder / kSmallFile), 1024 * kSparing);
}

}  // namespace
}  // namespace Quorlan::Testing
