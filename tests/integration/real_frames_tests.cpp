// Clips from a real muxer through the loaded plug-in: every coded type and size, every layout on offer,
// compared byte for byte with what ffmpeg makes of the same pictures wherever the conversion is lossless, and
// with the coded samples themselves elsewhere.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>

#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "simhost/pixel_layout.h"
#include "tests/integration/plugin_test.h"
#include "tests/support/temp_folder.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

struct RealClip {
    std::string name, tag;
    std::int32_t width = 0, height = 0;
    std::uint32_t frames = 0;
};

std::filesystem::path folder() {
    return std::filesystem::path(ORVANTIS_REAL_FRAMES);
}

std::vector<RealClip> realClips() {
    std::ifstream list(folder() / "clips.txt");
    std::vector<RealClip> clips;
    for (RealClip clip; list >> clip.name >> clip.tag >> clip.width >> clip.height >> clip.frames;) {
        clips.push_back(clip);
    }
    return clips;
}

std::optional<Bytes> fileBytes(const std::string& name) {
    const std::filesystem::path path = folder() / name;
    if (!std::filesystem::exists(path)) {
        return std::nullopt;
    }
    const std::string bytes = orvantis::test::readFile(path);
    return Bytes(bytes.begin(), bytes.end());
}

std::string codeText(std::uint32_t format) {
    std::string text;
    for (int i = 0; i < 4; ++i) {
        text += static_cast<char>(format >> (8 * i) & 0xFF);
    }
    return text;
}

using Codes = std::vector<std::string>;

/// What a file of each coded type is offered as: the type's preferred layouts where it has some, else all
/// that the codec delivers, in the order of preference.
const Codes& offeredCodes(const std::string& tag) {
    static const Codes k422 = {"yuy2", "yuy3", "uyvy", "uyv7"};
    static const Codes kRgb = {"bgra", "argb", "bgrx", "xrgb", "RGB1", "Bgra", "Bgrx"};
    static const Codes kYuv422Deep = {"yuy2", "yuy3", "uyvy", "uyv7", "bgra", "argb", "bgrx",
                                      "xrgb", "v210", "v211", "RGB1", "Bgra", "Bgrx"};
    static const Codes kYuv444Deep = {"vuya", "VUYA", "vuyx", "vux7", "bgra", "argb",
                                      "bgrx", "xrgb", "RGB1", "Bgra", "Bgrx"};
    static const std::map<std::string, Codes> table = {{"O8RA", kRgb},
                                                       {"O8RG", kRgb},
                                                       {"O8YA", {"vuya", "VUYA"}},
                                                       {"O8Y4", {"vuyx", "vux7"}},
                                                       {"O8Y2", k422},
                                                       {"O8Y0", k422},
                                                       {"O8G0", k422},
                                                       {"O0RA", kRgb},
                                                       {"O0RG", kRgb},
                                                       {"O0Y4", kYuv444Deep},
                                                       {"O0Y2", kYuv422Deep},
                                                       {"O0Y0", {"v210", "v211"}},
                                                       {"O0G0", kYuv422Deep},
                                                       {"O2RA", kRgb},
                                                       {"O2RG", kRgb},
                                                       {"O4RG", kRgb}};
    return table.at(tag);
}

/// The coded samples of one clip, as the encoder was given them.
class PlanarFrames {
 public:
    PlanarFrames(Bytes bytes, bool deep) : m_bytes(std::move(bytes)), m_deep(deep) {}

    /// Sample `at` of a frame that starts at sample `start`.
    unsigned sample(std::size_t at) const {
        if (!m_deep) {
            return m_bytes.at(at);
        }
        return m_bytes.at(2 * at) + 256u * m_bytes.at(2 * at + 1);
    }

 private:
    Bytes m_bytes;
    bool m_deep;
};

class RealFrames : public PluginTest {};

