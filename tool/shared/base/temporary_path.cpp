#include "tool/shared/base/temporary_path.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <utility>
#include <vector>

#include "tool/shared/base/output_file.h"
#include "tool/shared/base/process_usage.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPrefix = "importer_host-";
constexpr const char* kFolderSuffix = ".run";

struct Registry {
    std::mutex mutex;
    std::vector<std::string> paths;
};

Registry& registry() {
    // Never destroyed: the thread that ends the process may come late.
    static auto* const instance = new Registry;
    return *instance;
}

void removeAll(const std::string& path) noexcept {
    try {
        std::error_code error;
        fs::remove_all(pathFromUtf8(path), error);
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): it stays
    }
}

void forget(const std::string& path) {
    const std::lock_guard lock(registry().mutex);
    auto& paths = registry().paths;
    paths.erase(std::remove(paths.begin(), paths.end(), path), paths.end());
}

// What a killed run could not remove, or a plug-in that was never unloaded held open.
void removeStaleFolders(const fs::path& parent) {
    const auto limit = fs::file_time_type::clock::now() - std::chrono::hours(24);
    std::error_code error;
    for (fs::directory_iterator it(parent, error), end; !error && it != end; it.increment(error)) {
        const std::string name = pathToUtf8(it->path().filename());
        std::error_code timeError;
        if (name.starts_with(kPrefix) && name.ends_with(kFolderSuffix) &&
            it->last_write_time(timeError) < limit && !timeError) {
            std::error_code ignored;
            fs::remove_all(it->path(), ignored);
        }
    }
}

}  // namespace

TemporaryPath::TemporaryPath(std::string pathUtf8) : m_path(std::move(pathUtf8)) {
    const std::lock_guard lock(registry().mutex);
    registry().paths.push_back(m_path);
}

TemporaryPath::~TemporaryPath() {
    if (!m_kept) {
        removeAll(m_path);
        forget(m_path);
    }
}

void TemporaryPath::keep() noexcept {
    m_kept = true;
    forget(m_path);
}

std::string temporaryName(const std::string& suffix) {
    static std::atomic<unsigned> counter = 0;
    return kPrefix + std::to_string(processNumber()) + "-" + std::to_string(++counter) + suffix;
}

std::string makeTemporaryFolder() {
    std::error_code error;
    const fs::path parent = fs::temp_directory_path(error);
    if (error) {
        throw ToolError(kNoOutput, "there is no folder for temporary files: " + error.message());
    }
    removeStaleFolders(parent);
    const fs::path folder = parent / temporaryName(kFolderSuffix);
    fs::remove_all(folder, error);  // of a process that had our number
    if (!fs::create_directory(folder, error)) {
        throw ToolError(kNoOutput, "cannot make the folder '" + pathToUtf8(folder) + "': " + error.message());
    }
    return pathToUtf8(folder);
}

void removeTemporaryPaths() noexcept {
    // The mutex is kept: nothing temporary begins any more.
    registry().mutex.lock();
    for (const std::string& path : registry().paths) {
        removeAll(path);
    }
}

}  // namespace simhost::tool
