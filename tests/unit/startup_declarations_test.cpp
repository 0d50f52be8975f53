// Declarations of the extension module's global methods: the extended object put
// first, the assigned value put last, and both cut to the host's buffers exactly
// where a plain concatenation would overflow them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "plugin/registration_forms.h"

namespace {

// The rewritten declaration as a string; "<null>" for none.
template <typename Rewrite>
std::string Rewritten(Rewrite rewrite, const char* declaration, const char* className = "Picture") {
    std::unique_ptr<char, decltype(&std::free)> result(rewrite(declaration, className), &std::free);
    return result ? std::string(result.get()) : std::string("<null>");
}

// A name longer than the host's buffer, then "(": the cut keeps neither blank nor ")".
const char* NameBeyondTheBuffer() {
    static const std::string declaration = std::string(1200, 'x') + "(";
    return declaration.c_str();
}

struct RewriteCase {
    const char* declaration;
    const char* expected;
};

class AddClassParameterTest : public ::testing::TestWithParam<RewriteCase> {};

TEST_P(AddClassParameterTest, PutsTheExtendedObjectFirst) {
    EXPECT_EQ(Rewritten(AddClassParameter, GetParam().declaration), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, AddClassParameterTest,
    ::testing::Values(
        RewriteCase{"Refresh", "Refresh(extends ref as Picture)"},
        RewriteCase{"Odd (x as integer)", "Odd(extends ref as Picture) (x as integer)"},
        RewriteCase{"Empty() as integer", "Empty(extends ref as Picture, ) as integer"},
        RewriteCase{nullptr, "<null>"}));

class AssignmentDeclarationTest : public ::testing::TestWithParam<RewriteCase> {};

TEST_P(AssignmentDeclarationTest, PutsTheAssignedValueLast) {
    EXPECT_EQ(Rewritten(AssignmentDeclaration, GetParam().declaration), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, AssignmentDeclarationTest,
    ::testing::Values(
        RewriteCase{"Item(index as integer) as integer",
                    "Item(extends ref as Picture, index as integer, assigns value as integer)"},
        RewriteCase{"Level as integer", "Level(extends ref as Picture, assigns value as integer)"},
        // No ")" survives the first rewrite: the value goes in at the first blank.
        RewriteCase{"Open(x as integer", "Open(extends(assigns value ref as Picture, x as integer)"},
        // Neither a ")" nor a blank survives the cut: no assignment form at all.
        RewriteCase{NameBeyondTheBuffer(), "<null>"},
        RewriteCase{nullptr, "<null>"}));

// Long declarations against the plain concatenation, at the lengths around the
// limit of each shape.
struct CutCase {
    const char* name;
    std::string head;  // text before the split
    char split;        // '(', ' ' or 0 for none
    size_t limit;
};

class CutTest : public ::testing::TestWithParam<CutCase> {};

TEST_P(CutTest, ResultsFitTheHostBuffer) {
    const CutCase& c = GetParam();
    for (size_t tail = 967; tail <= 973; ++tail) {
        const std::string rest(tail, 'a');
        std::string declaration = c.head, uncut;
        if (c.split == '(') {
            declaration += "(" + rest;
            uncut = c.head + "(extends ref as Picture, " + rest;
        } else if (c.split == ' ') {
            declaration += " " + rest;
            uncut = c.head + "(extends ref as Picture) " + rest;
        } else {
            declaration += rest;
            uncut = declaration + "(extends ref as Picture)";
        }
        const std::string result = Rewritten(AddClassParameter, declaration.c_str());
        ASSERT_EQ(result, uncut.substr(0, c.limit)) << "tail " << tail;
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, CutTest,
                         ::testing::Values(CutCase{"Parenthesis", "Name", '(', 998},
                                           CutCase{"Blank", "Name", ' ', 998},
                                           CutCase{"HeadLongerThanBuffer", std::string(1500, 'N'), '(', 998},
                                           CutCase{"Neither", "Name", 0, 999}),
                         [](const auto& info) { return std::string(info.param.name); });

// The first rewrite is cut from a tail of 967 on, the second from 952 on.
TEST(AssignmentDeclarationCut, TheAppendedTextStopsAt998Characters) {
    for (size_t tail : {950, 951, 952, 953, 965, 966, 967, 968}) {
        const std::string type(tail, 't');
        const std::string withClass = ("Item(extends ref as Picture) as " + type).substr(0, 998);
        const std::string uncut = "Item(extends ref as Picture, assigns value" + withClass.substr(28) + ")";
        const std::string result = Rewritten(AssignmentDeclaration, ("Item as " + type).c_str());
        ASSERT_EQ(result, uncut.substr(0, 998)) << "tail " << tail;
    }
}

}  // namespace
