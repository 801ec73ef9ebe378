#include "oapinfolib/src/fatal.h"

#include <cstdio>

namespace mediasplit {

void print_fatal(const char* text, FatalSite site) {
    std::fprintf(stderr, "\n\nFATAL ERROR:  %s\n\nError occurred in:\n%s (line %d)\n\n", text,
                 site.source, site.line);
}

int refuse(int code, const char* text, FatalSite site) {
    print_fatal(text, site);
    return code;
}

void print_warning(const char* text) {
    std::fprintf(stderr, "\nWARNING:  %s\n", text);
}

}  // namespace mediasplit
