#include <gtest/gtest.h>

#include <algorithm>
#include <boost/algorithm/hex.hpp>
#include <filesystem>

#include "tests/support/store.h"
#include "tests/support/systemLog.h"
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
    test::SystemLog log_;
};

TEST_F(CountryRanges, AreReadPerRecord) {
    const std::string net10 = "0000000affffff0a";
    const std::string bytes6 = "b80d01200c0b0a000403020108070605";
    const std::string text6 = "2001:0db8:000a:0b0c:0102:0304:0506:0708";
    const struct {
        bool isV6;
        std::string content;
        Lines ranges;
    } rows[] = {
        {false, "", {}},
        {false, "0403020108070605" + net10, {"1.2.3.4 5.6.7.8", "10.0.0.0 10.255.255.255"}},
        {false, net10 + "0100a8c0", {"10.0.0.0 10.255.255.255", "192.168.0.1 0.0.0.0"}},
        {false, "c8", {"0.0.0.200 0.0.0.0"}},
        {true, bytes6 + bytes6, {text6 + " " + text6}},
        {true, bytes6 + "fffefdfc", {text6 + " fcfd:feff:0000:0000:0000:0000:0000:0000"}},
    };
    for (const auto& row : rows) {
        test::writeFile(kDirectory + (row.isV6 ? "XX.iv6" : "XX.iv4"),
                        boost::algorithm::unhex(row.content));
        EXPECT_EQ(read("XX", row.isV6), row.ranges) << row.content;
    }
    EXPECT_EQ(log_.take(), Lines{});
}

// What completes a short record must not be left from the chunk before it.
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

TEST_F(CountryRanges, OfACountryWithoutAFileAreAFailure) {
    test::writeFile(kDirectory + "XX.iv4", "12345678");
    Json::Value ranges;
    EXPECT_FALSE(geoip_.countryIPGet("XX", true, ranges));
    EXPECT_TRUE(ranges.isNull());
    EXPECT_EQ(log_.take(), (Lines{"fwGeoip: Failed to open file /usr/share/xt_geoip/XX.iv6\n",
                                  "fwGeoip: Failed to read geoip database"}));
}

TEST_F(CountryRanges, AreUsableFromEightBytesOn) {
    for (const std::string name : {"AA.iv4", "BB.iv4", "BB.iv6", "CC.iv4", "DD.iv6"}) {
        const std::size_t size = name[0] == 'A' ? 4104 : name[0] == 'B' ? 7 : 8;
        test::writeFile(kDirectory + name, std::string(size, '1'));
    }
    Lines v4;
    EXPECT_TRUE(geoip_.geoipSanctify({"DD", "CC", "BB", "AA", "aa", "AA"}, false, v4));
    EXPECT_EQ(v4, (Lines{"CC", "AA", "AA"}));
    Lines v6;
    EXPECT_TRUE(geoip_.geoipSanctify({"DD", "CC", "BB", "AA"}, true, v6));
    EXPECT_EQ(v6, Lines{"DD"});
    Lines none;
    EXPECT_FALSE(geoip_.geoipSanctify({"BB", "XX"}, false, none));
    EXPECT_EQ(log_.take(), Lines{});
    EXPECT_FALSE(geoip_.geoipSanctify({}, false, none));
    EXPECT_EQ(log_.take(), Lines{"fwGeoip: There are no country"});
}

TEST_F(CountryRanges, AreListedByTheNamesOfTheIpv4Files) {
    for (const char* name : {"CN.iv4", "CN.iv4.1", "xx.iv4.bak", "DE.iv6", "LONG.iv4", "RU"}) {
        test::writeFile(kDirectory + name, "");
    }
    Lines codes;
    EXPECT_TRUE(geoip_.countryEnum(codes));
    std::sort(codes.begin(), codes.end());
    EXPECT_EQ(codes, (Lines{"CN", "CN", "LO", "xx"}));
    std::filesystem::remove_all(kDirectory);
    EXPECT_FALSE(geoip_.countryEnum(codes));
    EXPECT_EQ(log_.take(), Lines{"fwGeoip: Failed to opendir /usr/share/xt_geoip/"});
}

}  // namespace
