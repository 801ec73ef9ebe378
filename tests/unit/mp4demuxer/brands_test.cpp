#include "tests/unit/mp4demuxer/walk_support.h"

namespace mediasplit::mp4 {
namespace {

using Brands = std::vector<std::uint32_t>;

TEST(FileBrands, AreRead) {
    const auto demuxer = walk(ftyp("iso6", {"iso6", "cmfc", "pb4h"}));
    ASSERT_NE(demuxer->ftyp, nullptr);
    EXPECT_EQ(demuxer->ftyp->major_brand, fourcc("iso6"));
    EXPECT_EQ(demuxer->ftyp->num_compat_brands, 3U);
    EXPECT_EQ(demuxer->ftyp->compat_brands,
              (Brands{fourcc("iso6"), fourcc("cmfc"), fourcc("pb4h")}));
}

TEST(FileBrands, OfTheFirstBoxStay) {
    const auto demuxer = walk(join({ftyp("iso6", {"iso6"}), ftyp("mp42", {"mp42"})}));
    EXPECT_EQ(demuxer->ftyp->major_brand, fourcc("iso6"));
    EXPECT_EQ(demuxer->ftyp->num_compat_brands, 1U);
}

TEST(FileBrands, OfAShortBoxAreZero) {
    const auto demuxer = walk(box("ftyp", {
                                              text("is"),
                                          }));
    EXPECT_EQ(demuxer->ftyp->major_brand, 0x69730000U);
    EXPECT_EQ(demuxer->ftyp->num_compat_brands, 0U);
    EXPECT_EQ(walk(box("ftyp", {text("isom"), u32(0), text("abcde")}))->ftyp->compat_brands,
              Brands{fourcc("abcd")});
}

TEST(FileBrands, IncludeCompatibleBrandsAlone) {
    const auto demuxer = walk(ftyp("iso6", {"pb4h"}));
    EXPECT_TRUE(compat_brand_included(*demuxer, fourcc("pb4h")));
    EXPECT_FALSE(compat_brand_included(*demuxer, fourcc("iso6")));
    EXPECT_FALSE(compat_brand_included(*mp4demuxer_create(), fourcc("iso6")));
    EXPECT_FALSE(compat_brand_included(*walk(ftyp("iso6", {})), fourcc("iso6")));
}

TEST(SegmentBrands, BeginWithTheFilesAndCollectNewOnes) {
    const auto demuxer = walk(ftyp("iso6", {"iso6", "msdh"}));
    walk_again(*demuxer, styp("msdh", {"msdh", "msix"}));
    ASSERT_NE(demuxer->styp, nullptr);
    EXPECT_EQ(demuxer->styp->major_brand, fourcc("msdh"));
    EXPECT_EQ(demuxer->styp->compat_brands,
              (Brands{fourcc("iso6"), fourcc("msdh"), fourcc("msix")}));
    walk_again(*demuxer, styp("cmfs", {"msix", "lmsg", "lmsg"}));
    EXPECT_EQ(demuxer->styp->major_brand, fourcc("cmfs"));
    EXPECT_EQ(demuxer->styp->num_compat_brands, 4U);
    EXPECT_EQ(demuxer->styp->compat_brands.back(), fourcc("lmsg"));
    EXPECT_EQ(demuxer->ftyp->num_compat_brands, 2U);
}

TEST(SegmentBrands, StandWithoutFileBrands) {
    const auto demuxer = walk(styp("msdh", {"msdh"}));
    EXPECT_EQ(demuxer->ftyp, nullptr);
    EXPECT_EQ(demuxer->styp->compat_brands, Brands{fourcc("msdh")});
}

TEST(CmafBrands, AreFoundAsMajorOrCompatible) {
    for (const char* brand : {"cmf2", "cmfc", "cmfs", "cmff", "cmfl"}) {
        EXPECT_TRUE(contain_cmaf_brand(*walk(ftyp(brand, {"isom"})))) << brand;
        EXPECT_TRUE(contain_cmaf_brand(*walk(ftyp("isom", {"isom", brand})))) << brand;
    }
    for (const char* brand : {"cmfd", "cmf1", "CMFC", "isom"}) {
        EXPECT_FALSE(contain_cmaf_brand(*walk(ftyp(brand, {brand})))) << brand;
    }
    EXPECT_FALSE(contain_cmaf_brand(*mp4demuxer_create()));
}

TEST(CmafBrands, AppearWithTheFirstSegment) {
    const auto demuxer = walk(ftyp("iso6", {"iso6"}));
    EXPECT_FALSE(contain_cmaf_brand(*demuxer));
    walk_again(*demuxer, styp("msdh", {"msdh", "cmfc"}));
    EXPECT_TRUE(contain_cmaf_brand(*demuxer));
}

TEST(CmafBrands, OfTheSegmentsHideTheMajorBrandOfTheFile) {
    const auto demuxer = walk(ftyp("cmfc", {"iso6"}));
    EXPECT_TRUE(contain_cmaf_brand(*demuxer));
    walk_again(*demuxer, styp("msdh", {"msdh"}));
    EXPECT_FALSE(contain_cmaf_brand(*demuxer));
}

// Writers ask at each parameter set; a scan of the list each time would not come to an end.
TEST(CmafBrands, AreLookedUpAmongManyBrandsManyTimes) {
    constexpr std::uint32_t kMany = 262144;
    const auto demuxer = walk(box("ftyp", {text("isom"), u32(0), zeros(4 * std::size_t{kMany})}));
    ASSERT_EQ(demuxer->ftyp->num_compat_brands, kMany);
    std::uint32_t found = 0;
    for (std::uint32_t i = 0; i < kMany; ++i) {
        found += compat_brand_included(*demuxer, fourcc("pb4h")) ? 1 : 0;
        found += contain_cmaf_brand(*demuxer) ? 1 : 0;
    }
    EXPECT_EQ(found, 0U);
    EXPECT_TRUE(compat_brand_included(*demuxer, 0));
}

TEST(SegmentBrands, AreMergedOnceForManyBrands) {
    Bytes brands;
    for (std::uint32_t i = 0; i < 200000; ++i) {
        const std::uint8_t bytes[] = {static_cast<std::uint8_t>(i >> 16),
                                      static_cast<std::uint8_t>(i >> 8),
                                      static_cast<std::uint8_t>(i), 1};
        brands.insert(brands.end(), bytes, bytes + 4);
    }
    const auto demuxer = walk(box("styp", {text("msdh"), u32(0), brands, brands}));
    EXPECT_EQ(demuxer->styp->num_compat_brands, 200000U);
}

}  // namespace
}  // namespace mediasplit::mp4
