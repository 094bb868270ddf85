#include "step/StepText.h"

#include <gmock/gmock.h>

namespace QuorlanProgram::Import {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(StepText, AStatementHasItsIdItsClassAndItsArguments) {
    auto const statements = ReadStatements("DATA;\n#12 = IFCWALL ('a',$,(#1,#2)) ;\nENDSEC;");
    ASSERT_EQ(statements.size(), 1u);
    EXPECT_EQ(statements[0].id, 12u);
    EXPECT_EQ(statements[0].name, "IFCWALL");
    EXPECT_EQ(statements[0].arguments, "'a',$,(#1,#2)");
}

TEST(StepText, SemicolonsInStringsAndCommentsEndNothing) {
    std::string const text = "/* ; */ #1=IFCLABEL('it''s; here'); #2=IFCTEXT(/*;*/'x');";
    auto const statements = ReadStatements(text);
    ASSERT_EQ(statements.size(), 2u);
    EXPECT_EQ(statements[0].arguments, "'it''s; here'");
    EXPECT_EQ(text.substr(statements[1].begin, statements[1].end - statements[1].begin), "#2=IFCTEXT(/*;*/'x');");
}

TEST(StepText, AStatementWithoutAnEndIsNone) {
    EXPECT_THAT(ReadStatements("#1=IFCLABEL('open;"), IsEmpty());
    EXPECT_THAT(ReadStatements("#1=IFCLABEL('a')"), IsEmpty());
    EXPECT_THAT(ReadStatements("/* never closed #1=IFCLABEL('a');"), IsEmpty());
}

TEST(StepText, WhatIsNoSimpleInstanceIsLeftOut) {
    EXPECT_THAT(ReadStatements("FILE_NAME('a');#=X();#x=X();#1 X();#2=;#3=(A()B());#99999999999=X();"), IsEmpty());
}

TEST(StepText, ArgumentsAreSplitAtTheOutermostLevel) {
    EXPECT_THAT(SplitArguments("1, (2,(3,4)) ,'a,(b',$"), ElementsAre("1", "(2,(3,4))", "'a,(b'", "$"));
    EXPECT_THAT(SplitArguments("a,"), ElementsAre("a", ""));
    EXPECT_THAT(SplitArguments("  "), IsEmpty());
}

}  // namespace
}  // namespace QuorlanProgram::Import
