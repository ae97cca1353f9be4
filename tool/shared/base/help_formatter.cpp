#include "tool/shared/base/help_formatter.h"

#include <algorithm>
#include <sstream>

namespace simhost::tool {

std::string wrapped(const std::string& text, std::size_t columns) {
    std::string out;
    std::size_t column = 0;
    std::size_t at = 0;
    while (at < text.size()) {
        if (text[at] == '\n') {
            out += '\n';
            column = 0;
            ++at;
            continue;
        }
        if (text[at] == ' ') {
            ++at;
            continue;
        }
        const std::size_t end = (std::min)(text.find_first_of(" \n", at), text.size());
        const std::size_t length = end - at;
        if (column != 0 && column + 1 + length > columns) {
            out += '\n';
            column = 0;
        }
        if (column != 0) {
            out += ' ';
            ++column;
        }
        out.append(text, at, length);
        column += length;
        at = end;
    }
    return out;
}

std::string HelpFormatter::make_option_desc(const CLI::Option* option) const {
    return wrapped(Formatter::make_option_desc(option), kHelpColumns - get_column_width());
}

std::string HelpFormatter::make_subcommand(const CLI::App* command) const {
    std::ostringstream out;
    CLI::detail::format_help(out, command->get_name(),
                             wrapped(command->get_description(), kHelpColumns - get_column_width()),
                             get_column_width());
    return out.str();
}

}  // namespace simhost::tool
