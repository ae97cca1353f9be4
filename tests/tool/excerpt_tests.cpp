// "importer_host excerpt": nothing of pictures and sound is left, and nobody who reads the file notices.
#include <algorithm>
#include <filesystem>
#include <functional>
#include <sstream>
#include <string_view>

#include "avi/avi_reader.h"
#include "avi/avi_stream.h"
#include "fileio/win_file.h"
#include "tests/support/thorough.h"
#include "tests/tool/tool_run.h"

namespace {

namespace fs = std::filesystem;
using orvantis::test::AviBuilder;
using orvantis::test::Bytes;
using orvantis::test::OpenDml;
using simhost::tool::kFailed;
using simhost::tool::kNoOutput;
using simhost::tool::kSuccess;
using testing::HasSubstr;

constexpr std::uint8_t kMark = 0xA5;  // stands in pictures and sound, and nowhere else

void replaceAll(std::string& text, const std::string& what, const std::string& with) {
    if (what.empty()) {
        return;
    }
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
        text.replace(at, what.size(), with);
    }
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// How long a text is that begins here and changes from run to run, or is what pictures and sound themselves
// are: thumbnails, waveforms, levels. 0 for what has to be the same.
std::size_t changing(std::string_view text) {
    const auto upTo = [&text](std::string_view begin, std::string_view end) {
        return text.starts_with(begin) ? text.find(end) + end.size() : 0;
    };
    constexpr std::string_view kStamp = "2000-00-00 00:00:00";
    if (text.size() >= kStamp.size() && text.starts_with("20") &&
        std::ranges::equal(text.substr(0, kStamp.size()), kStamp,
                           [](char c, char form) { return isDigit(form) ? isDigit(c) : c == form; })) {
        return kStamp.size();
    }
    std::size_t digits = 0;
    while (text.front() == '[' && 1 + digits < text.size() && isDigit(text[1 + digits])) {
        ++digits;
    }
    if (digits > 0 && text[1 + digits] == ']') {
        return digits + 2;
    }
    if (text.starts_with("0x")) {
        return text.find_first_not_of("0123456789abcdefABCDEF", 2);
    }
    for (const std::string_view word : {" and is silent", "silent", ": it is noise"}) {
        if (text.starts_with(word)) {
            return word.size();
        }
    }
    for (const auto& [begin, end] : {std::pair{"<svg", "</svg>"},
                                     {"data:image", "\""},
                                     {"peak ", " dB"},
                                     {"orvantis_pr_importer_", ".log"},
                                     {"importer_host-", "/"}}) {
        if (const std::size_t length = upTo(begin, end)) {
            return length;
        }
    }
    return 0;
}

// What says nothing of where and when.
std::string comparable(std::string text, const std::string& folder) {
    replaceAll(text, folder, "FOLDER");
    std::string escaped = folder;
    replaceAll(escaped, "\\", "\\\\");
    replaceAll(text, escaped, "FOLDER");
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = std::string_view("2[0 s:<dpoi").find(text[at]) == std::string_view::npos
                                       ? 0
                                       : changing(std::string_view(text).substr(at));
        out.append(text, at, length == 0 ? 1 : 0);
        at += std::max<std::size_t>(length, 1);
    }
    return out;
}

