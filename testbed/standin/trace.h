// The contract trace: one line for each call into the library, written when the call returns.
//
// Owns: the numbering of lines and threads. Called by: the library object, only while ORVANTIS_STANDIN_LOG is
// set. Any thread; lines never mix. The file is opened for each line and closed again, so a test can read or
// delete it at once.

#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "video/orvantis_common64.h"

namespace orvantis::standin {

class Trace {
 public:
    // Whether lines can be appended to the file of that name (UTF-8). Creates it.
    static bool canAppend(const std::string& path);

    // Appends "#<line> T<thread> <text>\n". Both numbers count from 1, threads in the order of their first
    // line.
    void append(const std::string& path, const std::string& text);

 private:
    std::size_t threadNumber();  // with the mutex held

    std::mutex m_mutex;  // guards the numbering and keeps lines whole
    std::uint64_t m_lines = 0;
    std::vector<std::thread::id> m_threads;
};

// Arguments as the trace shows them. Addresses differ from run to run, so only their absence is shown.
std::string traceText(const OrvantisFrameFormat* format);  // {w,h,254,1,type,flags,space,range,0} or null
std::string traceText(const OrvantisOutputBuffer* out);    // {pixels,pitch 128,total 6144} or null
std::string traceBytes(const void* bytes, std::uint64_t count);  // {6144 bytes} or {null,6144 bytes}
std::string traceHandle(std::uint32_t handle);                   // 0x10001

}  // namespace orvantis::standin
