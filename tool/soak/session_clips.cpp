#include "tool/soak/session_clips.h"

#include <initializer_list>
#include <string_view>
#include <utility>

namespace simhost::tool {
namespace {

using Bytes = std::vector<std::uint8_t>;

enum class Index { kNone, kOld, kOpenDml };

struct Picture {
    const char* tag = "";
    std::uint32_t bits = 8;  ///< of a sample
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint32_t> planeWidths;  ///< all planes are as high as the picture
};

struct Sound {
    std::uint32_t tag = 1;  ///< of the samples' format: 1 integers, 3 floats
    std::uint32_t channels = 2;
    std::uint32_t bits = 16;
};

struct Shape {
    const char* name;
    Picture picture;
    std::uint32_t frames;
    std::uint32_t rate;
    std::uint32_t scale;
    std::vector<Sound> sounds;
    Index index;
    std::uint32_t repeatEvery = 0;  ///< each so many-th frame is an empty chunk: the picture before it again
};

constexpr std::uint32_t kSampleRate = 2000;

void put(Bytes& out, std::uint64_t value, std::size_t bytes = 4) {
    for (std::size_t i = 0; i < bytes; ++i) {
        out.push_back(static_cast<std::uint8_t>(i < sizeof value ? value >> (8 * i) : 0));
    }
}

void put(Bytes& out, std::string_view text) {
    out.insert(out.end(), text.begin(), text.end());
}

void append(Bytes& out, const Bytes& more) {
    out.insert(out.end(), more.begin(), more.end());
}

// A chunk, or with `list` a list of that type; of even length in the file.
Bytes chunk(std::string_view id, const Bytes& data, std::string_view list = {}) {
    Bytes out;
    put(out, list.empty() ? id : std::string_view("LIST"));
    put(out, data.size() + list.size());
    put(out, list);
    append(out, data);
    out.resize(out.size() + out.size() % 2);
    return out;
}

// Where the chunks of one stream lie.
struct Place {
    std::string id;
    std::uint64_t offset;  // of the data, from the first byte behind "movi"
    std::uint32_t size;
};

std::string idOf(std::size_t stream, std::string_view kind) {
    return std::string("0") + static_cast<char>('0' + stream) + std::string(kind);
}

std::uint32_t blockOf(const Sound& sound) {
    return sound.channels * sound.bits / 8;
}

Bytes frameBytes(const Picture& picture, std::uint32_t frame) {
    Bytes out;
    for (const std::uint32_t width : picture.planeWidths) {
        for (std::uint32_t i = 0; i < width * picture.height; ++i) {
            const std::uint32_t value = 20 + (i * 7 + frame * 31) % 200;
            put(out, value, picture.bits > 8 ? 2 : 1);
        }
    }
    return out;
}

Bytes soundBytes(const Sound& sound, std::uint64_t first, std::uint64_t end) {
    Bytes out;
    for (std::uint64_t n = first; n < end; ++n) {
        for (std::uint32_t channel = 0; channel < sound.channels; ++channel) {
            const auto value = static_cast<std::uint32_t>(n * 2654435761u) ^ (channel * 0x9E3779B9u);
            // A float between 1 and 2.
            put(out, sound.tag == 3 ? 0x3F800000u | (value >> 9) : value >> (32 - sound.bits),
                sound.bits / 8);
        }
    }
    return out;
}

class Maker {
 public:
    explicit Maker(const Shape& shape) : m_shape(shape) {}