TEST_F(RealFrames, EveryTypeIsOfferedInItsLayouts) {
    startAndInit();
    const std::vector<RealClip> clips = realClips();
    ASSERT_EQ(clips.size(), 48u);
    for (const RealClip& real : clips) {
        SCOPED_TRACE(real.name);
        simhost::Clip clip(importer(), orvantis::test::utf8Path(folder() / (real.name + ".avi")));
        ASSERT_EQ(clip.openResult(), host::imNoErr);
        const auto info = clip.getInfo(0);
        ASSERT_EQ(info.result, host::imNoErr);
        EXPECT_EQ(static_cast<int>(info.record.vidInfo.imageWidth), real.width);
        EXPECT_EQ(static_cast<int>(info.record.vidInfo.imageHeight), real.height);
        EXPECT_EQ(static_cast<int>(info.record.vidScale), 25);
        EXPECT_EQ(static_cast<int>(info.record.vidSampleSize), 1);
        EXPECT_EQ(static_cast<int>(info.record.vidDuration), static_cast<int>(real.frames));
        const bool alpha = real.tag[3] == 'A';
        EXPECT_EQ(static_cast<int>(info.record.vidInfo.depth), alpha ? 32 : 24);
        EXPECT_EQ(static_cast<int>(info.record.vidInfo.alphaType), alpha ? 1 : 5);
        Codes offered;
        for (const std::uint32_t format : clip.pixelFormats().formats) {
            offered.push_back(codeText(format));
        }
        EXPECT_EQ(offered, offeredCodes(real.tag));
    }
}

/// How many layouts were compared with ffmpeg's, over all clips.
int compareWithFfmpeg(const simhost::Importer& importer) {
    int compared = 0;
    for (const RealClip& real : realClips()) {
        SCOPED_TRACE(real.name);
        simhost::Clip clip(importer, orvantis::test::utf8Path(folder() / (real.name + ".avi")));
        EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
        for (const std::uint32_t format : clip.pixelFormats().formats) {
            SCOPED_TRACE(codeText(format));
            // Only these: "Bgra" would find the file of "bgra" where names of files ignore case.
            static const Codes kShared = {"bgra", "argb", "yuy2", "yuy3", "uyvy", "uyv7", "v210", "v211"};
            if (std::find(kShared.begin(), kShared.end(), codeText(format)) == kShared.end()) {
                continue;
            }
            const std::optional<Bytes> reference = fileBytes(real.name + "." + codeText(format) + ".raw");
            if (!reference) {
                continue;
            }
            ++compared;
            const std::size_t frameBytes = reference->size() / real.frames;
            const std::size_t stride = frameBytes / static_cast<std::size_t>(real.height);
            for (std::uint32_t i = 0; i < real.frames; ++i) {
                const simhost::FrameAnswer answer = clip.getFrame(i, format);
                EXPECT_TRUE(answer.frame) << answer.result;
                if (!answer.frame) {
                    break;
                }
                int differing = 0;
                for (std::int32_t y = 0; y < real.height; ++y) {
                    const auto row = answer.frame->pictureRow(y);
                    const auto from =
                        reference->begin() +
                        static_cast<std::ptrdiff_t>(i * frameBytes + static_cast<std::size_t>(y) * stride);
                    EXPECT_LE(row.size(), stride);
                    if (!std::equal(row.begin(), row.end(), from)) {
                        ++differing;
                    }
                }
                EXPECT_EQ(differing, 0) << "rows of frame " << i;
            }
        }
    }
    return compared;
}

TEST_F(RealFrames, EveryFrameIsFfmpegsOwnConversion) {
    startAndInit();
    EXPECT_GE(compareWithFfmpeg(importer()), 18);
}

TEST_F(RealFrames, RowsInTheOtherOrderAreTheSamePicture) {
    const simhost::HostProfile* opposite = nullptr;
    for (const simhost::HostProfile& profile : simhost::builtinProfiles()) {
        if (profile.oppositeOrigins && profile.refusedSuites.empty()) {
            opposite = &profile;
        }
    }
    ASSERT_NE(opposite, nullptr);
    startAndInit(*opposite);
    EXPECT_GE(compareWithFfmpeg(importer()), 18);
}

/// The samples of one pixel of a 4:4:4 clip: G B R (A) or Y U V (A) planes.
struct Pixel {
    unsigned plane[4];
};

