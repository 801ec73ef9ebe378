#include "src/mp4demuxer/box_walker.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>

#include "src/mp4demuxer/box_reader.h"
#include "src/mp4demuxer/box_table.h"
#include "src/util/tree_text.h"

namespace mediasplit {

namespace {

constexpr std::uint64_t kMaxWalkSize = 0x200000000;
constexpr std::int64_t kHeaderSize = 8;
constexpr std::size_t kMaxPath = 255;
constexpr std::size_t kFewTypes = 16;

// A box header as read.
struct BoxHeader {
    std::int64_t size = 0;       // less the extension
    std::int64_t extension = 0;  // 8 for a size-extended box
    [[nodiscard]] std::int64_t payload() const { return size - kHeaderSize; }
    // Unsigned, since sizes of 2^63 and the like must wrap and not overflow.
    [[nodiscard]] std::int64_t told_size() const {
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(size) +
                                         static_cast<std::uint64_t>(extension));
    }
};

enum class Next { kSibling, kParentEnds };

// One output call a line keeps the lines of several workers whole.
template <typename... Values>
void print_line(const char* format, const Values&... values) {
    std::array<char, 1024> line{};
    const int length = std::snprintf(line.data(), line.size(), format, values...);
    if (length > 0) {
        const std::size_t size =
            std::min<std::size_t>(static_cast<std::size_t>(length), line.size() - 1);
        static_cast<void>(std::fwrite(line.data(), 1, size, stdout));
    }
}

void move_by(std::int64_t count, InputFile& file) {
    if (count != 0) {
        static_cast<void>(SeekBytes(count, file));
    }
}

bool is_out_of_range(std::int64_t size) {
    return static_cast<std::uint64_t>(size) > kMaxWalkSize;
}

void print_too_little(const BoxNode& parent, std::int64_t left) {
    print_line("The remain data in the box [%s] is not enough for a inner box: %" PRId64 "\n",
               box_path(parent).c_str(), left);
}

std::uint32_t read_type(InputFile& file) {
    const std::uint32_t code = f_src_read_u32(file);
    for (int shift = 0; shift < 32; shift += 8) {
        const std::uint32_t byte = code >> shift & 0xFF;
        if (byte < 0x20 || byte > 0x7E) {
            return 0;
        }
    }
    return code;
}

// An entry of a type that isn't known still counts by its track's kind, so that its configuration
// boxes are read.
bool parse_unknown_sample_entry(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    if (node.parent->type != fourcc("stsd") || demuxer.current == nullptr) {
        return false;
    }
    switch (demuxer.current->stream_type) {
        case kStreamVideo:
            print_line("unsupport the video SampleEntry box %s\n", box_path(node).c_str());
            static_cast<void>(parse_box_video(demuxer, file, node, tree));
            return true;
        case kStreamAudio:
            print_line("unsupport the audio SampleEntry box %s\n", box_path(node).c_str());
            static_cast<void>(parse_box_audio(demuxer, file, node, tree));
            return true;
        default:
            return false;
    }
}

// The element of a box in the optional tree: null without a tree.
Ezxml* add_to_tree(Ezxml* tree, const BoxNode& node, int index) {
    if (tree == nullptr) {
        return nullptr;
    }
    Ezxml* child =
        ezxml_add_child_copy(tree, box_type_text(node), static_cast<std::uint64_t>(index));
    longlong2attr(child, "size", node.size);
    return child;
}

HandlerResult dispatch(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree,
                       int index) {
    const BoxRow* row = node.depth > kMaxBoxDepth ? nullptr : find_box_row(node.type);
    if (row != nullptr && row->needs_track && demuxer.current == nullptr) {
        return kRefused;
    }
    if (row != nullptr) {
        return row->handler(demuxer, file, node,
                            row->in_tree ? add_to_tree(tree, node, index) : tree);
    }
    if (node.depth > kMaxBoxDepth || !parse_unknown_sample_entry(demuxer, file, node, tree)) {
        print_line("skip box %s\n", box_path(node).c_str());
    }
    return kHandled;
}

// The walk over one parent: what is left of it, and what its handlers returned so far.
class Walk {
public:
    Walk(Mp4Demuxer& demuxer, InputFile& file, BoxNode& parent, Ezxml* tree, int index)
        : demuxer_(&demuxer),
          file_(&file),
          parent_(&parent),
          tree_(tree),
          index_(index),
          left_(parent.size) {}