    SessionClip make() {
        const bool video = m_shape.frames > 0;
        const std::uint32_t steps = video ? m_shape.frames : 10;
        const std::size_t firstSound = video ? 1 : 0;
        m_places.resize(firstSound + m_shape.sounds.size());
        for (std::uint32_t step = 0; step < steps; ++step) {
            if (video) {
                const bool empty = m_shape.repeatEvery != 0 && step % m_shape.repeatEvery == 1;
                add(0, "db", empty ? Bytes() : frameBytes(m_shape.picture, step));
            }
            for (std::size_t i = 0; i < m_shape.sounds.size(); ++i) {
                add(firstSound + i, "wb",
                    soundBytes(m_shape.sounds[i], soundUntil(step), soundUntil(step + 1)));
            }
        }
        m_soundLength = soundUntil(steps);
        // The headers are as long whatever the offsets in them are.
        const std::uint64_t movi = 12 + headers(0).size() + 12;
        Bytes body = headers(movi);
        append(body, chunk("", m_movi, "movi"));
        if (m_shape.index == Index::kOld) {
            append(body, chunk("idx1", oldIndex()));
        }
        if (m_shape.index == Index::kOpenDml) {
            for (std::size_t stream = 0; stream < m_places.size(); ++stream) {
                append(body,
                       chunk(std::string("ix0") + static_cast<char>('0' + stream), chunkIndex(stream, movi)));
            }
        }
        SessionClip out;
        out.name = m_shape.name;
        put(out.bytes, "RIFF");
        put(out.bytes, 4 + body.size());
        put(out.bytes, "AVI ");
        append(out.bytes, body);
        out.playable = video && m_shape.picture.tag[0] == 'O' && m_shape.index != Index::kNone;
        out.frames = m_shape.frames;
        out.rate = static_cast<std::int32_t>(m_shape.rate);
        out.scale = static_cast<std::int32_t>(m_shape.scale);
        out.streams = static_cast<std::uint32_t>(m_places.size());
        out.channels = m_shape.sounds.empty() ? 0 : m_shape.sounds.front().channels;
        out.sampleFrames = m_shape.sounds.empty() ? 0 : static_cast<std::int64_t>(m_soundLength);
        return out;
    }

 private:
    std::uint64_t soundUntil(std::uint32_t step) const {
        return std::uint64_t{step} * kSampleRate * m_shape.scale / m_shape.rate;
    }

    void add(std::size_t stream, std::string_view kind, const Bytes& data) {
        const std::string id = idOf(stream, kind);
        m_places[stream].push_back({id, m_movi.size() + 8, static_cast<std::uint32_t>(data.size())});
        m_order.push_back(m_places[stream].back());
        append(m_movi, chunk(id, data));
    }

    Bytes streamHeader(std::string_view type, std::string_view handler, std::uint32_t scale,
                       std::uint32_t rate, std::uint64_t length, std::uint32_t sampleSize) const {
        Bytes out;
        put(out, type);
        put(out, handler);
        out.resize(20);  // flags, priority, language, initial frames
        put(out, scale);
        put(out, rate);
        put(out, 0);  // start
        put(out, length);
        put(out, 0);           // suggested buffer size
        put(out, 0xFFFFFFFF);  // quality
        put(out, sampleSize);
        put(out, 0, 8);  // rectangle
        return chunk("strh", out);
    }

    Bytes videoFormat() const {
        const Picture& picture = m_shape.picture;
        Bytes out;
        put(out, 40);
        put(out, picture.width);
        put(out, picture.height);
        put(out, 1, 2);
        put(out, 24, 2);
        put(out, picture.tag);
        out.resize(40);
        return chunk("strf", out);
    }

    Bytes soundFormat(const Sound& sound) const {
        Bytes out;
        put(out, sound.tag, 2);
        put(out, sound.channels, 2);
        put(out, kSampleRate);
        put(out, std::uint64_t{kSampleRate} * blockOf(sound));
        put(out, blockOf(sound), 2);
        put(out, sound.bits, 2);
        return chunk("strf", out);
    }

    // The super index of a stream, with one entry.
    Bytes superIndex(std::size_t stream, std::uint64_t at) const {
        Bytes out;
        put(out, 4, 2);
        put(out, 0, 2);
        put(out, 1);
        put(out, m_places[stream].empty() ? idOf(stream, "db") : m_places[stream].front().id);
        put(out, 0, 12);
        out.resize(24);
        put(out, at, 8);
        put(out, 8 + 24 + 8 * m_places[stream].size());
        put(out, m_places[stream].size());
        return chunk("indx", out);
    }

