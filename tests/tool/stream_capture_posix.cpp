#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>

#include "tests/tool/stream_capture.h"

namespace orvantis::test {

StreamCapture::StreamCapture(int stream, const std::filesystem::path& file)
    : m_stream(stream), m_former(::fcntl(stream, F_DUPFD_CLOEXEC, 3)) {
    (void)std::fflush(nullptr);
    const int target = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (m_former < 0 || target < 0 || ::dup2(target, stream) < 0) {
        throw std::runtime_error("cannot capture a stream");
    }
    (void)::close(target);
}

StreamCapture::~StreamCapture() {
    (void)std::fflush(nullptr);
    (void)::dup2(m_former, m_stream);
    (void)::close(m_former);
}

}  // namespace orvantis::test
