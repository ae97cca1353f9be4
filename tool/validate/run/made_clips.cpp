#include "tool/validate/run/made_clips.h"

#include <fstream>
#include <string_view>

#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool::validate {
namespace {

using Bytes = std::vector<std::uint8_t>;

void put(Bytes& out, std::uint32_t value, std::size_t bytes = 4) {
    for (std::size_t i = 0; i < bytes; ++i) {
        out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
}

void put(Bytes& out, std::string_view text) {
    out.insert(out.end(), text.begin(), text.end());
}

// A chunk, or with `list` a list of that type; of even length in the file.
Bytes chunk(std::string_view id, const Bytes& data, std::string_view list = {}) {
    Bytes out;
    put(out, list.empty() ? id : std::string_view("LIST"));
    put(out, static_cast<std::uint32_t>(data.size() + list.size()));
    put(out, list);
    out.insert(out.end(), data.begin(), data.end());
    out.resize(out.size() + out.size() % 2);
    return out;
}

void append(Bytes& out, const Bytes& more) {
    out.insert(out.end(), more.begin(), more.end());
}

Bytes streamHeader(std::string_view type, std::string_view handler, std::uint32_t scale, std::uint32_t rate,
                   std::uint32_t length, std::uint32_t sampleSize) {
    Bytes out;
    put(out, type);
    put(out, handler);
    put(out, 0);  // flags
    put(out, 0);  // priority, language
    put(out, 0);  // initial frames
    put(out, scale);
    put(out, rate);
    put(out, 0);  // start
    put(out, length);
    put(out, 0);           // suggested buffer size
    put(out, 0xFFFFFFFF);  // quality
    put(out, sampleSize);
    put(out, 0);  // rectangle
    put(out, 0);
    return chunk("strh", out);
}

Bytes videoStreamList(const MadeVideo& video) {
    Bytes format;
    put(format, 40);
    put(format, static_cast<std::uint32_t>(video.width));
    put(format, static_cast<std::uint32_t>(video.height));
    put(format, 1, 2);
    put(format, video.bitsPerPixel, 2);
    put(format, video.tag);
    put(format, static_cast<std::uint32_t>(video.frames.front().size()));
    format.resize(40);
    Bytes list = streamHeader("vids", video.tag, video.scale, video.rate,
                              static_cast<std::uint32_t>(video.frames.size()), 0);
    append(list, chunk("strf", format));
    return chunk("LIST", list, "strl");
}

Bytes soundStreamList(const MadeSound& sound, std::uint32_t length) {
    const std::uint32_t block = std::uint32_t{sound.channels} * sound.bits / 8;
    Bytes format;
    put(format, 1, 2);
    put(format, sound.channels, 2);
    put(format, sound.rate);
    put(format, sound.rate * block);
    put(format, block, 2);
    put(format, sound.bits, 2);
    Bytes list =
        streamHeader("auds", std::string_view("\0\0\0\0", 4), block, sound.rate * block, length, block);
    append(list, chunk("strf", format));
    return chunk("LIST", list, "strl");
}

// Every sample frame and channel has a value of its own, as far as the bits go.
Bytes samples(const MadeSound& sound, std::uint32_t first, std::uint32_t end) {
    Bytes out;
    for (std::uint32_t n = first; n < end; ++n) {
        for (std::uint32_t channel = 0; channel < sound.channels; ++channel) {
            const std::uint32_t value = (n * 2654435761u) ^ (channel * 0x9E3779B9u);
            put(out, value >> (32 - sound.bits), sound.bits / 8);
        }
    }
    return out;
}

// Planes one behind the other without padding.
struct Plane {
    std::int32_t width;
    std::int32_t height;
};

std::vector<Bytes> planarFrames(std::initializer_list<Plane> planes, std::uint32_t count) {
    std::vector<Bytes> out(count);
    for (std::uint32_t frame = 0; frame < count; ++frame) {
        for (const Plane& plane : planes) {
            for (std::int32_t i = 0; i < plane.width * plane.height; ++i) {
                out[frame].push_back(
                    static_cast<std::uint8_t>(20 + (static_cast<std::uint32_t>(i) * 7 + frame * 31) % 200));
            }
        }
    }
    return out;
}

// Uncompressed, for importers of other AVI files: rows of three bytes a pixel in steps of four bytes.
std::vector<Bytes> plainFrames(std::int32_t width, std::int32_t height, std::uint32_t count) {
    const std::int32_t row = (width * 3 + 3) / 4 * 4;
    return planarFrames({{row, height}}, count);
}

}  // namespace

std::vector<std::uint8_t> madeAvi(const MadeVideo& video, const MadeSound& sound) {
    const auto count = static_cast<std::uint32_t>(video.frames.size());
    const auto soundUntil = [&](std::uint32_t frame) {
        return static_cast<std::uint32_t>(std::uint64_t{frame} * sound.rate * video.scale / video.rate);
    };
    Bytes movi;
    Bytes index;
    const auto add = [&](std::string_view id, const Bytes& data) {
        put(index, id);
        put(index, 0x10);  // a key frame
        put(index, static_cast<std::uint32_t>(4 + movi.size()));
        put(index, static_cast<std::uint32_t>(data.size()));
        append(movi, chunk(id, data));
    };
    for (std::uint32_t frame = 0; frame < count; ++frame) {
        add("00db", video.frames[frame]);
        if (sound.channels > 0) {
            add("01wb", samples(sound, soundUntil(frame), soundUntil(frame + 1)));
        }
    }
    Bytes main;
    put(main, static_cast<std::uint32_t>(std::uint64_t{1000000} * video.scale / video.rate));
    put(main, 0);     // bytes a second
    put(main, 0);     // padding
    put(main, 0x10);  // has an index
    put(main, count);
    put(main, 0);  // initial frames
    put(main, sound.channels > 0 ? 2 : 1);
    put(main, 0);  // suggested buffer size
    put(main, static_cast<std::uint32_t>(video.width));
    put(main, static_cast<std::uint32_t>(video.height));
    main.resize(56);
    Bytes headers = chunk("avih", main);
    append(headers, videoStreamList(video));
    if (sound.channels > 0) {
        append(headers, soundStreamList(sound, soundUntil(count)));
    }
    Bytes body = chunk("LIST", headers, "hdrl");
    append(body, chunk("LIST", movi, "movi"));
    append(body, chunk("idx1", index));
    Bytes out;
    put(out, "RIFF");
    put(out, static_cast<std::uint32_t>(4 + body.size()));
    put(out, "AVI ");
    append(out, body);
    return out;
}

std::vector<ClipFile> makeClips(const std::string& folderUtf8) {
    struct Row {
        const char* name;
        MadeVideo video;
        MadeSound sound;
    };
    const Row rows[] = {
        {"made-sound.avi",
         {"O8Y2", 16, 32, 18, 25, 1, planarFrames({{32, 18}, {16, 18}, {16, 18}}, 12)},
         {2, 48000, 16}},
        {"made-odd.avi",
         {"O8RG", 24, 33, 17, 30000, 1001, planarFrames({{33, 17}, {33, 17}, {33, 17}}, 9)},
         {1, 44100, 24}},
        {"made-silent.avi", {"O8Y4", 24, 20, 12, 50, 1, planarFrames({{20, 12}, {20, 12}, {20, 12}}, 5)}, {}},
        {"made-plain.avi",
         {std::string(4, '\0'), 24, 32, 18, 25, 1, plainFrames(32, 18, 12)},
         {2, 48000, 16}},
    };
    std::vector<ClipFile> out;
    for (const Row& row : rows) {
        const std::string path = folderUtf8 + "/" + row.name;
        const Bytes bytes = madeAvi(row.video, row.sound);
        std::ofstream file(pathFromUtf8(path), std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        file.close();
        if (!file) {
            throw ToolError(kNoOutput, "cannot write '" + path + "'");
        }
        out.push_back({path, true});
    }
    return out;
}

}  // namespace simhost::tool::validate
