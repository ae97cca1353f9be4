#include <cstring>
#include <string>
#include <string_view>

#include "tool/validate/base/check.h"
#include "tool/validate/base/session_watch.h"

namespace simhost::tool::validate {
namespace {

void recordsFormatStrings(Trial& trial) {
    Stage stage(trial);
    std::uint32_t index = 0;
    for (const host::imIndFormatRec& format : announcedFormats(stage.importer())) {
        const std::string call = "imGetIndFormat, index " + std::to_string(index++);
        const auto requireEnded = [&](const char* field, const char* text, std::size_t size) {
            if (std::memchr(text, 0, size) == nullptr) {
                trial.fail({.call = call, .field = field, .seen = "a text without an end"});
            } else if (text[0] == 0) {
                trial.fail({.call = call, .field = field, .seen = "an empty text"});
            }
        };
        requireEnded("imIndFormatRec.FormatName", format.FormatName, sizeof format.FormatName);
        requireEnded("imIndFormatRec.FormatShortName", format.FormatShortName, sizeof format.FormatShortName);
        requireEnded("imIndFormatRec.PlatformExtension", format.PlatformExtension,
                     sizeof format.PlatformExtension);
        const std::string_view extensions(format.PlatformExtension, sizeof format.PlatformExtension);
        if (extensions.find(std::string_view("\0\0", 2)) == std::string_view::npos) {
            trial.fail({.call = call,
                        .field = "imIndFormatRec.PlatformExtension",
                        .seen = "no empty entry ends the list"});
        }
    }
}

const Registered kRecordsFormatStrings(
    {"records.format-strings", 1,
     "The texts of imGetIndFormat are ended within their fields, and at least one extension is named.",
     "The host shows the names, and opens by the extensions; it reads up to the terminator.",
     recordsFormatStrings});

}  // namespace
}  // namespace simhost::tool::validate
