#pragma once

// Fatal texts and warnings of the E-AC-3 analysis. Both go to the standard error stream, each in
// one call of the stream, and never through the message catalogue of the program around it.

namespace mediasplit {

// The place that raises a fatal text. `line` is a stable number of the place: users search for it,
// so it stays when the code moves.
struct FatalSite {
    const char* source = "";
    int line = 0;
};

inline constexpr const char* kSourceOapinfoApi = "../../../../oapinfolib/src/oapinfo_api.cpp";
inline constexpr const char* kSourceDitFio = "../../../../oapinfolib/src/dit_fio.cpp";
inline constexpr const char* kSourceFmiApi = "../../../../oapinfolib/src/fmi_api.cpp";
inline constexpr const char* kSourceBsidOa = "../../../../oapinfolib/src/bsid_oa.cpp";
inline constexpr const char* kSourceBsidOap = "../../../../oapinfolib/src/bsid_oap.cpp";
inline constexpr const char* kSourceTsi = "../../../../oapinfolib/src/tsi.cpp";
inline constexpr const char* kSourceTsc = "../../../../oapinfolib/src/tsc.cpp";

// Writes "\n\nFATAL ERROR:  %s\n\nError occurred in:\n%s (line %d)\n\n".
void print_fatal(const char* text, FatalSite site);

// Writes a fatal text and gives `code`.
int refuse(int code, const char* text, FatalSite site);

// Writes "\nWARNING:  %s\n".
void print_warning(const char* text);

}  // namespace mediasplit
