// What the program tells about itself.
#pragma once

namespace mediasplit {

struct VersionNumber {
    int major_number = 0;
    int minor_number = 0;
    int patch_number = 0;
    const char* suffix = "";
};

// Version 2.0.0 without a suffix.
const VersionNumber& get_version_num();

// Prints name, version and build time, three lines on standard output.
void print_version();

// Prints the usage text on standard output.
void print_usage();

// Both.
void cmdShowUsage();

}  // namespace mediasplit
