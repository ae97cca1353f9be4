#include "tool/rescue/storage.h"

#include "tool/shared/base/tool_error.h"

namespace simhost::tool {

void readAll(Storage& file, std::uint64_t at, std::span<std::uint8_t> bytes) {
    if (file.read(at, bytes) != bytes.size()) {
        throw ToolError(kFailed, "the file ended while it was read: another program has shortened it");
    }
}

}  // namespace simhost::tool
