#include "tool/doctor/doctor_checks.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <set>

namespace simhost::tool {
namespace {

constexpr std::array kCodecFunctions = {
    "orvantis_library_init", "orvantis_library_close",    "orvantis_open",
    "orvantis_close",        "orvantis_decompress_query", "orvantis_decompress_begin",
    "orvantis_decompress",   "orvantis_decompress_end",   "orvantis_get_string",
    "orvantis_get_param",    "orvantis_compress_query"};

// Zero, then 'ORVA' with its first character in the highest byte.
constexpr std::array<std::uint8_t, 6> kRegistration = {0, 0, 'A', 'V', 'R', 'O'};

const char* machineName(std::uint16_t machine) {
    switch (machine) {
        case PeFile::kMachineX64:
            return "64-bit x64";
        case PeFile::kMachineX86:
            return "32-bit";
        case PeFile::kMachineArm64:
            return "64-bit ARM";
        default:
            return "of an unknown processor";
    }
}

bool isX64Library(const std::optional<PeFile>& pe) {
    return pe && pe->machine == PeFile::kMachineX64 && pe->is64Bit && pe->isLibrary;
}

std::string kindOf(const std::optional<PeFile>& pe) {
    if (!pe) {
        return "no Windows library";
    }
    return std::string(machineName(pe->machine)) + (pe->isLibrary ? " library" : " program, no library");
}

std::string versionOf(const LibraryFile& file) {
    return !file.pe || file.pe->version.empty() ? "without a version" : "version " + file.pe->version;
}

bool exports(const LibraryFile& file, const char* name) {
    return file.pe &&
           std::find(file.pe->exports.begin(), file.pe->exports.end(), name) != file.pe->exports.end();
}

const char* sourceText(FolderSource source) {
    switch (source) {
        case FolderSource::kRegistry:
            return " (registered by a host)";
        case FolderSource::kUsual:
            return " (the usual place)";
        case FolderSource::kGiven:
            break;
    }
    return " (as given)";
}

// Several copies: which one the host loads is not ours to say, and an old one may win.
Check checkSeveral(std::span<const LibraryFile> copies) {
    std::set<std::string> versions;
    for (const LibraryFile& copy : copies) {
        versions.insert(versionOf(copy));
    }
    Check out{CheckState::kWarning, "installed",
              std::to_string(copies.size()) + " copies: which of them the host takes is its choice",
              "keep one and remove the others"};
    if (versions.size() > 1) {
        out.state = CheckState::kBad;
        out.found =
            std::to_string(copies.size()) + " copies with different versions: the host may take an old one";
        out.advice = "keep the newest and remove the others";
    }
    return out;
}

Check checkCopy(const LibraryFile& copy, const std::string& toolVersion) {
    const std::string reinstall = "install the plug-in anew; this copy is damaged or not the plug-in";
    Check check{CheckState::kBad, "plug-in file", copy.path + ": ", reinstall};
    if (!isX64Library(copy.pe)) {
        check.found += kindOf(copy.pe) + "; the host needs a 64-bit x64 library";
    } else if (!exports(copy, "xImportEntry")) {
        check.found += "has no function xImportEntry";
    } else if (copy.pe->importerResource.size() < kRegistration.size() ||
               !std::equal(kRegistration.begin(), kRegistration.end(), copy.pe->importerResource.begin())) {
        check.found += "has no registration as an importer (resource IMPT 1000)";
    } else {
        check.found += versionOf(copy);
        const bool same = copy.pe->version == toolVersion || copy.pe->version.starts_with(toolVersion + ".");
        check.state = same ? CheckState::kGood : CheckState::kWarning;
        check.advice =
            same ? "" : "this tool is version " + toolVersion + "; if that is newer, update the plug-in";
    }
    return check;
}

}  // namespace

std::span<const char* const> codecFunctions() noexcept {
    return kCodecFunctions;
}

std::vector<Check> checkFolders(std::span<const PluginFolder> folders) {
    std::vector<Check> out;
    bool any = false;
    for (const PluginFolder& folder : folders) {
        if (folder.exists) {
            any = true;
            out.push_back({CheckState::kGood, "plug-in folder", folder.path + sourceText(folder.source), ""});
        } else if (folder.source != FolderSource::kUsual) {
            out.push_back({CheckState::kWarning, "plug-in folder",
                           folder.path + sourceText(folder.source) + " does not exist",
                           folder.source == FolderSource::kRegistry
                               ? "repair or remove the host that it belongs to"
                               : "name a folder that exists"});
        }
    }
    if (!any) {
        out.push_back({CheckState::kBad, "plug-in folder", "none was found",
                       "install Adobe Premiere Pro first, or name the folder with --plugin-folder"});
    }
    return out;
}

std::vector<Check> checkCopies(std::span<const LibraryFile> copies, std::span<const PluginFolder> folders,
                               const std::string& toolVersion) {
    std::vector<Check> out;
    if (copies.empty()) {
        const auto first =
            std::find_if(folders.begin(), folders.end(), [](const auto& f) { return f.exists; });
        out.push_back(
            {CheckState::kBad, "installed",
             std::string("no ") + kPluginFileName + " in the plug-in folders: the host does not see it",
             first == folders.end()
                 ? "run the installer of the plug-in"
                 : std::string("run the installer, or copy ") + kPluginFileName + " into " + first->path});
        return out;
    }
    if (copies.size() > 1) {
        out.push_back(checkSeveral(copies));
    }
    for (const LibraryFile& copy : copies) {
        out.push_back(checkCopy(copy, toolVersion));
    }
    return out;
}

std::vector<Check> checkCodecBeside(std::span<const std::string> codecsBeside, bool codecFound) {
    std::vector<Check> out;
    for (const std::string& path : codecsBeside) {
        out.push_back(
            {CheckState::kWarning, "codec beside the plug-in",
             path + " is of no use there: the host does not look for libraries beside plug-ins",
             codecFound ? "remove it" : "run the installer of the codec, which puts it on the system path"});
    }
    return out;
}

std::vector<Check> checkCodec(const CodecSearch& search) {
    const std::string name = "codec library";
    const std::vector<LibraryFile>& found = search.found;
    const std::string again = "install the 64-bit Orvantis codec, then start the host with Shift held down";
    if (found.empty() && !search.narrowPath.empty()) {
        return {{CheckState::kBad, name,
                 "only the 32-bit one is installed, " + search.narrowPath +
                     ": the host drops the plug-in without a word",
                 again}};
    }
    if (found.empty()) {
        return {{CheckState::kBad, name,
                 std::string(kCodecFileName) + " is in none of the " + std::to_string(search.folders) +
                     " folders that the host's loader searches: the host drops the plug-in without a word",
                 again + "; if it lies beside the host's program, name that folder with --codec-folder"}};
    }
    std::vector<Check> out;
    const LibraryFile& used = found.front();
    Check check{CheckState::kGood, name, used.path + ": ", ""};
    if (!isX64Library(used.pe)) {
        check.state = CheckState::kBad;
        check.found += kindOf(used.pe) + "; the host needs a 64-bit x64 library";
        check.advice = "install the 64-bit Orvantis codec, or take this folder off the path";
        out.push_back(check);
        return out;
    }
    std::string missing;
    for (const char* function : kCodecFunctions) {
        if (!exports(used, function)) {
            missing += (missing.empty() ? "" : ", ") + std::string(function);
        }
    }
    if (missing.empty()) {
        check.found +=
            versionOf(used) + ", 64-bit, with all " + std::to_string(kCodecFunctions.size()) + " functions";
    } else {
        check.state = CheckState::kBad;
        check.found += versionOf(used) + ", lacks " + missing;
        check.advice = "update the Orvantis codec";
    }
    out.push_back(check);
    for (std::size_t i = 1; i < found.size(); ++i) {
        out.push_back(
            {CheckState::kWarning, name,
             "a second one, " + found[i].path + " (" + versionOf(found[i]) + "), is hidden by the first",
             "remove the older one"});
    }
    return out;
}

Check checkLogSwitch(LogSetting setting) {
    const std::string key = R"(HKEY_CURRENT_USER\Software\Orvantis, EnableAdobeLog)";
    // Without /f the command asks before it replaces a value.
    const auto command = [](const char* value) {
        return std::string(R"(reg add HKCU\Software\Orvantis /v EnableAdobeLog /t REG_DWORD /d )") + value +
               " /f";
    };
    switch (setting) {
        case LogSetting::kOn:
            return {CheckState::kWarning, "diagnostic log", "on, which makes the host a little slower",
                    "switch it off when you are done: " + command("0")};
        case LogSetting::kOff:
            return {CheckState::kGood, "diagnostic log", "off; to switch it on: " + command("1"), ""};
        case LogSetting::kUnknown:
            break;
    }
    return {CheckState::kWarning, "diagnostic log", "its switch cannot be read", "look at " + key};
}

std::size_t badChecks(std::span<const Check> checks) noexcept {
    return static_cast<std::size_t>(std::count_if(
        checks.begin(), checks.end(), [](const Check& c) { return c.state == CheckState::kBad; }));
}

std::string firstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

std::string checkText(const Check& check, bool colour) {
    struct Look {
        const char* word;
        const char* colour;
    };
    constexpr std::array<Look, 3> kLooks = {
        {{"ok  ", "\x1b[32m"}, {"warn", "\x1b[33m"}, {"FAIL", "\x1b[31m"}}};
    const Look& look = kLooks[static_cast<std::size_t>(check.state)];
    std::string out = colour ? std::string(look.colour) + look.word + "\x1b[0m" : look.word;
    out += "  " + check.name + ": " + check.found + "\n";
    return check.advice.empty() ? out : out + "      -> " + check.advice + "\n";
}

std::string checksJson(std::span<const Check> checks, const nlohmann::ordered_json& versions) {
    constexpr std::array kStates = {"good", "warning", "bad"};
    nlohmann::ordered_json out = {{"versions", versions}};
    out["checks"] = nlohmann::ordered_json::array();
    std::array<int, 3> counts{};
    for (const Check& check : checks) {
        const auto state = static_cast<std::size_t>(check.state);
        ++counts[state];
        out["checks"].push_back({{"state", kStates[state]},
                                 {"name", check.name},
                                 {"found", check.found},
                                 {"advice", check.advice}});
    }
    for (std::size_t i = 0; i < counts.size(); ++i) {
        out[kStates[i]] = counts[i];
    }
    return out.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace simhost::tool
