#include "src/main/series_name.h"

#include <gtest/gtest.h>

#include <string>

namespace mediasplit {
namespace {

std::string name_of(std::string_view name_template, std::uint32_t number) {
    return series_file_name(name_template, number).name;
}

TEST(SeriesName, FirstConversionTakesTheNumber) {
    EXPECT_EQ(name_of("a_%d.ts", 0), "a_0.ts");
    EXPECT_EQ(name_of("a_%d.ts", 12), "a_12.ts");
    EXPECT_EQ(name_of("a_%04d.ts", 7), "a_0007.ts");
    EXPECT_EQ(name_of("a_%04d.ts", 123456), "a_123456.ts");
    EXPECT_EQ(name_of("a_%3d.ts", 7), "a_  7.ts");
}

TEST(SeriesName, NumbersPastTheSignedRangeAreShownSigned) {
    EXPECT_EQ(name_of("%d", 0xFFFFFFFFU), "-1");
    EXPECT_EQ(name_of("%d", 0x80000000U), "-2147483648");
    EXPECT_EQ(name_of("%u", 0xFFFFFFFFU), "4294967295");
}

TEST(SeriesName, FurtherConversionsStandAsWritten) {
    const SeriesName name = series_file_name("%d_%d_%s_%n.ts", 5);
    EXPECT_EQ(name.name, "5_%d_%s_%n.ts");
    EXPECT_TRUE(name.is_numbered);
}

TEST(SeriesName, PercentThatStartsNoConversionStandsAsWritten) {
    EXPECT_EQ(name_of("100%_%d.ts", 3), "100%_3.ts");
    EXPECT_EQ(name_of("%s%n%p%*d%d", 3), "%s%n%p%*d3");
    EXPECT_EQ(name_of("%5", 3), "%5");
    EXPECT_EQ(name_of("%", 3), "%");
    EXPECT_EQ(name_of("%.", 3), "%.");
}

TEST(SeriesName, BlankBehindPercentIsAFlagOfTheFirstConversion) {
    EXPECT_EQ(name_of("100% done_%d.ts", 3), "100 3one_%d.ts");
}

TEST(SeriesName, DoublePercentIsOnePercentAndTakesNoNumber) {
    EXPECT_EQ(name_of("a%%_%d.ts", 3), "a%_3.ts");
    const SeriesName name = series_file_name("a%%d.ts", 3);
    EXPECT_EQ(name.name, "a%d.ts");
    EXPECT_FALSE(name.is_numbered);
}

TEST(SeriesName, EnormousWidthsAreHeldAtALimit) {
    EXPECT_EQ(name_of("%099999999999999999999d", 3).size(), 8192U);
    EXPECT_EQ(name_of("%.99999999999999999999d", 3).size(), 8192U);
}

TEST(SeriesName, EmptyTemplateHasAnEmptyName) {
    EXPECT_EQ(name_of("", 3), "");
    EXPECT_FALSE(series_file_name("", 3).is_numbered);
}

// The C library is the reference for flags, width and precision.
TEST(SeriesName, FormsAreThoseOfAPrintFormat) {
    for (const char* flags : {"", "-", "+", " ", "#", "0", "-0", "+0", " 0", "#0", "+ ", "-+"}) {
        for (const char* size : {"", "1", "5", "8", ".0", ".1", ".4", "6.3", "3.6", "12."}) {
            for (const char type : {'d', 'i', 'u', 'o', 'x', 'X'}) {
                const std::string form = std::string("%") + flags + size + type;
                for (const std::uint32_t number : {0U, 8U, 1234U, 48879U, 0xFFFFFFF6U}) {
                    char expected[64];
                    std::snprintf(expected, sizeof expected, form.c_str(), number);
                    EXPECT_EQ(name_of(form, number), expected) << form << " of " << number;
                }
            }
        }
    }
}

}  // namespace
}  // namespace mediasplit
