#include <Quorlan/ModelStorage.h>
#include <gmock/gmock.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <variant>

#include "SmallIfc.h"
#include "support/FolderTest.h"

/// Runs `quorlan import`: exit codes, messages, and what stands on the disk afterwards.
namespace Quorlan::Testing {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

std::string ReadAll(fs::path const& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class ImportCommand : public FolderTest {
protected:
    /// Runs the program and keeps what it prints. RETURNS its exit code.
    int Run(std::string const& arguments) {
        auto const command = std::string(QUORLAN_PROGRAM) + " import " + arguments + " >" + (folder_ / "out").string() +
                             " 2>" + (folder_ / "err").string();
        auto const status = std::system(command.c_str());
        out_ = ReadAll(folder_ / "out");
        error_ = ReadAll(folder_ / "err");
        fs::remove(folder_ / "out");
        fs::remove(folder_ / "err");
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    int Import(fs::path const& input, std::string const& more = "") {
        return Run("'" + input.string() + "' -o '" + (folder_ / "model.qln").string() + "' " + more);
    }

    /// The input was refused: exit code 1, one line that names it, and no file beside it.
    void ExpectRefused(fs::path const& input, std::string const& reason) {
        EXPECT_EQ(Import(input), 1);
        EXPECT_THAT(error_, HasSubstr(input.string()));
        EXPECT_THAT(error_, HasSubstr(reason));
        EXPECT_THAT(error_, StartsWith("quorlan: "));
        EXPECT_EQ(std::count(error_.begin(), error_.end(), '\n'), 1) << error_;
        EXPECT_THAT(out_, IsEmpty());
        for (auto const& entry : fs::directory_iterator(folder_)) EXPECT_EQ(entry.path(), input);
    }

    static std::string MakeWall() {
        SmallIfc ifc;
        ifc.AddWall(7, ifc.AddShape(ifc.AddBox(4000, 200, 2500)), "$");
        return ifc.GetText();
    }

    std::string out_;
    std::string error_;
};

TEST_F(ImportCommand, TheModelTellsHowManyShapesWereReadAndKept) {
    SmallIfc ifc;
    ifc.AddWall(7, ifc.AddShape(ifc.AddBox(4000, 200, 2500)), "$");
    ifc.AddWall(8, ifc.AddShape(ifc.AddBox(4000, 200, 2500)), "$");
    ASSERT_EQ(Import(Write("in.ifc", ifc.GetText())), 0) << error_;
    auto const text = ReadAll(folder_ / "model.qln");
    auto const storage = ModelStorage::FromBuffer(std::vector<char>(text.begin(), text.end()));
    auto const& properties = storage.GetModelReader().GetProperties();
    std::map<std::string, decltype(PropertyRecord::value)> record;
    PropertyRecord property;
    for (std::uint32_t i = 0; i < properties.GetPropertyCount(EntityIndex_t{0}); ++i) {
        properties.GetProperty(property, EntityIndex_t{0}, i);
        if (property.set == "Quorlan.Import") record[property.name] = property.value;
    }
    EXPECT_EQ(std::get<std::int64_t>(record.at("ShapesRead")), 2);
    EXPECT_EQ(std::get<std::int64_t>(record.at("ShapesKept")), 1);
    EXPECT_LT(std::get<double>(record.at("LargestDeviation")), 1e-5);
}

TEST_F(ImportCommand, WritesAModelAndNothingElse) {
    EXPECT_EQ(Import(Write("wall.ifc", MakeWall())), 0);
    EXPECT_THAT(out_, IsEmpty());
    EXPECT_THAT(error_, IsEmpty());
    auto const bytes = ReadAll(folder_ / "model.qln");
    EXPECT_FALSE(ModelStorage::FromBuffer({bytes.begin(), bytes.end()}).HasError());
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 2);
}

TEST_F(ImportCommand, ReportsAsTextAndAsJson) {
    auto const input = Write("wall.ifc", MakeWall());
    EXPECT_EQ(Import(input, "--report text"), 0);
    EXPECT_THAT(out_, HasSubstr("products: 1, imported 1\n"));
    EXPECT_EQ(Import(input, "--report json"), 0);
    EXPECT_EQ(nlohmann::json::parse(out_)["entities"], 1);
    EXPECT_EQ(Import(input, "--report md"), 0);
    EXPECT_THAT(out_, HasSubstr("| products | 1, imported 1 |\n"));
    EXPECT_EQ(Import(input, "--report xml"), 2);
}

TEST_F(ImportCommand, TakesCurvesAndADeflectionAndRefusesWhatIsNone) {
    auto const input = Write("wall.ifc", MakeWall());
    EXPECT_EQ(Import(input, "--with axis,annotation --deflection 0.01"), 0);
    EXPECT_EQ(Import(input, "--with axis --with footprint --keep-triangles --openings"), 0);
    EXPECT_EQ(Import(input, "--with lines"), 2);
    EXPECT_EQ(Import(input, "--deflection 0"), 2);
    EXPECT_EQ(Import(input, "--unit furlong"), 2);
}

TEST_F(ImportCommand, ReadsMeshesBesideBuildings) {
    auto const wall = Write("wall.ifc", MakeWall());
    auto const mesh = Write("sheet.obj", "o sheet\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    auto const code = Run("'" + wall.string() + "' '" + mesh.string() + "' --guid-seed site --report json -o '" +
                          (folder_ / "site.qln").string() + "'");
    if (error_.find("built without") != std::string::npos) GTEST_SKIP() << error_;
    EXPECT_EQ(code, 0);
    EXPECT_EQ(nlohmann::json::parse(out_)["entities"], 2);
}

TEST_F(ImportCommand, RefusesAnEmptyFile) { ExpectRefused(Write("empty.ifc", ""), "empty"); }

TEST_F(ImportCommand, RefusesWhatIsNoIfc) { ExpectRefused(Write("text.ifc", "Dear reader"), "no IFC file"); }

TEST_F(ImportCommand, ReadsAFileThatIsCutOffAsFarAsItGoesWithAWarning) {
    auto const text = MakeWall();
    auto const input = Write("cut.ifc", text.substr(0, text.size() - 40));
    EXPECT_EQ(Import(input), 0);
    EXPECT_EQ(error_, "quorlan: " + input.string() + ": 1 warning (--report names them)\n");
    EXPECT_TRUE(fs::exists(folder_ / "model.qln"));
}

TEST_F(ImportCommand, StrictMakesWarningsExitWithOneAndWritesTheModel) {
    auto const text = MakeWall();
    EXPECT_EQ(Import(Write("wall.ifc", text), "--strict"), 0);
    EXPECT_EQ(Import(Write("cut.ifc", text.substr(0, text.size() - 40)), "--strict"), 1);
    EXPECT_THAT(error_, HasSubstr("1 warning"));
    EXPECT_TRUE(fs::exists(folder_ / "model.qln"));
}

TEST_F(ImportCommand, RefusesAFileThatIsCutOffBeforeItsProject) {
    auto const text = MakeWall();
    ExpectRefused(Write("cut.ifc", text.substr(0, text.find("IFCPROJECT("))), "cut off");
}

TEST_F(ImportCommand, SeveralFilesBecomeOneModelWithSharedShapes) {
    auto const a = Write("a.ifc", MakeWall());
    auto const b = Write("b.ifc", MakeWall());
    EXPECT_EQ(
        Run("'" + a.string() + "' '" + b.string() + "' -o '" + (folder_ / "site.qln").string() + "' --report json"), 0);
    auto const report = nlohmann::json::parse(out_);
    EXPECT_EQ(report["entities"], 2);
    EXPECT_EQ(report["instances"], 2);
    EXPECT_EQ(report["definitions"], 1);
    EXPECT_EQ(report["shapesOfEarlierFiles"], 1);
    EXPECT_EQ(report["files"].size(), 2u);
    EXPECT_EQ(report["files"][1]["duplicateGuids"], nlohmann::json::array({SmallIfc::Guid(7)}));
    EXPECT_EQ(report["files"][0]["duplicateGuids"].size(), 0u);
    EXPECT_EQ(error_, "quorlan: " + b.string() + ": 1 warning (--report names them)\n");
}

TEST_F(ImportCommand, OneOfSeveralFilesThatIsRefusedLeavesNoOutput) {
    auto const a = Write("a.ifc", MakeWall());
    auto const b = Write("b.ifc", "Dear reader");
    EXPECT_EQ(Run("'" + a.string() + "' '" + b.string() + "' -o '" + (folder_ / "site.qln").string() + "'"), 1);
    EXPECT_THAT(error_, HasSubstr("b.ifc: this is no IFC file"));
    EXPECT_FALSE(fs::exists(folder_ / "site.qln"));
}

TEST_F(ImportCommand, ShowsStageAndCountOnATerminal) {
    auto const input = Write("wall.ifc", MakeWall());
    auto const call =
        std::string(QUORLAN_PROGRAM) + " import " + input.string() + " -o " + (folder_ / "model.qln").string();
    auto const command = "script -qec '" + call + "' /dev/null >" + (folder_ / "seen").string();
    if (std::system("command -v script >/dev/null") != 0) GTEST_SKIP() << "no script(1)";
    ASSERT_EQ(std::system(command.c_str()), 0);
    auto const seen = ReadAll(folder_ / "seen");
    EXPECT_THAT(seen, HasSubstr("shapes 0/1"));
    EXPECT_THAT(seen, HasSubstr("reading"));
}

TEST_F(ImportCommand, RefusesAFileWithoutAProject) {
    auto text = MakeWall();
    text.replace(text.find("IFCPROJECT("), 11, "IFCPROJEKT(");
    ExpectRefused(Write("project.ifc", text), "no IFC project");
}

TEST_F(ImportCommand, RefusesADirectory) {
    fs::create_directory(folder_ / "folder.ifc");
    ExpectRefused(folder_ / "folder.ifc", "directory");
}

TEST_F(ImportCommand, RefusesAMissingFile) { ExpectRefused(folder_ / "missing.ifc", "cannot be read"); }

TEST_F(ImportCommand, NeverOverwritesItsInput) {
    auto const input = Write("wall.ifc", MakeWall());
    EXPECT_EQ(Run("'" + input.string() + "' -o '" + input.string() + "'"), 1);
    EXPECT_EQ(ReadAll(input), MakeWall());
}

TEST_F(ImportCommand, KeepsAnEarlierOutputWhenItFails) {
    Write("model.qln", "earlier");
    EXPECT_EQ(Import(Write("text.ifc", "Dear reader")), 1);
    EXPECT_EQ(ReadAll(folder_ / "model.qln"), "earlier");
}

TEST_F(ImportCommand, NeedsAnOutput) { EXPECT_EQ(Run("'" + Write("wall.ifc", MakeWall()).string() + "'"), 2); }

}  // namespace
}  // namespace Quorlan::Testing
