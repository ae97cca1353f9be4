// The list of what is wrong with a file: told by place, bounded, lines whole.
#include "avi/problems.h"

#include <gtest/gtest.h>

#include <string>

#include "avi/error_text.h"

namespace orvantis {
namespace {

using Part = ProblemPlace::Part;

TEST(ProblemsTest, AreToldByPlaceAndThenAsTheyCame) {
    Problems problems;
    problems.add({Part::kStreamList, 1}, "list 1\n");
    problems.add({Part::kStreamList, 10}, "list 10\n");
    problems.add({Part::kStreamList, 2}, "first of list 2\n");
    problems.add({Part::kEnd}, "end\n");
    problems.add({Part::kStreamList, 2}, "second of list 2\n");
    problems.add({Part::kHeaders}, "headers\n");
    problems.add({Part::kStructure}, "structure\n");
    problems.putInOrder();
    const std::string expected =
        "structure\nheaders\nlist 1\nfirst of list 2\nsecond of list 2\nlist 10\nend\n";
    EXPECT_EQ(problems.text(), expected);
    problems.putInOrder();
    EXPECT_EQ(problems.text(), expected) << "once is enough";
}

TEST(ProblemsTest, ComeToTheirPlaceAlsoBehindAnEarlierOrdering) {
    Problems problems;
    problems.add({Part::kStreamList, 3}, "list 3\n");
    problems.add({Part::kStreamList, 0}, "list 0\n");
    problems.putInOrder();
    problems.add({Part::kStreamList, 0}, "index of list 0\n");
    problems.add({Part::kStructure}, "structure\n");
    problems.putInOrder();
    EXPECT_EQ(problems.text(), "structure\nlist 0\nindex of list 0\nlist 3\n");
}

TEST(ProblemsTest, StopAtTheBoundWithWholeLines) {
    Problems problems;
    EXPECT_TRUE(problems.empty());
    problems.add({Part::kEnd}, std::string(kMaxErrorText - 5, 'x'));
    problems.add({Part::kStructure}, "123456");
    EXPECT_EQ(problems.text().size(), kMaxErrorText - 5);
    EXPECT_TRUE(problems.hasRoom());
    problems.add({Part::kHeaders}, "12345");
    EXPECT_FALSE(problems.hasRoom());
    problems.putInOrder();
    EXPECT_EQ(problems.text().size(), kMaxErrorText);
    EXPECT_EQ(problems.text().substr(0, 6), "12345x");
    problems.clear();
    EXPECT_TRUE(problems.empty());
    EXPECT_TRUE(problems.hasRoom());
}

}  // namespace
}  // namespace orvantis
