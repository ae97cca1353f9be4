// The stand-in against an independent implementation: what ffmpeg muxes is what the stand-in reads, and what
// ffmpeg converts to is what the stand-in delivers. Native builds only; ffmpeg is required there.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tests/testbed/standin/reference_decoder.h"
#include "tests/testbed/standin/standin_test_support.h"

namespace orvantis::standin::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct Size {
    std::uint32_t width, height;
    std::string text() const { return std::to_string(width) + "x" + std::to_string(height); }
};

// ffmpeg reading a raw picture of the type, with the rest of its command line.
void runFfmpeg(const TestType& type, Size size, const TemporaryFile& input, const std::string& arguments,
               const TemporaryFile& output) {
    const std::string command = "ffmpeg -nostdin -v error -y -f rawvideo -pixel_format " +
                                std::string(type.ffmpegFormat) + " -video_size " + size.text() + " -i '" +
                                input.utf8Path() + "' " + arguments + " '" + output.utf8Path() + "'";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

Bytes decode(const Bytes& format, const Bytes& frame, const OrvantisFrameFormat& output, std::uint32_t width,
             std::uint32_t height) {
    OpenLibrary open;
    OrvantisFrameFormat produced{};
    EXPECT_EQ(open.library.decompressBegin(open.handle, format.data(), format.size(), &output, &produced), 0);
    EXPECT_EQ(produced.width, width);
    EXPECT_EQ(produced.height, height);
    const std::size_t rowBytes = referenceRowBytes(output.type, width);
    const OutputRows rows(rowBytes, height, static_cast<std::int32_t>(rowBytes));
    EXPECT_EQ(open.library.decompress(open.handle, frame.data(), frame.size(), &rows.buffer()), 0);
    return rows.packed();
}

std::uint32_t le32(const Bytes& bytes, std::size_t offset) {
    std::uint32_t value = 0;
    std::memcpy(&value, bytes.data() + offset, sizeof(value));
    return value;
}

// The data of the first chunk with that name behind `from`.
Bytes chunk(const Bytes& file, const char* name, std::size_t from, std::size_t& at) {
    for (std::size_t i = from; i + 8 <= file.size(); ++i) {
        if (std::memcmp(file.data() + i, name, 4) == 0) {
            at = i + 8;
            const auto start = file.begin() + static_cast<std::ptrdiff_t>(at);
            const std::size_t size = std::min<std::size_t>(le32(file, i + 4), file.size() - at);
            return {start, start + static_cast<std::ptrdiff_t>(size)};
        }
    }
    return {};
}

class MuxedByFfmpeg : public testing::TestWithParam<TestType> {};

std::vector<TestType> muxableTypes() {
    std::vector<TestType> types;
    for (const TestType& type : allTypes()) {
        if (type.ffmpegFormat != nullptr) {
            types.push_back(type);
        }
    }
    return types;
}

TEST_P(MuxedByFfmpeg, IsReadFrameByFrame) {
    const TestType& type = GetParam();
    for (const Size size : {Size{17, 9}, Size{16, 8}, Size{1, 1}}) {
        SCOPED_TRACE(size.text());
        const Bytes first = randomPayload(type, size.width, size.height, 1);
        const Bytes second = randomPayload(type, size.width, size.height, 2);
        const TemporaryFile input;
        const TemporaryFile output;
        Bytes both = first;
        both.insert(both.end(), second.begin(), second.end());
        input.write(both);
        runFfmpeg(type, size, input,
                  "-c:v rawvideo -strict unofficial -pix_fmt " + std::string(type.ffmpegFormat) + " -vtag " +
                      type.tag + " -f avi",
                  output);
        const Bytes file = output.bytes();
        std::size_t at = 0;
        const Bytes format = chunk(file, "strf", 0, at);
        ASSERT_EQ(format.size(), 40U);
        chunk(file, "LIST", at, at);
        const Bytes movi = chunk(file, "00dc", at, at);
        ASSERT_EQ(movi, first);
        ASSERT_EQ(chunk(file, "00dc", at + movi.size(), at), second);
        for (const std::uint32_t layout : {2U, 31U}) {
            const Bytes picture = decode(format, second, request(layout), size.width, size.height);
            const std::size_t rowBytes = picture.size() / size.height;
            for (std::uint32_t y = 0; y < size.height; ++y) {
                ASSERT_EQ(firstDifference(referenceRow(type, second, size.width, size.height, y,
                                                       {layout, false, type.model == Model::kRgb}),
                                          picture.data() + y * rowBytes, rowBytes),
                          "");
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Ffmpeg, MuxedByFfmpeg, testing::ValuesIn(muxableTypes()), TagOfParam());

struct ExactCase {
    const char* name;
    const char* tag;
    const char* pixelFormat;  // ffmpeg's name of the layout
    std::uint32_t layout;
    Size size;
};

// Lets ffmpeg repeat the chroma rows of a 4:2:0 picture; left to itself it interpolates most of them.
std::string to422(Size size, const std::string& mergedFormat) {
    const std::string scale = "scale=" + std::to_string(size.width / 2) + ":" + std::to_string(size.height);
    return "-filter_complex 'extractplanes=y+u+v[y][u][v];[u]" + scale + ":flags=neighbor[u2];[v]" + scale +
           ":flags=neighbor[v2];[y][u2][v2]mergeplanes=0x001020:" + mergedFormat + "' ";
}

class ConvertedByFfmpeg : public testing::TestWithParam<ExactCase> {};

TEST_P(ConvertedByFfmpeg, IsTheSameByteForByte) {
    const ExactCase& c = GetParam();
    const TestType& type = testType(c.tag);
    const Bytes payload = randomPayload(type, c.size.width, c.size.height, 7);
    const TemporaryFile input;
    const TemporaryFile output;
    input.write(payload);
    runFfmpeg(type, c.size, input,
              (type.chromaStepY == 2 ? to422(c.size, "yuv422p") : "") + "-pix_fmt " + c.pixelFormat +
                  " -f rawvideo",
              output);
    const auto format =
        formatData(c.tag, static_cast<std::int32_t>(c.size.width), static_cast<std::int32_t>(c.size.height));
    EXPECT_EQ(decode(format, payload, fittingRequest(c.layout), c.size.width, c.size.height), output.bytes());
}

INSTANTIATE_TEST_SUITE_P(Ffmpeg, ConvertedByFfmpeg,
                         testing::Values(ExactCase{"GbrpToBgra", "O8RG", "bgra", 2, {16, 8}},
                                         ExactCase{"GbrpToBgraOdd", "O8RG", "bgra", 2, {17, 9}},
                                         ExactCase{"GbrpToArgb", "O8RG", "argb", 19, {17, 9}},
                                         ExactCase{"GbrapToBgra", "O8RA", "bgra", 2, {17, 9}},
                                         ExactCase{"GbrapToArgb", "O8RA", "argb", 19, {17, 9}},
                                         ExactCase{"Yuv422ToYuyv", "O8Y2", "yuyv422", 4, {16, 8}},
                                         ExactCase{"Yuv422ToUyvy", "O8Y2", "uyvy422", 5, {16, 8}},
                                         ExactCase{"Yuv422ToUyvyOddHeight", "O8Y2", "uyvy422", 5, {22, 7}},
                                         ExactCase{"Yuv420ToYuyv", "O8Y0", "yuyv422", 4, {16, 8}},
                                         ExactCase{"Yuv420ToUyvy", "O8Y0", "uyvy422", 5, {22, 6}}),
                         [](const auto& row) { return std::string(row.param.name); });

struct V210Case {
    const char* tag;
    Size size;
};

class V210ByFfmpeg : public testing::TestWithParam<V210Case> {};

TEST_P(V210ByFfmpeg, IsTheSameByteForByte) {
    const Size size = GetParam().size;
    const char* const tag = GetParam().tag;
    const TestType& type = testType(tag);
    // ffmpeg keeps the samples within 4 and 1019, the stand-in passes all values.
    const Bytes payload = randomPayload(type, size.width, size.height, 9, 4);
    const TemporaryFile input;
    const TemporaryFile output;
    input.write(payload);
    runFfmpeg(type, size, input,
              (type.chromaStepY == 2 ? to422(size, "yuv422p10le") : "") + "-c:v v210 -f rawvideo", output);
    const Bytes theirs = output.bytes();
    const auto format =
        formatData(tag, static_cast<std::int32_t>(size.width), static_cast<std::int32_t>(size.height));
    const Bytes ours = decode(format, payload, request(11, 0, 1, 1), size.width, size.height);
    const std::size_t rowBytes = ours.size() / size.height;
    const std::size_t theirPitch = (std::size_t{size.width} + 47) / 48 * 128;
    ASSERT_EQ(theirs.size(), theirPitch * size.height);
    for (std::uint32_t y = 0; y < size.height; ++y) {
        const auto start = theirs.begin() + static_cast<std::ptrdiff_t>(y * theirPitch);
        const Bytes expected(start, start + static_cast<std::ptrdiff_t>(rowBytes));
        const auto own = ours.begin() + static_cast<std::ptrdiff_t>(y * rowBytes);
        ASSERT_EQ(Bytes(own, own + static_cast<std::ptrdiff_t>(rowBytes)), expected) << "row " << y;
    }
}

INSTANTIATE_TEST_SUITE_P(Ffmpeg, V210ByFfmpeg,
                         testing::Values(V210Case{"O0Y2", {48, 2}}, V210Case{"O0Y2", {96, 3}},
                                         V210Case{"O0Y2", {6, 1}}, V210Case{"O0Y2", {2, 2}},
                                         V210Case{"O0Y2", {4, 3}}, V210Case{"O0Y2", {50, 3}},
                                         V210Case{"O0Y2", {52, 5}}, V210Case{"O0Y0", {16, 8}},
                                         V210Case{"O0Y0", {52, 6}}),
                         [](const auto& row) { return row.param.tag + ("_" + row.param.size.text()); });

// ffmpeg's own matrix is rounded differently; a wrong matrix, range or plane is off by far more.
class RgbByFfmpeg : public testing::TestWithParam<const char*> {};

TEST_P(RgbByFfmpeg, IsTheSameToTwoLevels) {
    const TestType& type = testType(GetParam());
    constexpr Size kSize{32, 16};
    // Not all values: ffmpeg's clipping gives way far outside the colours that RGB has.
    const Bytes payload = randomPayload(type, kSize.width, kSize.height, 11, 1U << (type.bits - 2));
    const TemporaryFile input;
    const TemporaryFile output;
    input.write(payload);
    runFfmpeg(type, kSize, input,
              "-vf scale=in_color_matrix=bt601:in_range=limited:out_range=full"
              ":flags=neighbor+accurate_rnd+full_chroma_int+full_chroma_inp,format=bgra -f rawvideo",
              output);
    const Bytes theirs = output.bytes();
    const Bytes ours = decode(formatData(GetParam(), 32, 16), payload, request(2), 32, 16);
    ASSERT_EQ(theirs.size(), ours.size());
    for (std::size_t i = 0; i < ours.size(); ++i) {
        ASSERT_NEAR(ours[i], theirs[i], 2) << "byte " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Ffmpeg, RgbByFfmpeg, testing::Values("O8Y4", "O8YA", "O0Y4"),
                         [](const auto& row) { return std::string(row.param); });

}  // namespace
}  // namespace orvantis::standin::test
