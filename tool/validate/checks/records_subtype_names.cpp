#include <iterator>
#include <string>

#include "host/records.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/session_watch.h"

namespace simhost::tool::validate {
namespace {

void recordsSubtypeNames(Trial& trial) {
    Stage stage(trial);
    bool any = false;
    for (const host::imIndFormatRec& format : announcedFormats(stage.importer())) {
        const SubTypeNames names =
            stage.importer().getSubTypeNames(static_cast<std::uint32_t>(byValue(format.filetype)));
        any |= names.delivered;
        for (std::size_t row = 0; row < names.names.size(); ++row) {
            const std::u16string& name = names.names[row].name;
            if (name.empty() || name.size() >= std::size(host::imSubTypeDescriptionRec{}.subTypeName)) {
                trial.fail({.call = "imGetSubTypeNames, row " + std::to_string(row),
                            .field = "imSubTypeDescriptionRec.subTypeName",
                            .seen = name.empty() ? "an empty name" : "a name without an end"});
            }
        }
    }
    if (!any) {
        Trial::skip("the plug-in names no sub-types");
    }
}

const Registered kRecordsSubtypeNames(
    {"records.subtype-names", 2,
     "The names of imGetSubTypeNames are ended within their fields and not empty.",
     "The host shows them in its lists.", recordsSubtypeNames});

}  // namespace
}  // namespace simhost::tool::validate
