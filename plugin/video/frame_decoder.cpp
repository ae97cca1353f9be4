// Lends the codec sessions of one video to the calls that decode.
#include "video/frame_decoder.h"

#include <utility>

namespace orvantis {

FrameDecoder::Use::Use(FrameDecoder& decoder) : m_decoder(decoder) {
    if (!decoder.m_mainInUse.exchange(true, std::memory_order_acquire)) {
        return;
    }
    m_own = decoder.m_spare.take();
    if (!m_own) {
        m_own = std::make_unique<DecodeSession>();
    }
}

FrameDecoder::Use::~Use() {
    if (m_own) {
        m_decoder.m_spare.keep(std::move(m_own));
    } else {
        m_decoder.m_mainInUse.store(false, std::memory_order_release);
    }
}

}  // namespace orvantis
