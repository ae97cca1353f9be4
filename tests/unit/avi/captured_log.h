// Takes the place of the diagnostic log in this test program: the lines are kept for the test to look at.
#pragma once

#include <string>
#include <vector>

namespace orvantis::test {

/// Everything logged since the last call, one element a line.
std::vector<std::string> takeLogLines();

}  // namespace orvantis::test
