#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <cstdio>
#include <stdexcept>

#include "tests/tool/stream_capture.h"

namespace orvantis::test {

StreamCapture::StreamCapture(int stream, const std::filesystem::path& file)
    : m_stream(stream), m_former(_dup(stream)) {
    (void)std::fflush(nullptr);
    const int target =
        _wopen(file.c_str(), _O_WRONLY | _O_CREAT | _O_TRUNC | _O_BINARY, _S_IREAD | _S_IWRITE);
    if (m_former < 0 || target < 0 || _dup2(target, stream) < 0) {
        throw std::runtime_error("cannot capture a stream");
    }
    (void)_close(target);
}

StreamCapture::~StreamCapture() {
    (void)std::fflush(nullptr);
    (void)_dup2(m_former, m_stream);
    (void)_close(m_former);
}

}  // namespace orvantis::test