Pixel pixelOf(const PlanarFrames& frames, const RealClip& clip, std::uint32_t frame, std::int32_t x,
              std::int32_t y, std::size_t planes) {
    const std::size_t area = static_cast<std::size_t>(clip.width) * static_cast<std::size_t>(clip.height);
    const std::size_t at =
        static_cast<std::size_t>(y) * static_cast<std::size_t>(clip.width) + static_cast<std::size_t>(x);
    Pixel pixel{};
    for (std::size_t p = 0; p < planes; ++p) {
        pixel.plane[p] = frames.sample((frame * planes + p) * area + at);
    }
    return pixel;
}

TEST_F(RealFrames, Yuv444SamplesArriveUntouched) {
    startAndInit();
    int compared = 0;
    for (const RealClip& real : realClips()) {
        if (real.tag != "O8Y4" && real.tag != "O8YA") {
            continue;
        }
        SCOPED_TRACE(real.name);
        const bool alpha = real.tag == "O8YA";
        const PlanarFrames planar(*fileBytes(real.name + ".planar.raw"), false);
        simhost::Clip clip(importer(), orvantis::test::utf8Path(folder() / (real.name + ".avi")));
        ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
        for (const std::uint32_t format : clip.pixelFormats().formats) {
            for (std::uint32_t i = 0; i < real.frames; ++i) {
                const simhost::FrameAnswer answer = clip.getFrame(i, format);
                ASSERT_TRUE(answer.frame);
                for (std::int32_t y = 0; y < real.height; ++y) {
                    const auto row = answer.frame->pictureRow(y);
                    for (std::int32_t x = 0; x < real.width; ++x) {
                        const Pixel p = pixelOf(planar, real, i, x, y, alpha ? 4 : 3);
                        const std::size_t at = 4 * static_cast<std::size_t>(x);
                        ASSERT_EQ(row[at], p.plane[2]) << "V at " << x << ',' << y;
                        ASSERT_EQ(row[at + 1], p.plane[1]) << "U";
                        ASSERT_EQ(row[at + 2], p.plane[0]) << "Y";
                        if (alpha) {
                            ASSERT_EQ(row[at + 3], p.plane[3]) << "alpha";
                        }
                        ++compared;
                    }
                }
            }
        }
    }
    EXPECT_GT(compared, 0);
}

TEST_F(RealFrames, DeepRgbReachesTheHostsSixteenBitRange) {
    startAndInit();
    const std::map<std::string, unsigned> maxima = {
        {"O0RG", 1023}, {"O0RA", 1023}, {"O2RG", 4095}, {"O2RA", 4095}, {"O4RG", 16383}};
    int compared = 0;
    for (const RealClip& real : realClips()) {
        const auto maximum = maxima.find(real.tag);
        if (maximum == maxima.end()) {
            continue;
        }
        SCOPED_TRACE(real.name);
        const bool alpha = real.tag[3] == 'A';
        const PlanarFrames planar(*fileBytes(real.name + ".planar.raw"), true);
        simhost::Clip clip(importer(), orvantis::test::utf8Path(folder() / (real.name + ".avi")));
        ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
        const simhost::FrameAnswer answer = clip.getFrame(1, host::PrPixelFormat_BGRA_4444_16u);
        ASSERT_TRUE(answer.frame);
        for (std::int32_t y = 0; y < real.height; ++y) {
            const auto row = answer.frame->pictureRow(y);
            for (std::int32_t x = 0; x < real.width; ++x) {
                const Pixel p = pixelOf(planar, real, 1, x, y, alpha ? 4 : 3);
                const unsigned gbra[4] = {p.plane[1], p.plane[0], p.plane[2],
                                          alpha ? p.plane[3] : maximum->second};
                for (std::size_t c = 0; c < 4; ++c) {
                    const std::size_t at = 8 * static_cast<std::size_t>(x) + 2 * c;
                    const unsigned word = row[at] + 256u * row[at + 1];
                    // Full scale is 32768, rounded to the nearest.
                    const unsigned expected = (gbra[c] * 32768u + maximum->second / 2) / maximum->second;
                    ASSERT_EQ(word, expected) << "component " << c << " at " << x << ',' << y;
                    ++compared;
                }
            }
        }
    }
    EXPECT_GT(compared, 0);
}

}  // namespace
