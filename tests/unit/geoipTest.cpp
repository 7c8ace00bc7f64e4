#include <gtest/gtest.h>

#include "tests/support/store.h"
#include "zamofirewall/geoip.h"

namespace {

using Lines = std::vector<std::string>;

const std::string kDirectory = "/usr/share/xt_geoip/";

class CountryRanges : public testing::Test {
  protected:
    CountryRanges() { test::clearFiles(); }

    Lines read(const std::string& country, bool isV6) {
        Json::Value ranges;
        EXPECT_TRUE(geoip_.countryIPGet(country, isV6, ranges)) << country;
        Lines texts;
        for (const Json::Value& range : ranges) {
            texts.push_back(range["ip_begin"].asString() + " " + range["ip_end"].asString());
        }
        return texts;
    }

    FW::FW_GEOIP geoip_;
};

// A short record is completed by zeros, not by what the chunk before it left.
TEST_F(CountryRanges, AreReadAcrossChunks) {
    const std::string content = std::string(4096, '\xFF') + std::string("\2\0\0\0\3", 5);
    test::writeFile(kDirectory + "XX.iv4", content);
    test::writeFile(kDirectory + "XX.iv6", content);
    Lines v4(512, "255.255.255.255 255.255.255.255");
    v4.emplace_back("0.0.0.2 0.0.0.3");
    EXPECT_EQ(read("XX", false), v4);
    const std::string zero = "0000:0000:0000:0000:0000:0000:0000:0000";
    EXPECT_EQ(read("XX", true).at(128), "0000:0002:0000:0003:0000:0000:0000:0000 " + zero);
}

}  // namespace
