// The tags of a master playlist (RFC 8216 4.3.4).
#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "src/hls/attribute_list.h"
#include "src/hls/playlist_reading.h"
#include "src/log/logging.h"
#include "src/util/tree_text.h"

namespace mediasplit {

namespace {

// Longest URI line, in characters.
constexpr std::size_t kLongestUri = 500;

enum class ValueForm : std::uint8_t {
    kAsWritten,
    kUnquoted,
    kCodecs,  // a quoted list whose commas the splitting has not spared
};

template <typename Record>
struct AttributeRow {
    std::string_view name;
    std::optional<std::string> Record::*field;
    ValueForm form = ValueForm::kAsWritten;
    std::string_view reported_name{};  // in messages, if it isn't the name
};

constexpr AttributeRow<MediaRendition> kMediaAttributes[] = {
    {"TYPE", &MediaRendition::type},
    {"GROUP-ID", &MediaRendition::group_id, ValueForm::kUnquoted},
    {"NAME", &MediaRendition::name, ValueForm::kUnquoted},
    {"DEFAULT", &MediaRendition::default_},
    {"AUTOSELECT", &MediaRendition::autoselect},
    {"LANGUAGE", &MediaRendition::language, ValueForm::kUnquoted},
    {"ASSOC-LANGUAGE", &MediaRendition::assoc_language, ValueForm::kUnquoted},
    {"CHANNELS", &MediaRendition::channels, ValueForm::kUnquoted},
    {"URI", &MediaRendition::uri_as_written, ValueForm::kUnquoted},
    {"FORCED", &MediaRendition::forced},
    {"INSTREAM-ID", &MediaRendition::instream_id},
    {"CHARACTERISTICS", &MediaRendition::characteristics},
};

constexpr AttributeRow<VariantStream> kStreamAttributes[] = {
    {"BANDWIDTH", &VariantStream::bandwidth},
    {"AVERAGE-BANDWIDTH", &VariantStream::average_bandwidth},
    {"CODECS", &VariantStream::codecs, ValueForm::kCodecs},
    {"SUPPLEMENTAL-CODECS", &VariantStream::supplemental_codecs, ValueForm::kCodecs},
    {"RESOLUTION", &VariantStream::resolution},
    {"FRAME-RATE", &VariantStream::frame_rate},
    {"HDCP-LEVEL", &VariantStream::hdcp_level},
    {"ALLOWED-CPC", &VariantStream::allowed_cpc},
    {"VIDEO-RANGE", &VariantStream::video_range},
    {"REQ-VIDEO-LAYOUT", &VariantStream::req_video_layout},
    {"AUDIO", &VariantStream::audio, ValueForm::kUnquoted},
    {"VIDEO", &VariantStream::video, ValueForm::kUnquoted},
    {"SUBTITLE", &VariantStream::subtitle, ValueForm::kUnquoted},
    {"CLOSED-CAPTIONS", &VariantStream::closed_captions},
};

constexpr AttributeRow<VariantStream> kIframeAttributes[] = {
    {"BANDWIDTH", &VariantStream::bandwidth},
    {"AVERAGE-BANDWIDTH", &VariantStream::average_bandwidth},
    {"CODECS", &VariantStream::codecs, ValueForm::kCodecs},
    {"SUPPLEMENTAL-CODECS", &VariantStream::supplemental_codecs, ValueForm::kCodecs},
    {"RESOLUTION", &VariantStream::resolution},
    {"HDCP-LEVEL", &VariantStream::hdcp_level},
    {"ALLOWED-CPC", &VariantStream::allowed_cpc},
    // Deliberate: the message has a letter too many.
    {"VIDEO-RANGE", &VariantStream::video_range, ValueForm::kAsWritten, "CVIDEO-RANGE"},
    {"REQ-VIDEO-LAYOUT", &VariantStream::req_video_layout},
    {"VIDEO", &VariantStream::video, ValueForm::kUnquoted},
    {"URI", &VariantStream::uri, ValueForm::kUnquoted},
};

// A tag, as messages and the tree name it.
struct TagName {
    const char* reported;
    const char* node;
};
constexpr TagName kMediaTag = {"#EXT-X-MEDIA", "EXT-X-MEDIA"};
constexpr TagName kStreamTag = {"#EXT-X-STREAM-INF", "EXT-X-STREAM-INF"};
constexpr TagName kIframeTag = {"#EXT-X-I-FRAME-STREAM-INF", "EXT-X-I-FRAME-STREAM-INF"};

// A record in the making.
template <typename Record>
struct TagReading {
    PlaylistReading& playlist;
    TagName tag;
    Record& record;
    Ezxml* node;
};

template <typename Record>
TagReading<Record> begin_tag(PlaylistReading& reading, const TagName& tag, Record& record,
                             std::size_t used) {
    record.index = static_cast<std::uint32_t>(used - 1);
    Ezxml* const node = ezxml_add_child(reading.tree, tag.node, reading.tree_position++);
    ptr2id(node, &record);
    return {reading, tag, record, node};
}

template <typename Record>
const AttributeRow<Record>* find_row(std::span<const AttributeRow<Record>> rows,
                                     std::string_view name) {
    const auto row = std::find_if(rows.begin(), rows.end(),
                                  [name](const auto& entry) { return entry.name == name; });
    return row == rows.end() ? nullptr : &*row;
}

// The first value of an attribute stays.
template <typename Record>
void keep_value(TagReading<Record>& reading, const AttributeRow<Record>& row,
                std::string_view value) {
    std::optional<std::string>& field = reading.record.*row.field;
    const bool is_first = !field.has_value();
    reading.playlist.status |=
        check(is_first, nullptr, 2018, {}, row.reported_name.empty() ? row.name : row.reported_name,
              reading.tag.reported, reading.record.index);
    if (is_first) {
        field = value;
        string2attr(reading.node, row.name, value);
    }
}

// The text of a quoted list, with the pieces that belong to it. An unquoted one ends at its comma;
// without a closing quote the list reaches to the end of the line.
std::string join_codecs(std::string_view value, PieceReader& pieces) {
    if (!value.starts_with('"') || value == "\"\"") {
        return std::string(value.substr(0, value.find('"')));
    }
    value.remove_prefix(value.starts_with("\"\"") ? 2 : 1);
    if (const std::size_t end = value.find('"'); end != std::string_view::npos) {
        return std::string(value.substr(0, end));
    }
    std::string list(value);
    while (const auto piece = pieces.next()) {
        list += ',';
        list += *piece;
        if (list.back() == '"') {
            list.pop_back();
            break;
        }
    }
    return list;
}

// CHANNELS belongs to a rendition.
void check_unknown_attribute(TagReading<VariantStream>& reading, std::string_view name) {
    constexpr std::string_view kChannels = "CHANNELS";
    reading.playlist.status |= check(name != kChannels, nullptr, 2017, {}, kChannels,
                                     reading.tag.reported, reading.record.index);
}

// Splits at every comma, also between quotes.
void read_stream_attributes(TagReading<VariantStream>& reading,
                            std::span<const AttributeRow<VariantStream>> rows,
                            std::string_view text) {
    PieceReader pieces(text);
    while (const auto piece = pieces.next()) {
        const auto attribute = split_attribute(*piece);
        if (!attribute) {
            continue;
        }
        const auto* row = find_row(rows, attribute->name);
        if (row == nullptr) {
            check_unknown_attribute(reading, attribute->name);
        } else if (row->form == ValueForm::kCodecs) {
            keep_value(reading, *row, join_codecs(attribute->value, pieces));
        } else {
            keep_value(reading, *row,
                       row->form == ValueForm::kUnquoted ? without_quotes(attribute->value)
                                                         : attribute->value);
        }
    }
}

// The line behind the tag, unless it holds a "#": then it is the next tag's.
void read_uri_line(TagReading<VariantStream>& reading) {
    PlaylistReading& playlist = reading.playlist;
    auto line = next_line(playlist);
    if (!line) {
        return;
    }
    if (line->find('#') != std::string::npos) {
        playlist.held_line = std::move(line);
        return;
    }
    if (line->size() > kLongestUri) {
        playlist.ended = true;
        return;
    }
    string2txt(reading.node, *line);
    reading.record.uri = make_absolute(playlist, *line);
    reading.record.uri_as_written = std::move(line);
}

}  // namespace

void read_media(PlaylistReading& reading, std::string_view text) {
    MediaRendition* const media = take_record(reading.playlist.media, reading.media_used);
    if (media == nullptr) {
        return;
    }
    auto tag = begin_tag(reading, kMediaTag, *media, reading.media_used);
    PieceReader pieces(text);
    while (const auto piece = pieces.next_quoted()) {
        const auto attribute = split_trimmed_attribute(*piece);
        const auto* row =
            attribute ? find_row<MediaRendition>(kMediaAttributes, attribute->name) : nullptr;
        if (row != nullptr) {
            keep_value(tag, *row,
                       row->form == ValueForm::kUnquoted ? without_quotes(attribute->value)
                                                         : attribute->value);
        }
    }
    if (media->uri_as_written) {
        media->uri = make_absolute(reading, *media->uri_as_written);
    }
}

void read_stream_inf(PlaylistReading& reading, std::string_view text) {
    VariantStream* const stream = take_record(reading.playlist.streams, reading.streams_used);
    if (stream == nullptr) {
        return;
    }
    auto tag = begin_tag(reading, kStreamTag, *stream, reading.streams_used);
    stream->duplicate_index_text = std::to_string(stream->index);
    read_stream_attributes(tag, kStreamAttributes, text);
    read_uri_line(tag);
}

void read_iframe_stream_inf(PlaylistReading& reading, std::string_view text) {
    VariantStream* const stream = take_record(reading.playlist.iframes, reading.iframes_used);
    if (stream == nullptr) {
        return;
    }
    auto tag = begin_tag(reading, kIframeTag, *stream, reading.iframes_used);
    stream->duplicate_index_text = std::to_string(stream->index);
    read_stream_attributes(tag, kIframeAttributes, text);
    if (stream->uri) {
        stream->uri = make_absolute(reading, *stream->uri);
    }
}

}  // namespace mediasplit
