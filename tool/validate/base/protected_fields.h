// The fields of the host's records that a selector may not write: what the host put there for the importer to
// read, and what is reserved. Static data; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "simhost/guarded_record.h"
#include "simhost/record_names.h"
#include "tool/validate/base/trial.h"

namespace simhost::tool::validate {

struct ProtectedField {
    const char* record;
    const char* field;
    std::size_t offset;
    std::size_t bytes;
};

std::span<const ProtectedField> protectedFields() noexcept;

/// Fails the trial for each protected field of the record whose bytes differ.
void checkProtectedFields(Trial& trial, const std::string& call, const std::string& clip,
                          std::string_view record, const void* before, const void* after);

template <class Record>
void checkProtectedFields(Trial& trial, const std::string& call, const std::string& clip,
                          const Answer<Record>& answer) {
    checkProtectedFields(trial, call, clip, kRecordName<Record>, &answer.before, &answer.record);
}

}  // namespace simhost::tool::validate
