#include "importer/file_info.h"

#include "host/record_values.h"
#include "video/rate_arithmetic.h"

namespace orvantis {

void fillVideoFields(host::imFileInfoRec8& record, const VideoInfo& video) {
    const bool alpha = video.hasAlpha();
    record.vidInfo.supportsAsyncIO = host::kPrTrue;
    record.vidInfo.supportsGetSourceVideo = host::kPrTrue;
    record.vidInfo.hasPulldown = host::kPrFalse;
    record.vidInfo.imageWidth = video.width();
    record.vidInfo.imageHeight = video.height();
    record.vidInfo.depth = alpha ? 32 : 24;
    record.vidInfo.subType = static_cast<std::int32_t>(video.subTypeInfo().subType);
    record.vidInfo.fieldType = video.fieldOrder();
    record.vidInfo.alphaType = alpha ? host::kAlphaTypeStraight : host::kAlphaTypeNone;
    record.vidInfo.pixelAspectNum = 1;
    record.vidInfo.pixelAspectDen = 1;

    // One frame lasts `denominator` units of a time base of `numerator` units a second. The frame rate was
    // limited so that the duration fits; the cast only keeps a lying count defined.
    const FrameRate rate = video.frameRate();
    record.vidScale = rate.numerator;
    record.vidSampleSize = rate.denominator;
    record.vidDuration = static_cast<std::int32_t>(
        static_cast<std::uint32_t>(durationOf(rate.denominator, video.numFrames())));
}

}  // namespace orvantis
