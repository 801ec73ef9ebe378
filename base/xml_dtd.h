// The internal subset of a document type declaration.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "base/xml_document.h"

namespace mediasplit {

// What ends the parsing of a document, with the text that goes into the message.
struct XmlProblem {
    const char* format = nullptr;  // none: no problem
    std::string detail;
};

// Reads declarations of entities and of attributes; others are passed over.
class XmlDtdReader {
public:
    // `text` is the document and stays in place as long as the document lives.
    XmlDtdReader(EzxmlDocument& document, std::string_view text)
        : document_(document), text_(text) {}

    // Reads from behind "<!DOCTYPE" at `at` to behind its ">". Only when `collect` is set the
    // declarations count. False at a problem, with `at` near it.
    bool read(std::size_t& at, bool collect, XmlProblem& problem);

private:
    struct Default {
        XmlAttributeDeclaration* declaration;
        std::string_view raw;
    };

    bool read_subset(std::size_t& at);
    bool read_markup(std::size_t& at);
    bool pass_to(std::string_view end, const char* format, std::size_t& at);
    bool declaration_body(std::size_t& at, std::string_view& body, const char* format);
    void read_entity(std::string_view body);
    bool read_attributes(std::string_view body);
    bool finish();
    bool fail(const char* format, std::string detail = {});

    EzxmlDocument& document_;
    std::string_view text_;
    bool collect_ = true;
    XmlProblem problem_;
    std::vector<Default> defaults_;
};

}  // namespace mediasplit
