#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "oapinfolib/src/bsid.h"
#include "oapinfolib/src/oap_parser_state.h"
#include "oapinfolib/src/oapinfo_api.h"
#include "tests/support/eac3_builder.h"

// Short ways to run the library on built frames, for its tests.

namespace mediasplit {

// A reader at the start of a frame's words, which have to outlive it.
inline BsodReader reader_over(const std::vector<std::uint16_t>& words) {
    BsodReader reader;
    bsod_init(words.data(), static_cast<std::uint16_t>(words.size()), 0, reader);
    return reader;
}

struct HeaderResult {
    int result = 0;
    BitstreamInfo info;
};

inline HeaderResult unpack(const test_support::Bytes& frame) {
    const std::vector<std::uint16_t> words = test_support::to_words(frame);
    BsodReader reader = reader_over(words);
    HeaderResult header;
    header.result = bsid_unp(reader, header.info);
    return header;
}

struct SizeResult {
    int result = 0;
    std::uint16_t words = 0;
};

inline SizeResult frame_size(const test_support::Bytes& frame) {
    const std::vector<std::uint16_t> words = test_support::to_words(frame);
    BsodReader reader = reader_over(words);
    BitstreamInfo info;
    SizeResult size;
    size.result = bsid_getfrmsize(reader, info, size.words);
    return size;
}

inline std::size_t count_of(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

inline std::string fatal_text(const std::string& text, const std::string& source, int line) {
    return "\n\nFATAL ERROR:  " + text + "\n\nError occurred in:\n../../../../oapinfolib/src/" +
           source + ".cpp (line " + std::to_string(line) + ")\n\n";
}

// Catches both output streams from its making on.
class ExpectText {
public:
    ExpectText() {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
    }
    ExpectText(const ExpectText&) = delete;
    ExpectText& operator=(const ExpectText&) = delete;
    ~ExpectText() { take(); }

    std::string out() {
        take();
        return out_;
    }
    std::string err() {
        take();
        return err_;
    }

    // A fatal text from `source` stands `count` times, and nothing else does.
    void fatal(const std::string& text, const std::string& source, std::size_t count) {
        EXPECT_EQ(count_of(err(), "\n\nFATAL ERROR:  " + text +
                                      "\n\nError occurred in:\n../../../../oapinfolib/src/" +
                                      source + ".cpp (line "),
                  count);
        EXPECT_EQ(count_of(err(), "FATAL ERROR"), count);
    }

private:
    void take() {
        if (!taken_) {
            out_ = testing::internal::GetCapturedStdout();
            err_ = testing::internal::GetCapturedStderr();
            taken_ = true;
        }
    }

    bool taken_ = false;
    std::string out_;
    std::string err_;
};

struct RunResult {
    int result = 0;
    OapEsInfo info;
    std::string out;
    std::string err;
};

inline RunResult run(OapParser& parser, const test_support::Bytes& block) {
    ExpectText text;
    RunResult run;
    run.result = oap_es_parser(block.data(), static_cast<std::uint32_t>(block.size()), parser.get(),
                               &run.info);
    run.out = text.out();
    run.err = text.err();
    return run;
}

inline RunResult run_once(const test_support::Bytes& block) {
    OapParser parser = oap_es_parser_new(1);
    return run(parser, block);
}

}  // namespace mediasplit