    HandlerResult run() {
        if (is_out_of_range(left_)) {
            print_line("The mp4 %s size is out of the range we support: %" PRId64 "\n",
                       box_path(*parent_).c_str(), left_);
            return kRefused;
        }
        while (left_ != 0) {
            if (left_ < kHeaderSize) {
                print_too_little(*parent_, left_);
                move_by(left_, *file_);
                return kRefused;
            }
            if (visit_child() == Next::kParentEnds) {
                return kRefused;
            }
        }
        return result_;
    }

private:
    Next visit_child() {
        BoxHeader header;
        header.size = f_src_read_u32(*file_);
        if (header.size == 0) {
            header.size = left_;
        }
        BoxNode node;
        node.type = read_type(*file_);
        node.parent = parent_;
        node.depth = parent_->depth + 1;
        node.index = parent_->children.add(node.type);
        ++parent_->child_count;
        if (header.size == 1 && !read_extended_size(node, header)) {
            return Next::kParentEnds;
        }
        if (!fits(node, header)) {
            move_by(left_ - kHeaderSize, *file_);
            return Next::kParentEnds;
        }
        node.size = header.payload();
        const std::uint64_t end =
            CurrentOffset(*file_) + static_cast<std::uint64_t>(header.payload());
        result_ |= dispatch(*demuxer_, *file_, node, tree_, index_++);
        move_by(static_cast<std::int64_t>(end - CurrentOffset(*file_)), *file_);
        left_ -= header.size;
        if (is_out_of_range(left_)) {
            print_line("The remained data size in box [%s] is invalid: %" PRId64 "\n",
                       box_path(*parent_).c_str(), left_);
            return Next::kParentEnds;
        }
        return Next::kSibling;
    }

    bool read_extended_size(const BoxNode& node, BoxHeader& header) {
        if (left_ < 2 * kHeaderSize) {
            print_line(
                "The remain data in the box [%s] is not enough for the size-extended box: %" PRId64
                "\n",
                box_path(node).c_str(), left_);
            move_by(left_ - kHeaderSize, *file_);
            return false;
        }
        header.extension = kHeaderSize;
        left_ -= kHeaderSize;
        const std::uint64_t size = f_src_read_u64(*file_);
        header.size = static_cast<std::int64_t>(size - kHeaderSize);
        return true;
    }

    bool fits(const BoxNode& node, const BoxHeader& header) const {
        if (header.size < kHeaderSize) {
            print_line(
                "The box size [%" PRId64
                "] indicated in the box [%s] is less than the mp4 box header size. So all the "
                "remain data [%" PRId64 "] in the box [%s] is released.\n",
                header.told_size(), box_path(node).c_str(), left_, box_path(*parent_).c_str());
            return false;
        }
        // Deliberate: the payload and not the size is compared, so a box may overrun its parent by
        // 8 bytes here; the parent then ends behind it.
        if (left_ < header.payload()) {
            print_line("The box size [%" PRId64
                       "] indicated in the box [%s] is beyond the remain data [%" PRId64
                       "] in the parent box [%s]\n",
                       header.told_size(), box_path(node).c_str(), left_ + header.extension,
                       box_path(*parent_).c_str());
            return false;
        }
        return true;
    }

    Mp4Demuxer* demuxer_;
    InputFile* file_;
    BoxNode* parent_;
    Ezxml* tree_;
    int index_;  // of the next child in the tree
    std::int64_t left_;
    HandlerResult result_ = kHandled;
};

}  // namespace

std::uint32_t SiblingCounts::add(std::uint32_t type) {
    if (!many.empty()) {
        return many[type]++;
    }
    for (auto& [known, count] : few) {
        if (known == type) {
            return count++;
        }
    }
    few.emplace_back(type, 1);
    if (few.size() > kFewTypes) {
        many.insert(few.begin(), few.end());
        few.clear();
    }
    return 0;
}

bool valid_mp4_box_type(std::string_view type) {
    return type.size() == 4 && std::all_of(type.begin(), type.end(),
                                           [](char byte) { return byte >= 0x20 && byte <= 0x7E; });
}

std::string box_type_text(const BoxNode& node) {
    if (node.type == 0) {
        return "(invalid string)";
    }
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        text += static_cast<char>(node.type >> shift & 0xFF);
    }
    return text;
}

std::string box_path(const BoxNode& node) {
    if (node.parent == nullptr) {
        return box_type_text(node);
    }
    std::string path = box_path(*node.parent);
    path += node.parent->parent == nullptr ? ": " : "->";
    path += box_type_text(node);
    if (node.index > 0) {
        path += '[';
        path += std::to_string(node.index);
        path += ']';
    }
    if (path.size() > kMaxPath) {
        path.resize(kMaxPath);
    }
    return path;
}

HandlerResult parse_box_with_index(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree,
                                   int index) {
    return Walk(demuxer, file, node, tree, index).run();
}

HandlerResult parse_box(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_box_with_index(demuxer, file, node, tree, 0);
}

HandlerResult parse_box_skip(Mp4Demuxer& /*demuxer*/, InputFile& file, BoxNode& node,
                             Ezxml* /*tree*/) {
    move_by(node.size, file);
    return kHandled;
}

}  // namespace mediasplit
