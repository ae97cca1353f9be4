// The tool's help, no line of it wider than a terminal of a hundred columns.
#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <string>

namespace simhost::tool {

inline constexpr std::size_t kHelpColumns = 100;

/// The words of `text` in lines of at most `columns` characters, without a newline behind the last; a longer
/// word has a line of its own, and newlines in the text stay.
std::string wrapped(const std::string& text, std::size_t columns);

/// The library's layout, with descriptions wrapped beside their column.
class HelpFormatter : public CLI::Formatter {
 public:
    std::string make_option_desc(const CLI::Option* option) const override;
    std::string make_subcommand(const CLI::App* command) const override;
};

}  // namespace simhost::tool
