#include "tool/validate/base/protected_fields.h"

#include <cstring>

#include "host/records.h"

namespace simhost::tool::validate {
namespace {

#define FIELD(record, field) \
    { #record, #field, offsetof(host::record, field), sizeof(host::record::field) }
#define IMAGE_FIELD(field)                                                                   \
    {                                                                                        \
        "imFileInfoRec8", "vidInfo." #field,                                                 \
            offsetof(host::imFileInfoRec8, vidInfo) + offsetof(host::imImageInfoRec, field), \
            sizeof(host::imImageInfoRec::field)                                              \
    }

// Of a pointer its own size is meant.
// NOLINTBEGIN(bugprone-sizeof-expression)
constexpr ProtectedField kProtectedFields[] = {
    FIELD(imImportInfoRec, acceleratorFileExt),
    FIELD(imImportInfoRec, reserved),
    {"imFileOpenRec8", "fileinfo.importID", offsetof(host::imFileAccessRec8, importID), sizeof(void*)},
    {"imFileOpenRec8", "fileinfo.filepath", offsetof(host::imFileAccessRec8, filepath), sizeof(void*)},
    {"imFileOpenRec8", "fileinfo.newfilename", offsetof(host::imFileAccessRec8, newfilename), sizeof(void*)},
    FIELD(imFileOpenRec8, inReadWrite),
    FIELD(imFileOpenRec8, inImporterID),
    FIELD(imFileOpenRec8, inStreamIdx),
    IMAGE_FIELD(reserved_1),
    IMAGE_FIELD(reserved_2),
    IMAGE_FIELD(reserved_3),
    IMAGE_FIELD(reservedc),
    IMAGE_FIELD(importerID),
    IMAGE_FIELD(reserved),
    FIELD(imFileInfoRec8, privatedata),
    FIELD(imFileInfoRec8, streamIdx),
    FIELD(imFileInfoRec8, reserved),
    FIELD(imAnalysisRec, privatedata),
    FIELD(imAnalysisRec, prefs),
    FIELD(imAnalysisRec, buffersize),
    FIELD(imAnalysisRec, buffer),
    FIELD(imIndPixelFormatRec, privatedata),
    FIELD(imIndPixelFormatRec, prefs),
    FIELD(imImportAudioRec7, size),
    FIELD(imImportAudioRec7, buffer),
    FIELD(imImportAudioRec7, privateData),
    FIELD(imImportAudioRec7, prefs),
    FIELD(imGetAudioChannelLayoutRec, inPrivateData),
    FIELD(imSourceVideoRec, inPrivateData),
    FIELD(imSourceVideoRec, currentStreamIdx),
    FIELD(imSourceVideoRec, inFrameTime),
    FIELD(imSourceVideoRec, inFrameFormats),
    FIELD(imSourceVideoRec, inNumFrameFormats),
    FIELD(imSourceVideoRec, removePulldown),
    FIELD(imSourceVideoRec, unused2),
    FIELD(imSourceVideoRec, outFrame),
    FIELD(imSourceVideoRec, prefs),
    FIELD(imSourceVideoRec, prefsSize),
    FIELD(imSourceVideoRec, inQuality),
    FIELD(imSourceVideoRec, inRenderContext),
    FIELD(imAsyncImporterCreationRec, inPrivateData),
    FIELD(imAsyncImporterCreationRec, inPrefs),
};
// NOLINTEND(bugprone-sizeof-expression)

#undef IMAGE_FIELD
#undef FIELD

}  // namespace

std::span<const ProtectedField> protectedFields() noexcept {
    return kProtectedFields;
}

void checkProtectedFields(Trial& trial, const std::string& call, const std::string& clip,
                          std::string_view record, const void* before, const void* after) {
    for (const ProtectedField& field : kProtectedFields) {
        const auto* const was = static_cast<const std::uint8_t*>(before) + field.offset;
        const auto* const is = static_cast<const std::uint8_t*>(after) + field.offset;
        if (record == field.record && std::memcmp(was, is, field.bytes) != 0) {
            trial.fail({.call = call,
                        .field = std::string(record) + "." + field.field,
                        .clip = clip,
                        .seen = "the field was written"});
        }
    }
}

}  // namespace simhost::tool::validate
