#include "standin/settings.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

#include "standin/trace.h"

namespace orvantis::standin {
namespace {

constexpr std::int64_t kMaxDelayMicros = 10'000'000;

[[noreturn]] void refuse(const char* variable, const std::string& text) {
    throw std::runtime_error(std::string(variable) + ": '" + text + "' cannot be used");
}

std::shared_ptr<Gate> openGate(const std::string& name) {
    if (name.empty()) {
        return nullptr;
    }
    const auto isPlain = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
               c == '_' || c == '-';
    };
    if (!std::ranges::all_of(name, isPlain)) {
        refuse("ORVANTIS_STANDIN_GATE", name);
    }
    return std::make_shared<Gate>(name);
}

bool parseDecode(const std::string& text) {
    if (!text.empty() && text != "null") {
        refuse("ORVANTIS_STANDIN_DECODE", text);
    }
    return !text.empty();
}

std::chrono::microseconds parseDelay(const std::string& text) {
    std::int64_t micros = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, micros);
    if (!text.empty() && (error != std::errc() || stop != end || micros < 0 || micros > kMaxDelayMicros)) {
        refuse("ORVANTIS_STANDIN_DELAY_US", text);
    }
    return std::chrono::microseconds(micros);
}

}  // namespace

std::shared_ptr<const Settings> defaultSettings() {
    auto settings = std::make_shared<Settings>();
    settings->faults = std::make_shared<FaultPlan>("");
    return settings;
}

std::shared_ptr<const Settings> readSettings(const EnvironmentReader& environment,
                                             const std::shared_ptr<const Settings>& previous) {
    SettingsTexts texts{environment("ORVANTIS_STANDIN_FAIL"), environment("ORVANTIS_STANDIN_LOG"),
                        environment("ORVANTIS_STANDIN_GATE"), environment("ORVANTIS_STANDIN_DECODE"),
                        environment("ORVANTIS_STANDIN_DELAY_US")};
    if (texts == previous->texts) {
        return previous;
    }
    if (!texts.log.empty() && !Trace::canAppend(texts.log)) {
        refuse("ORVANTIS_STANDIN_LOG", texts.log);
    }
    auto settings = std::make_shared<Settings>();
    settings->faults =
        texts.fail == previous->texts.fail ? previous->faults : std::make_shared<FaultPlan>(texts.fail);
    settings->gate = texts.gate == previous->texts.gate ? previous->gate : openGate(texts.gate);
    settings->nullDecode = parseDecode(texts.decode);
    settings->delay = parseDelay(texts.delayMicros);
    settings->texts = std::move(texts);
    return settings;
}

}  // namespace orvantis::standin
