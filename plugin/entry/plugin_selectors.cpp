#include "entry/plugin_selectors.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <span>
#include <stdexcept>
#include <string_view>

#include "diag/format.h"
#include "diag/log.h"
#include "diag/text.h"
#include "entry/error_suite.h"
#include "host/four_char_codes.h"
#include "host/result_codes.h"
#include "suites/suite_ref.h"
#include "video/format_dump.h"
#include "video/format_tables.h"

namespace orvantis {

namespace {

constexpr std::int32_t kImporterPriority =
    200;  ///< above the host's own importers, so that we see every AVI first
constexpr std::string_view kFormatName = "Orvantis AVI";
constexpr std::string_view kExtension = "avi";

/// Copies `text` and its terminator into a host field, cut to fit. What lies behind stays as the host gave
/// it.
template <std::size_t size>
void copyText(char (&field)[size], std::string_view text) {
    const std::size_t length = std::min(text.size(), size - 1);
    std::memcpy(field, text.data(), length);
    field[length] = '\0';
}

}  // namespace

host::ImporterResult init(const host::imStdParms* stdParms, host::imImportInfoRec& record) {
    const host::SPBasicSuite* const basicSuite = basicSuiteOf(stdParms);
    holdErrorSuite(basicSuite);
    buildFormatTables(basicSuite);
    dumpFormatTables(basicSuite);
    record.priority = kImporterPriority;
    record.avoidAudioConform = 1;
    return host::ImporterResult::imNoErr;
}

host::ImporterResult shutdown() {
    dropErrorSuite();
    return host::ImporterResult::imNoErr;
}

host::ImporterResult getIndFormat(std::uint32_t index, host::imIndFormatRec* formatRecord) {
    if (index != 0) {
        logMessage("index %u: imBadFormatIndex", index);
        return host::ImporterResult::imBadFormatIndex;
    }
    if (formatRecord == nullptr) {
        throw std::logic_error("record is NULL");
    }
    host::imIndFormatRec& record = *formatRecord;
    record.filetype = static_cast<std::int32_t>(host::kFileTypeAviv);
    record.canWriteTimecode = 0;
    copyText(record.FormatName, kFormatName);
    copyText(record.FormatShortName, kFormatName);
    copyText(record.PlatformExtension, kExtension);
    record.PlatformExtension[kExtension.size() + 1] = '\0';  // an empty entry ends the list
    logMessage("index %u: %s", index, fourccToString(host::kFileTypeAviv, true).c_str());
    return host::ImporterResult::imNoErr;
}

host::ImporterResult getSubTypeNames(const host::imStdParms* stdParms, std::uint32_t fileType,
                                     host::imSubTypeDescriptionRec** descriptions) {
    logMessage("filetype: %s", fourccToString(fileType, true).c_str());
    if (descriptions == nullptr) {
        throw std::logic_error("sub-type record is NULL");
    }
    const host::piSuites* const suites = stdParms != nullptr ? stdParms->piSuites : nullptr;
    const host::MemoryFunctions* const memory = suites != nullptr ? suites->memFuncs : nullptr;
    if (memory == nullptr) {
        throw std::logic_error("memory functions are NULL");
    }

    // The host tells the number of entries from the size of the block, so the block has no slack.
    const std::span<const SubTypeInfo> rows = SubTypeInfos();
    void* const block =
        memory->newPtr(static_cast<std::uint32_t>(rows.size() * sizeof(host::imSubTypeDescriptionRec)));
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    auto* description = static_cast<host::imSubTypeDescriptionRec*>(block);
    *descriptions = description;

    for (const SubTypeInfo& row : rows) {
        const std::u16string_view name = row.subTypeName;
        if (logEnabled()) {
            logMessage("Adding subtype: '%s' : '%s'", fourccToString(row.subType, true).c_str(),
                       utf8FromUtf16(name).c_str());
        }
        host::imSubTypeDescriptionRec entry{};
        entry.subType = static_cast<std::int32_t>(row.subType);
        const std::size_t length = std::min(name.size(), std::size(entry.subTypeName) - 1);
        std::copy_n(name.data(), length, entry.subTypeName);
        *description++ = entry;
    }
    return host::ImporterResult::imNoErr;
}

}  // namespace orvantis