class ToolExcerpt : public ToolTest {
 protected:
    /// Excerpts of all clips of a folder, in "excerpts". Up to `mayDiffer` may tell that they differ; they
    /// and their clips are removed.
    void takeExcerpts(const fs::path& clips, std::size_t mayDiffer) const {
        fs::create_directories(folder / "excerpts");
        const std::vector<fs::directory_entry> all{fs::directory_iterator(clips), {}};
        for (const auto& each : all) {
            if (each.path().extension() != ".avi") {
                continue;
            }
            const std::string out = orvantis::test::utf8Path(folder / "excerpts" / each.path().filename());
            const ToolRun result = runTool({"excerpt", orvantis::test::utf8Path(each.path()), "--out", out});
            if (mayDiffer > 0 && result.code == kFailed) {
                --mayDiffer;
                EXPECT_THAT(result.out, HasSubstr("  it differs from the clip: "));
                fs::remove(each.path());
                fs::remove(folder / "excerpts" / each.path().filename());
                continue;
            }
            EXPECT_EQ(result.code, kSuccess) << result.out << result.err;
            EXPECT_EQ(fs::file_size(each.path()),
                      fs::file_size(folder / "excerpts" / each.path().filename()));
        }
    }
    /// Everything that the tool says of the clips in a folder.
    std::string told(const fs::path& clips, const std::string& pages) const {
        const std::string path = orvantis::test::utf8Path(clips);
        std::string out;
        for (const auto& words : {std::vector<std::string>{"info", path, "--json"},
                                  {"doctor", path, "--plugin-folder", in("none")},
                                  {"report", path, "--out", in(pages), "--frames", "4"}}) {
            const ToolRun result = runTool(words);
            out += words.front() + " " + std::to_string(result.code) + "\n" + result.out + result.err;
        }
        for (const std::string& name : namesIn(folder / pages)) {
            out += "\n== " + name + "\n" + read(pages + "/" + name);
        }
        replaceAll(out, in(pages), "PAGES");
        return comparable(out, path);
    }
    void expectSameAnswers(const fs::path& clips, std::size_t mayDiffer = 0) const {
        takeExcerpts(clips, mayDiffer);
        std::istringstream one(told(clips, "pages of the clips"));
        std::istringstream other(told(folder / "excerpts", "pages of the excerpts"));
        std::string a;
        std::string b;
        std::size_t lines = 0;
        std::size_t differing = 0;
        while (std::getline(one, a) && std::getline(other, b)) {
            ++lines;
            if (a != b && ++differing < 5) {
                ADD_FAILURE() << "clip:    " << a << "\nexcerpt: " << b;
            }
        }
        EXPECT_GT(lines, 100U);
        EXPECT_FALSE(std::getline(one, a) || std::getline(other, b)) << "one says more";
        EXPECT_EQ(differing, 0U);
    }
    void expectNoMark() const {
        for (const std::string& name : namesIn(folder / "excerpts")) {
            const std::string bytes = read("excerpts/" + name);
            EXPECT_EQ(std::ranges::count(bytes, static_cast<char>(kMark)), 0) << name;
            EXPECT_NE(std::ranges::count(bytes, '\0'), std::ssize(bytes)) << name;
        }
    }
};

#if defined(ORVANTIS_CLIPS_DIR)

TEST_F(ToolExcerpt, ClipsOfOtherProgramsGiveTheSameAnswersAndLeaveNothing) {
    // Of the clips that differ by their rate alone one will do, and a large one only makes the test slow.
    fs::create_directories(folder / "clips");
    for (const auto& each : fs::directory_iterator(ORVANTIS_CLIPS_DIR)) {
        const std::string name = each.path().filename().string();
        const bool chosen = !name.starts_with("rate_") || name == "rate_30000_1001.avi";
        if (each.path().extension() == ".avi" && chosen && fs::file_size(each.path()) < 500'000) {
            fs::copy_file(each.path(), folder / "clips" / name);
        }
    }
    expectSameAnswers(folder / "clips");
    std::uint64_t looked = 0;
    for (const std::string& name : namesIn(folder / "excerpts")) {
        fileio::WinFile file;
        ASSERT_TRUE(file.open(in("excerpts/" + name).c_str(), fileio::kOpenRead | fileio::kOpenShareRead));
        orvantis::AviReader reader;
        ASSERT_TRUE(reader.parse(file, false)) << name;
        for (const auto& stream : reader.streams) {
            for (const orvantis::IndexEntry& entry : stream->entries()) {
                std::vector<char> bytes(entry.size);
                ASSERT_TRUE(file.seek(static_cast<std::int64_t>(entry.offset)));
                ASSERT_EQ(file.read(bytes.data(), bytes.size()), bytes.size());
                ASSERT_EQ(std::ranges::count(bytes, '\0'), std::ssize(bytes)) << name;
                looked += bytes.size();
            }
        }
    }
    EXPECT_GT(looked, 1'000'000U);
}

