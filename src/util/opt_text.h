// A text argument that may be missing.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace mediasplit {

// Takes whatever form a text comes in (C text, string, view, optional string, nullptr) without a
// copy. For parameters only: it doesn't own what it shows.
class OptText {
public:
    constexpr OptText() = default;
    constexpr OptText(std::nullptr_t) {}
    constexpr OptText(std::nullopt_t) {}
    constexpr OptText(const char* text)
        : present_(text != nullptr), text_(text == nullptr ? std::string_view{} : text) {}
    constexpr OptText(std::string_view text) : present_(true), text_(text) {}
    OptText(const std::string& text) : present_(true), text_(text) {}
    OptText(const std::optional<std::string>& text)
        : present_(text.has_value()), text_(text ? std::string_view(*text) : std::string_view{}) {}
    constexpr OptText(const std::optional<std::string_view>& text)
        : present_(text.has_value()), text_(text.value_or(std::string_view{})) {}

    [[nodiscard]] constexpr bool has_value() const { return present_; }
    constexpr explicit operator bool() const { return present_; }
    // Empty if missing.
    [[nodiscard]] constexpr std::string_view view() const { return text_; }
    constexpr std::string_view operator*() const { return text_; }
    constexpr const std::string_view* operator->() const { return &text_; }
    [[nodiscard]] std::string str() const { return std::string(text_); }

private:
    bool present_ = false;
    std::string_view text_;
};

}  // namespace mediasplit
