#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace korvane {

// Writes an umockdev recording out as a sysfs folder below `root` (so its
// devices land in root/devices/...): text attributes (A:, with GLib escapes),
// binary attributes (H:) and links (L:). Udev properties, device nodes and
// devlinks are of no use to a sysfs reader and are left out. The recording is
// a fixture we trust; this is no parser of outside input.
inline std::string glibUnescaped(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            out += text[i];
            continue;
        }
        const char c = text[++i];
        if (c >= '0' && c <= '7') {
            int value = 0;
            std::size_t digits = 0;
            while (digits < 3 && i < text.size() && text[i] >= '0' && text[i] <= '7') {
                value = value * 8 + (text[i++] - '0');
                ++digits;
            }
            --i;
            out += static_cast<char>(value);
            continue;
        }
        switch (c) {
        case 'n':
            out += '\n';
            break;
        case 't':
            out += '\t';
            break;
        case 'r':
            out += '\r';
            break;
        case 'b':
            out += '\b';
            break;
        case 'f':
            out += '\f';
            break;
        case 'v':
            out += '\v';
            break;
        default:
            out += c;
            break;
        }
    }
    return out;
}

inline void writeUmockdevRecording(const std::filesystem::path& recording,
                                   const std::filesystem::path& root) {
    std::ifstream in(recording);
    std::string line;
    std::filesystem::path device;
    while (std::getline(in, line)) {
        if (line.size() < 3 || line[1] != ':') {
            continue;
        }
        const std::string body = line.substr(3);
        if (line[0] == 'P') {
            device = root / std::filesystem::path(body).relative_path();
            std::filesystem::create_directories(device);
            continue;
        }
        const auto equals = body.find('=');
        if (device.empty() || equals == std::string::npos) {
            continue;
        }
        const std::filesystem::path target = device / body.substr(0, equals);
        const std::string value = body.substr(equals + 1);
        std::filesystem::create_directories(target.parent_path());
        if (line[0] == 'A') {
            std::ofstream(target, std::ios::binary) << glibUnescaped(value);
        } else if (line[0] == 'H') {
            std::string bytes;
            for (std::size_t i = 0; i + 1 < value.size(); i += 2) {
                bytes += static_cast<char>(std::stoi(value.substr(i, 2), nullptr, 16));
            }
            std::ofstream(target, std::ios::binary) << bytes;
        } else if (line[0] == 'L') {
            std::error_code ignored;
            std::filesystem::create_symlink(value, target, ignored);
        }
    }
}

} // namespace korvane