#endif

// Files that a fuzzer has made: every 25th, or all of them; of all, one tells that it differs, because its
// index leads into its pictures. On Windows, where each takes half a second, every seventh is all.
TEST_F(ToolExcerpt, FilesOfAFuzzerGiveTheSameAnswers) {
    std::vector<fs::path> files;
    for (const char* corpus : {"corpus/parse_fuzzer", "corpus/session_fuzzer", "corpus/differential_fuzzer",
                               "corpus/rescue_fuzzer", "regressions"}) {
        for (const auto& each : fs::directory_iterator(fs::path(ORVANTIS_FUZZ_FOLDER) / corpus)) {
            if (each.path().extension() != ".md") {
                files.push_back(each.path());
            }
        }
    }
    std::ranges::sort(files);
    fs::create_directories(folder / "clips");
#if defined(_WIN32)
    const std::size_t step = orvantis::test::takesEverything() ? 7 : 25;
#else
    const std::size_t step = orvantis::test::takesEverything() ? 1 : 25;
#endif
    for (std::size_t i = 0; i < files.size(); i += step) {
        fs::copy_file(files[i], folder / "clips" / (std::to_string(i) + ".avi"));
    }
    expectSameAnswers(folder / "clips", 1);
}

Bytes mark(std::size_t size) {
    return Bytes(size, kMark);
}

Bytes::iterator placeOf(Bytes& bytes, std::string_view code) {
    return std::search(bytes.begin(), bytes.end(), code.begin(), code.end());
}

// Twelve frames and their sound, all of it marked.
AviBuilder marked() {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1));
    avi.addStream(orvantis::test::pcmStream(2, 8000, 16));
    for (std::uint32_t i = 0; i < 12; ++i) {
        avi.addChunk(0, mark(i == 5   ? 0
                             : i == 7 ? 20
                                      : clips::kFrameBytes))
            .addChunk(1, mark(clips::kSoundBytes + 1));
    }
    avi.headerTail(orvantis::test::RiffBuilder().chunk("JUNK", mark(100)).take()).junk(200);
    return avi;
}

TEST_F(ToolExcerpt, WholeAndDamagedClipsGiveTheSameAnswersAndKeepNothing) {
    const auto clip = [this](const char* name, Bytes bytes, const std::function<void(Bytes&)>& damage = {}) {
        if (damage) {
            damage(bytes);
        }
        (void)write(std::string("clips/") + name + ".avi", bytes);
    };
    clip("whole", marked().build());
    clip("opendml",
         marked().openDml(OpenDml::kSuperIndex).chunksPerForm(8).entriesPerStandardIndex(3).build());
    clip("standard", marked().openDml(OpenDml::kStandardIndex).idx1(false).build());
    clip("rec", marked().chunksPerRecList(4).build());
    clip("absolute", marked().absoluteIdx1Offsets(true).build());
    clip("no index", marked().idx1(false).build());
    clip("half", marked().build(), [](Bytes& bytes) { bytes.resize(bytes.size() / 2); });
    clip("half opendml", marked().openDml(OpenDml::kSuperIndex).build(),
         [](Bytes& bytes) { bytes.resize(bytes.size() / 2); });
    clip("headers only", marked().build(), [](Bytes& bytes) { bytes.resize(300); });
    clip("tail of noughts", marked().build(), [](Bytes& bytes) {
        std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 2), bytes.end(),
                  std::uint8_t{0});
    });
    clip("no sizes", marked().build(), [](Bytes& bytes) {
        std::fill_n(bytes.begin() + 4, 4, std::uint8_t{0});
        const auto movi = placeOf(bytes, "movi");
        std::fill_n(movi - 4, 4, std::uint8_t{0});
    });
    auto early = marked().idx1(false);
    Bytes sizes = early.build();
    for (const std::size_t list : {std::size_t{0}, static_cast<std::size_t>(early.moviOffset())}) {
        const std::size_t size = static_cast<std::size_t>(early.placements()[4].offset) + 10 - list - 8;
        for (unsigned i = 0; i < 4; ++i) {
            sizes[list + 4 + i] = static_cast<std::uint8_t>(size >> (8 * i));
        }
    }
    clip("sizes of an earlier moment", sizes);
    auto lost = marked();
    Bytes bytes = lost.build();
    for (std::size_t i = 0; i < 3; ++i) {
        bytes[lost.idx1Offset() + 8 + 2 * 16 + 8 + i] = 0x7F;
    }
    clip("lost frame", bytes);
    auto garbled = marked();
    bytes = garbled.build();
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(garbled.placements()[6].offset) - 8, 400, kMark);
    clip("garbage", bytes);
    clip("other codec", marked().build(), [](Bytes& all) {
        const auto format = placeOf(all, "strf");
        std::copy_n("XYZ1", 4, format + 8 + 16);
    });
    expectSameAnswers(folder / "clips");
    expectNoMark();
}

