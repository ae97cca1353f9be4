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
    problems.add({Part::streamList, 1}, "list 1\n");
    problems.add({Part::streamList, 10}, "list 10\n");
    problems.add({Part::streamList, 2}, "first of list 2\n");
    problems.add({Part::end}, "end\n");
    problems.add({Part::streamList, 2}, "second of list 2\n");
    problems.add({Part::headers}, "headers\n");
    problems.add({Part::structure}, "structure\n");
    problems.putInOrder();
    const std::string expected =
        "structure\nheaders\nlist 1\nfirst of list 2\nsecond of list 2\nlist 10\nend\n";
    EXPECT_EQ(problems.text(), expected);
    problems.putInOrder();
    EXPECT_EQ(problems.text(), expected) << "once is enough";
}

TEST(ProblemsTest, ComeToTheirPlaceAlsoBehindAnEarlierOrdering) {
    Problems problems;
    problems.add({Part::streamList, 3}, "list 3\n");
    problems.add({Part::streamList, 0}, "list 0\n");
    problems.putInOrder();
    problems.add({Part::streamList, 0}, "index of list 0\n");
    problems.add({Part::structure}, "structure\n");
    problems.putInOrder();
    EXPECT_EQ(problems.text(), "structure\nlist 0\nindex of list 0\nlist 3\n");
}

TEST(ProblemsTest, StopAtTheBoundWithWholeLines) {
    Problems problems;
    EXPECT_TRUE(problems.empty());
    problems.add({Part::end}, std::string(kMaxErrorText - 5, 'x'));
    problems.add({Part::structure}, "123456");
    EXPECT_EQ(problems.text().size(), kMaxErrorText - 5);
    EXPECT_TRUE(problems.hasRoom());
    problems.add({Part::headers}, "12345");
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
