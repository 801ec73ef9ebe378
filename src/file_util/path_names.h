// Taking file names apart, making them safe, making temporary ones. "/" and "\\" both separate
// folders here.
#pragma once

#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include "src/util/opt_text.h"

namespace mediasplit {

// The next line of `file` through erasespace; nothing at its end. A line of `size` characters or
// more comes in pieces of `size` - 1.
std::optional<std::string> fgetline(std::size_t size, std::FILE* file);

// Index of the last `character`, or -1.
int findrstr(std::string_view text, char character);

// The folder part with its final separator. A separator at index 0 doesn't count.
std::string splitpath(std::string_view path);

// The file name without folder and extension. 0, or -1 if there is no path or no "." in the name.
int splitfilename(OptText path, std::string& out);

// Appends the file name with its extension to `out`.
void splitfilenamewithext(std::string_view path, std::string& out);

// "tmp/<prefix>_<thread>_<number>", different at each call of the process.
std::string createUniqueFileName(std::string_view prefix);
// The same into `out`.
void mallocAndCreateUniqueFileName(std::string_view prefix, std::optional<std::string>& out);

// True if `c` is one of the characters "<>/\\:*?|" that a file name must not have. (The name says
// the opposite; the sense is as told here.)
bool fileChrValid(char c);
// True if `c` is "+", "-" or ".", which a file name must not begin with.
bool fileFirstChrValid(char c);

// `source` without the forbidden characters. Nothing if there is no source, or with 3006 if it is
// longer than `limit`.
std::optional<std::string> eraseInvalidChr(OptText source, std::size_t limit);

// Makes a text safe as a file name, in place: forbidden characters become "_" or "%ddd_", a name
// past 247 characters is cut at 225 and gets "%_" and a clock value. 0: nothing changed (a "," that
// became "_" doesn't count); 1: changed; -1: no text (3006). Raises 4079 above 248 characters.
int fileStrValid(std::string* text);

// True if all characters are digits. Raises 4025 if the text is empty or longer than 32 characters.
bool allNumber(OptText text);

}  // namespace mediasplit
