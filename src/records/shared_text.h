// A text that many records have in common.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace mediasplit {

// A text that is set once, or none. Copies share it.
class SharedText {
public:
    SharedText() = default;
    explicit SharedText(std::string text)
        : text_(std::make_shared<const std::string>(std::move(text))) {}

    explicit operator bool() const { return text_ != nullptr; }
    const std::string& operator*() const { return *text_; }
    const std::string* operator->() const { return text_.get(); }

    friend bool operator==(const SharedText& a, std::string_view b) { return a && *a == b; }

private:
    std::shared_ptr<const std::string> text_;
};

}  // namespace mediasplit
