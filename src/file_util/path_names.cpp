#include "src/file_util/path_names.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <vector>

#include "base/osal.h"
#include "src/log/logging.h"
#include "src/util/text.h"

namespace mediasplit {
namespace {

constexpr const char* kSourceName = "../../../../mediacheck2/src/file_util";
constexpr int kEraseInvalidLine = 49;
constexpr int kFileStrValidLine = 233;

// Limits of fileStrValid, in characters.
constexpr std::size_t kLongestName = 248;
constexpr std::size_t kCutName = 225;
constexpr std::size_t kExtraPerEscape = 4;

constexpr std::size_t kLongestNumber = 32;

constexpr std::string_view kForbidden = "<>/\\:*?|";
constexpr std::string_view kEscaped = "<>:*?|";

// Numbers temporary files; the thread identifier stands beside it in the name.
std::atomic<std::uint32_t> cont{0};

std::size_t last_separator(std::string_view path) {
    return path.find_last_of("/\\");
}

// What became of a name in the walk over its characters.
struct NameWalk {
    std::vector<std::size_t> escapes;  // indices of the characters to be escaped
    bool changed = false;
    bool cut = false;
};

// Replaces single characters and notes those that grow, cutting the text where the result would
// become too long.
void walk_name(std::string& text, NameWalk& walk) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        char& c = text[i];
        if (c == ',') {
            c = '_';
        } else if (c == '/' || c == '\\') {
            c = '_';
            walk.changed = true;
        } else if (kEscaped.find(c) != std::string_view::npos) {
            if (i + 1 + kExtraPerEscape * (walk.escapes.size() + 1) > kLongestName) {
                text.resize(i);
                walk.cut = true;
                return;
            }
            walk.escapes.push_back(i);
            walk.changed = true;
        }
        if (i + 1 < text.size() &&
            i + 2 + kExtraPerEscape * walk.escapes.size() > kLongestName - 1) {
            text.resize(i + 1);
            walk.cut = true;
            return;
        }
    }
}

// "%ddd_" of a character's code.
std::string escape_of(char c) {
    const auto code = static_cast<unsigned char>(c);
    std::string result = "%000_";
    result[1] = static_cast<char>('0' + code / 100);
    result[2] = static_cast<char>('0' + code / 10 % 10);
    result[3] = static_cast<char>('0' + code % 10);
    return result;
}

void put_escapes(std::string& text, const std::vector<std::size_t>& escapes) {
    for (auto at = escapes.rbegin(); at != escapes.rend(); ++at) {
        const char c = text[*at];
        if (kEscaped.find(c) == std::string_view::npos) {
            (void)Logging_err_type_check(nullptr, 4078, LogContext{}, c);
            continue;
        }
        text.replace(*at, 1, escape_of(c));
    }
}

}  // namespace

std::optional<std::string> fgetline(std::size_t size, std::FILE* file) {
    if (file == nullptr || size < 2) {
        return std::nullopt;
    }
    std::string line;
    int c = EOF;
    // A file belongs to one thread; locking it for each character would take most of the time.
    while (line.size() + 1 < size && (c = getc_unlocked(file)) != EOF) {
        line += static_cast<char>(c);
        if (c == '\n') {
            break;
        }
    }
    if (line.empty()) {
        return std::nullopt;
    }
    // A text ends at its first zero byte, also when the file is no text at all.
    const std::string_view text = std::string_view(line).substr(0, line.find('\0'));
    return std::string(erasespace(text));
}

int findrstr(std::string_view text, char character) {
    const std::size_t at = text.rfind(character);
    return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

std::string splitpath(std::string_view path) {
    const std::size_t at = last_separator(path);
    if (at == std::string_view::npos || (at == 0 && path.size() > 1)) {
        return {};
    }
    return std::string(path.substr(0, at + 1));
}

int splitfilename(OptText path, std::string& out) {
    if (!path) {
        return -1;
    }
    const std::size_t separator = last_separator(*path);
    const std::string_view name =
        separator == std::string_view::npos ? *path : path->substr(separator + 1);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos) {
        return -1;
    }
    out = name.substr(0, dot);
    return 0;
}

void splitfilenamewithext(std::string_view path, std::string& out) {
    const std::size_t at = last_separator(path);
    out += at == std::string_view::npos || at == 0 ? path : path.substr(at + 1);
}

std::string createUniqueFileName(std::string_view prefix) {
    std::string name = "tmp/";
    name += prefix;
    name += '_';
    name += std::to_string(static_cast<unsigned long>(pthread_self()));
    name += '_';
    name += std::to_string(static_cast<std::int32_t>(cont.fetch_add(1)));
    return name;
}

void mallocAndCreateUniqueFileName(std::string_view prefix, std::optional<std::string>& out) {
    out = createUniqueFileName(prefix);
}

bool fileChrValid(char c) {
    return kForbidden.find(c) != std::string_view::npos;
}

bool fileFirstChrValid(char c) {
    return c == '+' || c == '-' || c == '.';
}

std::optional<std::string> eraseInvalidChr(OptText source, std::size_t limit) {
    if (!source) {
        return std::nullopt;
    }
    if (source->size() > limit) {
        (void)Logging_err_type_check(nullptr, 3006, LogContext{}, kSourceName, kEraseInvalidLine);
        return std::nullopt;
    }
    std::string result = source.str();
    std::erase_if(result, fileChrValid);
    return result;
}

int fileStrValid(std::string* text) {
    if (text == nullptr) {
        (void)Logging_err_type_check(nullptr, 3006, LogContext{}, kSourceName, kFileStrValidLine);
        return -1;
    }
    if (text->empty()) {
        return 0;
    }
    NameWalk walk;
    if (fileFirstChrValid(text->front())) {
        text->front() = '_';
        walk.changed = true;
    }
    if (text->size() > kLongestName) {
        (void)Logging_err_type_check(nullptr, 4079, LogContext{}, *text);
        text->resize(kCutName);
        walk.cut = true;
        walk.changed = true;
    }
    walk_name(*text, walk);
    put_escapes(*text, walk.escapes);
    if (walk.cut) {
        text->resize(std::min(text->size(), kCutName));
        *text += "%_" + std::to_string(osal_get_time());
    }
    return walk.changed ? 1 : 0;
}

bool allNumber(OptText text) {
    if (!text) {
        return false;
    }
    if (text->empty() || text->size() > kLongestNumber) {
        (void)Logging_err_type_check(nullptr, 4025, LogContext{}, *text);
        return false;
    }
    return text->find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace mediasplit
