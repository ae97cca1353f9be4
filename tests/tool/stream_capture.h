// Sends one of this process's standard streams, and those of children that are started meanwhile, into a
// file.
#pragma once

#include <filesystem>

namespace orvantis::test {

class StreamCapture {
 public:
    /// `stream` is 1 for the output, 2 for errors. Throws std::runtime_error.
    StreamCapture(int stream, const std::filesystem::path& file);
    StreamCapture(const StreamCapture&) = delete;
    StreamCapture& operator=(const StreamCapture&) = delete;
    /// Puts the former stream back.
    ~StreamCapture();

 private:
    int m_stream;
    int m_former;
};

}  // namespace orvantis::test