TEST_F(ToolExcerpt, WhatAProgramCalledItselfStaysAndWhatAUserWroteGoes) {
    orvantis::test::RiffBuilder list;
    list.beginList("LIST", "INFO")
        .chunk("ISFT", Bytes{'R', 'e', 'c', '9'})
        .chunk("IART", Bytes{'J', 'o', 'h', 'n'})
        .end();
    const Bytes clip = marked().headerTail(list.take()).build();
    ASSERT_EQ(runTool({"excerpt", write("a.avi", clip), "--out", in("b.avi")}).code, kSuccess);
    EXPECT_THAT(read("b.avi"), HasSubstr("Rec9"));
    EXPECT_EQ(read("b.avi").find("John"), std::string::npos);
}

TEST_F(ToolExcerpt, AFileThatIsNoAviKeepsNothing) {
    ASSERT_EQ(runTool({"excerpt", write("a.avi", std::string(500, 'x')), "--out", in("b.avi")}).code,
              kSuccess);
    EXPECT_EQ(read("b.avi"), std::string(500, '\0'));
    ASSERT_EQ(runTool({"excerpt", write("empty.avi", ""), "--out", in("c.avi")}).code, kSuccess);
    EXPECT_EQ(read("c.avi"), "");
}

TEST_F(ToolExcerpt, NothingIsReplaced) {
    const std::string clip = soundClip();
    (void)write("there.avi", "mine");
    const ToolRun result = runTool({"excerpt", clip, "--out", in("there.avi"), "--json"});
    EXPECT_EQ(result.code, kNoOutput);
    EXPECT_EQ(result.json()["error"]["kind"], "name-taken");
    EXPECT_EQ(read("there.avi"), "mine");
    EXPECT_EQ(runTool({"excerpt", clip, "--out", clip}).code, kNoOutput);
    EXPECT_EQ(runTool({"excerpt", clip, "--out", in("nowhere/b.avi")}).code, kNoOutput);
    EXPECT_EQ(runTool({"excerpt", in("missing.avi"), "--out", in("b.avi")}).code, kFailed);
    EXPECT_THAT(namesIn(folder.path()), testing::ElementsAre("clip.avi", "there.avi"));
}

TEST_F(ToolExcerpt, SaysWhatItKept) {
    const auto told = runTool({"excerpt", soundClip(), "--out", in("b.avi"), "--json"}).json();
    EXPECT_EQ(told["same"], true);
    EXPECT_EQ(told["bytes"], fs::file_size(folder / "clip.avi"));
    EXPECT_LT(told["bytesKept"], 1000);
}

}  // namespace
