#include "src/report/text_escape.h"

#include <gtest/gtest.h>

namespace mediasplit::report {
namespace {

using namespace std::string_literals;

TEST(TextEscape, Utf8StaysAsItIs) {
    for (const std::string text : {"", "plain", "\u00e4\u00f6", "\u65e5\u672c", "\U0001F600",
                                   "\u0080\u07ff\u0800\uffff\U00010000\U0010ffff", "a\tb\nc"}) {
        EXPECT_EQ(valid_utf8(text), text);
    }
    EXPECT_EQ(valid_utf8("\0"s), "\0"s);
}

TEST(TextEscape, BytesOutsideOfCharactersAreWrittenAsNumbers) {
    EXPECT_EQ(valid_utf8("a\x80z"), "a\\x80z");       // continuation without a beginning
    EXPECT_EQ(valid_utf8("\xC3"), "\\xC3");           // beginning without continuation
    EXPECT_EQ(valid_utf8("\xC3("), "\\xC3(");         // continuation missing
    EXPECT_EQ(valid_utf8("\xE2\x82"), "\\xE2\\x82");  // cut short
    EXPECT_EQ(valid_utf8("\xC0\xAF"), "\\xC0\\xAF");  // longer than needed
    EXPECT_EQ(valid_utf8("\xE0\x80\xAF"), "\\xE0\\x80\\xAF");
    EXPECT_EQ(valid_utf8("\xED\xA0\x80"), "\\xED\\xA0\\x80");           // surrogate
    EXPECT_EQ(valid_utf8("\xF4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80");  // above U+10FFFF
    EXPECT_EQ(valid_utf8("\xF8\x88\x80\x80\x80"), "\\xF8\\x88\\x80\\x80\\x80");
    EXPECT_EQ(valid_utf8("\xFE\xFF"), "\\xFE\\xFF");
}

TEST(TextEscape, PrintableTextSteersNothing) {
    EXPECT_EQ(printable("\033[31mred\033[0m"), "\\x1B[31mred\\x1B[0m");
    EXPECT_EQ(printable("a\nb\tc\r"), "a\\x0Ab\\x09c\\x0D");
    EXPECT_EQ(printable("\x7F"), "\\x7F");
    EXPECT_EQ(printable("\u009b31m"), "\\u{9b}31m");
    EXPECT_EQ(printable("\u202eabc\u2066"), "\\u{202e}abc\\u{2066}");
    EXPECT_EQ(printable("\uFFFE\uFEFF"), "\\u{fffe}\\u{feff}");
    EXPECT_EQ(printable("\xFF\u00e4"), "\\xFF\u00e4");
    EXPECT_EQ(printable("\0"s), "\\x00");
}

TEST(TextEscape, MarkupIsHarmless) {
    EXPECT_EQ(markup("<script>\"a\" & 'b'</script>"),
              "&lt;script&gt;&quot;a&quot; &amp; &#39;b&#39;&lt;/script&gt;");
    EXPECT_EQ(markup("]]>\x01"), "]]&gt;\\x01");
}

TEST(TextEscape, WidthCountsCharacters) {
    EXPECT_EQ(width_of(""), 0U);
    EXPECT_EQ(width_of("abc"), 3U);
    EXPECT_EQ(width_of("\u00e4\u65e5"), 2U);
}

}  // namespace
}  // namespace mediasplit::report
