#include <array>

#include "oapinfolib/src/bsid_tables.h"
#include "oapinfolib/src/disp.h"
#include "oapinfolib/src/disp_line.h"

namespace mediasplit {

namespace {

constexpr std::array<const char*, kChannelPositions> kChannelNames{
    "L",  "C",        "R",      "Ls",       "Rs",  "Lc, Rc",    "Lrs, Rrs", "Cs",
    "Ts", "Lsd, Rsd", "Lw, Rw", "Lvh, Rvh", "Cvh", "Reserved!", "LFE2",     "LFE"};

constexpr std::array<const char*, 8> kCodingModes{"1+1", "1/0", "2/0", "3/0",
                                                  "2/1", "3/1", "2/2", "3/2"};

const char* on_off(std::uint16_t value) {
    return value == 1 ? "On" : "Off";
}

const char* syntax_name(std::uint16_t bsid) {
    if (is_oap_bsid(bsid)) {
        return " (Orvel Audio Plus)";
    }
    return is_oa_bsid(bsid) ? " (Orvel Audio)" : "";
}

void print_stream_type(const SubstreamRecord& frame, bool doubtful) {
    DispLine line;
    if (frame.strmtyp == 2) {
        line.add("            Stream type: Transcoded");
        line.end(doubtful);
    } else if (frame.strmtyp == 3) {
        line.add("            Stream type: Reserved");
        line.end(doubtful);
    }
}

void print_coding(const SubstreamRecord& frame, bool doubtful) {
    DispLine line;
    line.took(std::snprintf(line.at(), line.room(), "            Number of blocks per frame: %d",
                            int{frame.numblks}));
    line.end(doubtful);
    line.took(std::snprintf(line.at(), line.room(), "            Number of coded channels: %d.%d",
                            int{frame.nfchans}, int{frame.lfeon}));
    line.end(doubtful);
    line.took(std::snprintf(line.at(), line.room(), "            Audio coding mode: %s",
                            kCodingModes[frame.acmod & 7U]));
    line.end(doubtful);
    line.took(std::snprintf(line.at(), line.room(), "            LFE on: %s", on_off(frame.lfeon)));
    line.end(doubtful);
    line.add("            Coded channels: ");
    disp_printchans(frame.channel_present, line);
    line.end(doubtful);
}

void print_rates(const SubstreamRecord& frame, bool doubtful) {
    DispLine line;
    line.took(std::snprintf(line.at(), line.room(), "            Source sample rate: %d Hz",
                            static_cast<int>(frame.sample_rate)));
    line.end(doubtful);
    if (is_oap_bsid(frame.bsid)) {
        line.took(std::snprintf(line.at(), line.room(), "            Double source sample rate: %s",
                                on_off(frame.sourcefscod)));
        line.end(doubtful);
    }
    if (frame.strmtyp == 1) {
        line.took(std::snprintf(line.at(), line.room(), "            Channel map: 0x%04hX",
                                frame.chanmap));
        line.end(doubtful);
    }
    line.took(std::snprintf(line.at(), line.room(),
                            "            Number of 16b words in frame (+/-1): %d",
                            static_cast<int>(frame.frame_words)));
    line.end(doubtful);
    line.took(std::snprintf(line.at(), line.room(), "            Data rate: %2.1f kbps",
                            static_cast<double>(frame.rate)));
    line.end(doubtful);
}

}  // namespace

const char* disp_printstatus(FrameStatus status) {
    switch (status) {
        case kStatusGood:
            return "No CRC errors";
        case kStatusFullError:
            return "Full frame CRC error exists (information may be corrupt!)";
        case kStatusPartialError:
            return "Partial frame CRC error exists (information may be corrupt!)";
        default:
            return "Unknown";
    }
}

void disp_printchans(const std::array<std::uint32_t, kChannelPositions>& present, DispLine& line) {
    line.add("[");
    const char* separator = "";
    for (std::size_t position = 0; position < kChannelPositions; ++position) {
        if (present[position] != 0) {
            line.add(separator);
            line.add(kChannelNames[position]);
            separator = ", ";
        }
    }
    line.add("]");
}

int disp_printfrminfo(std::uint16_t flags, const SubstreamRecord& frame) {
    const bool doubtful = frame.status == kStatusFullError || frame.status == kStatusPartialError;
    DispLine line;
    line.took(std::snprintf(line.at(), line.room(), "            BSID: %d%s", int{frame.bsid},
                            syntax_name(frame.bsid)));
    line.end(doubtful);
    print_stream_type(frame, doubtful);
    line.took(std::snprintf(line.at(), line.room(), "            Substream ID: %d",
                            int{frame.substreamid}));
    line.end(doubtful);
    if (frame.strmtyp == 0 || frame.strmtyp == 2) {
        line.took(std::snprintf(line.at(), line.room(), "            Converter sync flag: %s",
                                on_off(frame.convsync)));
        line.end(doubtful);
    }
    print_coding(frame, doubtful);
    print_rates(frame, doubtful);
    line.took(std::snprintf(line.at(), line.room(), "            Frame status: %s",
                            disp_printstatus(frame.status)));
    line.end(doubtful);
    if ((flags & kDispBsi) != 0) {
        disp_printbsi(frame.bsi, doubtful);
    }
    if ((flags & kDispAuxdata) != 0) {
        disp_printauxdata(frame.aux.bits, frame.aux.words.data(), doubtful);
    }
    if ((flags & kDispEncinfo) != 0) {
        disp_printencinfo(frame.encinfo_present, frame.encinfo, doubtful);
    }
    return 0;
}

int disp_printauxdata(int bits, const std::uint16_t* data, bool has_crc_error) {
    constexpr std::size_t kWordsPerLine = 10;
    DispLine line;
    if (bits <= 0 || data == nullptr) {
        line.add("            No Auxdata information exists");
        line.end(has_crc_error);
        return 0;
    }
    line.took(
        std::snprintf(line.at(), line.room(), "            Number of Auxdata bits: %d", bits));
    line.end(has_crc_error);
    line.add("            Auxdata:");
    line.end(has_crc_error);
    const std::size_t words = std::min((static_cast<std::size_t>(bits) - 1) / 16 + 1, kMaxAuxWords);
    for (std::size_t i = 0; i < words; ++i) {
        line.add(i % kWordsPerLine == 0 ? "            " : " ");
        line.took(std::snprintf(line.at(), line.room(), "%04hX", data[i]));
        if ((i + 1) % kWordsPerLine == 0 || i + 1 == words) {
            line.end(has_crc_error);
        }
    }
    return 0;
}

int disp_printencinfo(int bits, std::uint16_t data, bool has_crc_error) {
    DispLine line;
    if (bits > 0) {
        line.took(std::snprintf(line.at(), line.room(), "            Encinfo: %s", on_off(data)));
    } else {
        line.add("            No Encinfo information exists");
    }
    line.end(has_crc_error);
    return 0;
}

}  // namespace mediasplit
