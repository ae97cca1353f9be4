// Test equipment: puts a table of file hooks (fileio/file_hooks_posix.h) in force. Windows builds ignore it.
#pragma once

#include "fileio/file_hooks_posix.h"

namespace orvantis::test {

/// A table in force from here to the end of this object, which must outlive every WinFile made meanwhile.
class InstalledFileHooks {
 public:
    InstalledFileHooks();
    ~InstalledFileHooks();
    InstalledFileHooks(const InstalledFileHooks&) = delete;
    InstalledFileHooks& operator=(const InstalledFileHooks&) = delete;

    FileHooks& operator*() noexcept { return m_hooks; }
    FileHooks* operator->() noexcept { return &m_hooks; }

 private:
    FileHooks m_hooks;
};

}  // namespace orvantis::test
