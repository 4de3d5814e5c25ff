// report.cpp - printing findings for lxspell.
#include "report.h"

#include <cstdlib>

#include <unistd.h>

#include <lxengine.h>

namespace lxspell {

namespace {

constexpr const char *kBold = "\033[1m";
constexpr const char *kRed = "\033[1;31m";
constexpr const char *kYellow = "\033[1;33m";
constexpr const char *kGreen = "\033[32m";
constexpr const char *kReset = "\033[0m";

} // namespace

std::vector<const char *> result_names(int32_t result) {
    std::vector<const char *> names;
    if (result & LX_RES_AUTO_CHANGE) names.push_back("auto-change");
    if (result & LX_RES_COND_CHANGE) names.push_back("conditional change");
    if (result & LX_RES_CAPITALISATION) names.push_back("capitalisation");
    else if (result & LX_RES_MISSPELLED) names.push_back("misspelled");
    if (result & LX_RES_MIXED_CASE) names.push_back("mixed case");
    if (result & LX_RES_WITH_DIGITS) names.push_back("digits");
    if (result & LX_RES_REPEATED) names.push_back("repeated word");
    return names;
}

bool is_misspelling(int32_t result) {
    return (result & (LX_RES_MISSPELLED | LX_RES_AUTO_CHANGE | LX_RES_COND_CHANGE)) != 0;
}

bool use_color(ColorMode mode, FILE *out) {
    if (mode != ColorMode::Auto) return mode == ColorMode::Always;
    const char *noColor = std::getenv("NO_COLOR");
    if (noColor != nullptr && *noColor != '\0') return false;
    return isatty(fileno(out)) != 0;
}

std::string json_quote(const std::string &s) {
    std::string out = "\"";
    for (char ch : s) {
        const auto c = static_cast<unsigned char>(ch);
        switch (ch) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        default:
            if (c < 0x20) {
                char buf[8];
                std::snprintf(buf, sizeof buf, "\\u%04x", c);
                out += buf;
            } else {
                out.push_back(ch);
            }
        }
    }
    out.push_back('"');
    return out;
}

void Reporter::report(const Finding &f) {
    ++count_;
    const std::vector<const char *> names = result_names(f.result);
    switch (format_) {
    case Format::List:
        // The bare word: no formatting routine is brought in for it.
        std::fwrite(f.word.data(), 1, f.word.size(), out_);
        std::fputc('\n', out_);
        break;
    case Format::Json: {
        std::string line = "{\"file\":" + json_quote(f.file) + ",\"line\":" + std::to_string(f.pos.line) +
                           ",\"column\":" + std::to_string(f.pos.column) +
                           ",\"offset\":" + std::to_string(f.pos.byte) + ",\"word\":" + json_quote(f.word) +
                           ",\"kind\":" + json_quote(names.empty() ? "" : names[0]) + ",\"kinds\":[";
        for (size_t i = 0; i < names.size(); ++i) {
            if (i) line += ',';
            line += json_quote(names[i]);
        }
        line += "],\"suggestions\":[";
        for (size_t i = 0; i < f.suggestions.size(); ++i) {
            line += i ? ",{\"word\":" : "{\"word\":";
            line += json_quote(f.suggestions[i].word);
            line += ",\"score\":" + std::to_string(f.suggestions[i].score) + "}";
        }
        line += "]}\n";
        std::fputs(line.c_str(), out_);
        break;
    }
    case Format::Text: {
        const bool change = (f.result & (LX_RES_AUTO_CHANGE | LX_RES_COND_CHANGE)) != 0;
        std::string what;
        for (size_t i = 0; i < names.size(); ++i) what += std::string(i ? ", " : "") + names[i];
        std::string line;
        if (color_) line += kBold;
        line += f.file + ":" + std::to_string(f.pos.line) + ":" + std::to_string(f.pos.column) + ":";
        if (color_) line += kReset;
        line += " " + f.word + ": ";
        line += color_ ? std::string(change ? kYellow : kRed) + what + kReset : what;
        if (!f.suggestions.empty()) {
            line += " (";
            for (size_t i = 0; i < f.suggestions.size(); ++i) {
                if (i) line += ", ";
                line += color_ ? kGreen + f.suggestions[i].word + kReset : f.suggestions[i].word;
            }
            line += ")";
        }
        line += "\n";
        std::fputs(line.c_str(), out_);
        break;
    }
    }
}

} // namespace lxspell