    Bytes headers(std::uint64_t movi) const {
        const bool video = m_shape.frames > 0;
        Bytes main;
        put(main, std::uint64_t{1000000} * m_shape.scale / m_shape.rate);
        put(main, 0, 8);
        put(main, m_shape.index == Index::kOld ? 0x10 : 0);
        put(main, m_shape.frames);
        put(main, 0);
        put(main, m_places.size());
        put(main, 0);
        put(main, m_shape.picture.width);
        put(main, m_shape.picture.height);
        main.resize(56);
        Bytes out = chunk("avih", main);
        std::uint64_t indexAt = movi + m_movi.size();
        for (std::size_t stream = 0; stream < m_places.size(); ++stream) {
            const bool isVideo = video && stream == 0;
            const Sound sound = isVideo ? Sound() : m_shape.sounds[stream - (video ? 1 : 0)];
            Bytes list = isVideo ? streamHeader("vids", m_shape.picture.tag, m_shape.scale, m_shape.rate,
                                                m_shape.frames, 0)
                                 : streamHeader("auds", std::string_view("\0\0\0\0", 4), blockOf(sound),
                                                kSampleRate * blockOf(sound), m_soundLength, blockOf(sound));
            append(list, isVideo ? videoFormat() : soundFormat(sound));
            if (m_shape.index == Index::kOpenDml) {
                append(list, superIndex(stream, indexAt));
                indexAt += 8 + 24 + 8 * m_places[stream].size();
            }
            append(out, chunk("", list, "strl"));
        }
        return chunk("", out, "hdrl");
    }

    // The standard index of a stream.
    Bytes chunkIndex(std::size_t stream, std::uint64_t movi) const {
        Bytes out;
        put(out, 2, 2);
        put(out, 0, 1);
        put(out, 1, 1);
        put(out, m_places[stream].size());
        put(out, m_places[stream].front().id);
        put(out, movi, 8);
        put(out, 0);
        for (const Place& place : m_places[stream]) {
            put(out, place.offset);
            put(out, place.size);
        }
        return out;
    }

    Bytes oldIndex() const {
        Bytes out;
        for (const Place& place : m_order) {
            put(out, place.id);
            put(out, 0x10);  // a key frame
            put(out, 4 + place.offset - 8);
            put(out, place.size);
        }
        return out;
    }

    const Shape& m_shape;
    Bytes m_movi;
    std::vector<std::vector<Place>> m_places;  // by stream
    std::vector<Place> m_order;
    std::uint64_t m_soundLength = 0;
};

std::vector<SessionClip> makeAll() {
    const Picture yuv422{"O8Y2", 8, 8, 6, {8, 4, 4}};
    const Picture rgb{"O8RG", 8, 7, 5, {7, 7, 7}};
    const Picture yuv444{"O8Y4", 8, 6, 4, {6, 6, 6}};
    const Picture yuv10{"O0Y2", 10, 12, 6, {12, 6, 6}};
    const Picture rgba{"O8RA", 8, 8, 4, {8, 8, 8, 8}};
    const Picture grey{"O8G0", 8, 9, 3, {9}};
    const Picture rgb14{"O4RG", 14, 5, 3, {5, 5, 5}};
    const Picture foreign{"XYZ1", 8, 8, 6, {8, 4, 4}};
    const Shape shapes[] = {
        {"stereo", yuv422, 12, 25, 1, {{1, 2, 16}}, Index::kOld},
        {"odd", rgb, 9, 30000, 1001, {{1, 1, 24}}, Index::kOld},
        {"silent", yuv444, 5, 50, 1, {}, Index::kOld},
        {"opendml", yuv10, 10, 24, 1, {{3, 2, 32}, {1, 6, 16}}, Index::kOpenDml},
        {"repeats", rgba, 12, 25, 1, {{1, 1, 8}}, Index::kOld, 3},
        {"unindexed", grey, 6, 25, 1, {{1, 2, 32}}, Index::kNone},
        {"wide-sound", rgb14, 4, 25, 1, {{1, 32, 16}, {0x2000, 6, 16}}, Index::kOld},
        {"only-sound", {}, 0, 25, 1, {{1, 2, 16}}, Index::kOld},
        {"compressed-sound", yuv422, 4, 25, 1, {{0x2000, 6, 16}}, Index::kOpenDml},
        {"foreign", foreign, 4, 25, 1, {{1, 2, 16}}, Index::kOld},
    };
    std::vector<SessionClip> out;
    for (const Shape& shape : shapes) {
        out.push_back(Maker(shape).make());
    }
    SessionClip text;
    text.name = "text";
    put(text.bytes, "no AVI at all\n");
    out.push_back(std::move(text));
    return out;
}

}  // namespace

const std::vector<SessionClip>& sessionClips() {
    static const std::vector<SessionClip> clips = makeAll();
    return clips;
}

}  // namespace simhost::tool
