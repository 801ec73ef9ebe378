#include <algorithm>
#include <vector>

#include "base/xml_tree.h"

namespace mediasplit {
namespace {

void put_escaped(std::string& out, std::string_view text, bool is_attribute) {
    for (const char c : text) {
        if (c == '&') {
            out += "&amp;";
        } else if (c == '<') {
            out += "&lt;";
        } else if (c == '>') {
            out += "&gt;";
        } else if (c == '\r') {
            out += "&#xD;";
        } else if (is_attribute && c == '"') {
            out += "&quot;";
        } else if (is_attribute && c == '\n') {
            out += "&#xA;";
        } else if (is_attribute && c == '\t') {
            out += "&#x9;";
        } else {
            out += c;
        }
    }
}

// An element that is being written.
struct Frame {
    const Ezxml* node;
    const Ezxml* child;  // next to be written
    std::string_view text;
    std::size_t written = 0;  // of the text
};

Frame open_element(std::string& out, const Ezxml* node) {
    if (node->name != nullptr) {
        out += '<';
        out += node->name;
        for (const char* const* text = node->attr; *text != nullptr; text += 2) {
            out += ' ';
            out += text[0];
            out += "=\"";
            put_escaped(out, text[1], true);
            out += '"';
        }
        out += '>';
    }
    return {node, node->child, node->txt};
}

void put_text_up_to(std::string& out, Frame& frame, std::uint64_t end) {
    const std::size_t stop = std::min<std::uint64_t>(end, frame.text.size());
    if (stop > frame.written) {
        put_escaped(out, frame.text.substr(frame.written, stop - frame.written), false);
        frame.written = stop;
    }
}

}  // namespace

std::string ezxml_toxml(const Ezxml* node) {
    std::string out;
    if (node == nullptr) {
        return out;
    }
    std::vector<Frame> open{open_element(out, node)};
    while (!open.empty()) {
        Frame& frame = open.back();
        if (frame.child != nullptr) {
            const Ezxml* const child = frame.child;
            put_text_up_to(out, frame, child->off);
            frame.child = child->ordered;
            open.push_back(open_element(out, child));
            continue;
        }
        put_text_up_to(out, frame, frame.text.size());
        if (frame.node->name != nullptr) {
            out += "</";
            out += frame.node->name;
            out += '>';
        }
        open.pop_back();
    }
    return out;
}

}  // namespace mediasplit
